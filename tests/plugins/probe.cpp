// probe.cpp: a plug-in that says when it is opened, initialised and closed, and what of the library is there
// when it is closed. Built once a name: PROBE_NAME.
#include "cvt.h"
#include "velutil.h"

namespace {

void say(const char *psWhat) {
  logInfo(5, "$probe", "probe.cpp", __LINE__, "say", "%s %s", PROBE_NAME, psWhat);
}

void sayWhatIsThere() {
  logInfo(5, "$order", "probe.cpp", __LINE__, "sayWhatIsThere",
          "there are%s%s%s%s%s%s%s, base path [%s], root [%s]", gptSttInfo == nullptr ? "" : " types",
          gptDict == nullptr ? "" : " names", gptPlugInfo == nullptr ? "" : " plug-ins",
          gptFmtGlobalInfo == nullptr ? "" : " definitions", gptCvtGlobalInfo == nullptr ? "" : " converters",
          gptFormatInfo == nullptr ? "" : " pipelines", gptAllInfo == nullptr ? "" : " record",
          cvtGetBasePath(), gpsRootPath == nullptr ? "" : gpsRootPath);
}

struct Life {
  Life() { say("opened"); }
  ~Life() {
    say("closed");
    sayWhatIsThere();
  }
} life;

}  // namespace

// Fails with the number in the attribute "nResult" of its own element.
extern "C" __attribute__((visibility("default"))) int PROBE_INIT(void *ptXmlNode) {
  char sResult[] = "nResult";
  const int nResult = sttParseXmlInt(ptXmlNode, sResult);
  say("initialised");
  return nResult;
}
