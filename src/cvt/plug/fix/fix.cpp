// fix.cpp: the format "fix", fixed-length records, as a plug-in.
#include "kit/fault.h"
#include "kit/plugin.h"
#include "walk.h"

namespace cvt::fix {

namespace {

kit::Attachments<Plan> f_plans;

FixMsg *settingsOf(Msg &msg) {
  if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kFixMsg);
  if (!kit::isRecord(msg.pInfo, kFixMsg)) {
    throw kit::Misconfigured("", msg.pInfo, "a FixMsg in the message's pInfo", kit::recordName(msg.pInfo),
                             "");
  }
  return static_cast<FixMsg *>(msg.pInfo);
}

const Plan &planOf(const Msg *msg) {
  return *static_cast<const Plan *>(static_cast<const FixMsg *>(msg->pInfo)->ptPlan);
}

struct FixFormat {
  static constexpr const char *kName = "fix";
  static constexpr const kit::RecordType *kRecords[] = {&kFixField, &kFixRecord, &kFixGroup, &kFixLoop,
                                                        &kFixMsg};

  static void compile(Msg &msg) {
    FixMsg *settings = settingsOf(msg);
    settings->ptPlan = f_plans.add(fix::compile(msg, *settings));
  }
  static void parse(kit::ParseCall &call) { fix::parse(planOf(call.msg), call); }
  static void generate(kit::GenerateCall &call) { fix::generate(planOf(call.msg), call); }
};

}  // namespace

}  // namespace cvt::fix

extern "C" KIT_EXPORT int fixInit(void *ptXmlNode) {
  cvt::fix::f_plans.clearUnlessLeft();
  return cvt::kit::registerFormat<cvt::fix::FixFormat>(ptXmlNode);
}
