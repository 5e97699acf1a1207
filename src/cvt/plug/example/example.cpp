// example.cpp: the format `example` as the kit registers it.
#include "format.h"

namespace cvt::example {

namespace {

kit::Attachments<Plan> f_plans;

const Plan &planOf(const Msg &msg) {
  return *static_cast<const ExampleMsg *>(msg.pInfo)->ptPlan;
}

struct ExampleFormat {
  static constexpr const char *kName = "example";
  static constexpr std::span<const kit::RecordType *const> kRecords = kRecordTypes;

  static void compile(Msg &msg) {
    if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kExampleMsg);
    if (!kit::isRecord(msg.pInfo, kExampleMsg)) {
      throw kit::Misconfigured("", msg.pInfo, "ExampleMsg as pInfo of Msg", kit::recordName(msg.pInfo));
    }
    auto *message = static_cast<ExampleMsg *>(msg.pInfo);
    message->ptPlan = f_plans.add(compilePlan(msg, *message));
  }
  static void parse(kit::ParseCall &call) { parseMessage(planOf(*call.msg), call); }
  static void generate(kit::GenerateCall &call) { generateMessage(planOf(*call.msg), call); }
};

}  // namespace

}  // namespace cvt::example

extern "C" KIT_EXPORT int exampleInit(void *element) {
  cvt::example::f_plans.clearUnlessLeft();
  return cvt::kit::registerFormat<cvt::example::ExampleFormat>(element);
}
