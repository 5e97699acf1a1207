// format.cpp: the format `xml` as the kit registers it.
#include "entry.h"
#include "generator.h"
#include "kit/plugin.h"
#include "parser.h"
#include "plan.h"

namespace cvt::xml {

namespace {

kit::Attachments<Plan> &plans() {
  static kit::Attachments<Plan> all;
  return all;
}

const Plan &planOf(const Msg &msg) {
  return *static_cast<const XmlMsg *>(msg.pInfo)->ptPlan;
}

struct XmlFormat {
  static constexpr const char *kName = "xml";
  static constexpr std::span<const kit::RecordType *const> kRecords = kRecordTypes;

  static void compile(Msg &msg) {
    if (msg.pInfo == nullptr) msg.pInfo = kit::newRecord(kXmlMsg);
    if (!kit::isRecord(msg.pInfo, kXmlMsg)) {
      throw kit::Misconfigured("", msg.pInfo, "XmlMsg as pInfo of Msg", kit::recordName(msg.pInfo));
    }
    auto *document = static_cast<XmlMsg *>(msg.pInfo);
    document->ptPlan = plans().add(compilePlan(msg, *document));
  }
  static void parse(kit::ParseCall &call) { parseDocument(planOf(*call.msg), call); }
  static void generate(kit::GenerateCall &call) { generateDocument(planOf(*call.msg), call); }
};

}  // namespace

int initialise(void *element) noexcept {
  plans().clearUnlessLeft();
  return kit::registerFormat<XmlFormat>(element);
}

}  // namespace cvt::xml
