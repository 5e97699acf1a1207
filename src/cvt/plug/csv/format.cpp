// format.cpp: the format `csv` as the kit registers it.
#include "generator.h"
#include "kit/plugin.h"
#include "parser.h"
#include "plan.h"

namespace cvt::csv {

namespace {

kit::Attachments<Plan> &plans() {
  static kit::Attachments<Plan> all;
  return all;
}

const Plan &planOf(const Msg &msg) {
  return *static_cast<const CsvMsg *>(msg.pInfo)->ptPlan;
}

struct CsvFormat {
  static constexpr const char *kName = "csv";
  static constexpr std::span<const kit::RecordType *const> kRecords = kRecordTypes;

  static void compile(Msg &msg) {
    if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kCsvMsg);
    if (!kit::isRecord(msg.pInfo, kCsvMsg)) {
      throw kit::Misconfigured("", msg.pInfo, "CsvMsg as pInfo of Msg", kit::recordName(msg.pInfo));
    }
    auto *text = static_cast<CsvMsg *>(msg.pInfo);
    text->ptPlan = plans().add(compilePlan(msg, *text));
  }
  static void parse(kit::ParseCall &call) { parseText(planOf(*call.msg), call); }
  static void generate(kit::GenerateCall &call) { generateText(planOf(*call.msg), call); }
};

}  // namespace

}  // namespace cvt::csv

extern "C" KIT_EXPORT int csvInit(void *element) {
  cvt::csv::plans().clearUnlessLeft();
  return cvt::kit::registerFormat<cvt::csv::CsvFormat>(element);
}
