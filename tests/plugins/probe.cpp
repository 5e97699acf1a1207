// probe.cpp: a plug-in that says when it is opened, initialised and closed. Built once a name: PROBE_NAME.
#include "stt.h"
#include "velutil.h"

namespace {

void say(const char *psWhat) {
  logInfo(5, "$probe", "probe.cpp", __LINE__, "say", "%s %s", PROBE_NAME, psWhat);
}

struct Life {
  Life() { say("opened"); }
  ~Life() { say("closed"); }
} life;

}  // namespace

// Fails with the number in the attribute "nResult" of its own element.
extern "C" __attribute__((visibility("default"))) int PROBE_INIT(void *ptXmlNode) {
  char sResult[] = "nResult";
  const int nResult = sttParseXmlInt(ptXmlNode, sResult);
  say("initialised");
  return nResult;
}
