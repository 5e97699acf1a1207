// format.cpp: the format `json` as the kit registers it.
#include "generator.h"
#include "kit/plugin.h"
#include "parser.h"
#include "plan.h"

namespace cvt::json {

namespace {

kit::Attachments<Plan> &plans() {
  static kit::Attachments<Plan> all;
  return all;
}

const Plan &planOf(const Msg &msg) {
  return *static_cast<const JsonMsg *>(msg.pInfo)->ptPlan;
}

struct JsonFormat {
  static constexpr const char *kName = "json";
  static constexpr std::span<const kit::RecordType *const> kRecords = kRecordTypes;

  static void compile(Msg &msg) {
    if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kJsonMsg);
    if (!kit::isRecord(msg.pInfo, kJsonMsg)) {
      throw kit::Misconfigured("", msg.pInfo, "JsonMsg as pInfo of Msg", kit::recordName(msg.pInfo));
    }
    auto *settings = static_cast<JsonMsg *>(msg.pInfo);
    settings->ptPlan = plans().add(compilePlan(msg, *settings));
  }
  static void parse(kit::ParseCall &call) { parseText(planOf(*call.msg), call); }
  static void generate(kit::GenerateCall &call) { generateText(planOf(*call.msg), call); }
};

}  // namespace

}  // namespace cvt::json

extern "C" KIT_EXPORT int jsonInit(void *element) {
  cvt::json::plans().clearUnlessLeft();
  return cvt::kit::registerFormat<cvt::json::JsonFormat>(element);
}
