// iso8583.cpp: the format "iso8583" as a plug-in.
#include "kit/fault.h"
#include "kit/plugin.h"
#include "walk.h"

namespace cvt::iso8583 {

namespace {

kit::Attachments<Plan> f_plans;

const Plan &planOf(const Msg &msg) {
  return *static_cast<const IsoMsg *>(msg.pInfo)->ptPlan;
}

struct IsoFormat {
  static constexpr const char *kName = "iso8583";
  static constexpr std::span<const kit::RecordType *const> kRecords = kRecordTypes;

  static void compile(Msg &msg) {
    if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kIsoMsg);
    if (!kit::isRecord(msg.pInfo, kIsoMsg)) {
      throw kit::Misconfigured("", msg.pInfo, "IsoMsg as pInfo of Msg", kit::recordName(msg.pInfo));
    }
    auto *settings = static_cast<IsoMsg *>(msg.pInfo);
    settings->ptPlan = f_plans.add(iso8583::compile(msg, *settings));
  }
  static void parse(kit::ParseCall &call) { iso8583::parse(planOf(*call.msg), call); }
  static void generate(kit::GenerateCall &call) { iso8583::generate(planOf(*call.msg), call); }
};

}  // namespace

}  // namespace cvt::iso8583

extern "C" KIT_EXPORT int iso8583Init(void *ptXmlNode) {
  cvt::iso8583::f_plans.clearUnlessLeft();
  return cvt::kit::registerFormat<cvt::iso8583::IsoFormat>(ptXmlNode);
}
