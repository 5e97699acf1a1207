// A plug-in with one fault, chosen by the attribute psFault of its own element. Without a fault it is sound:
// the format "bad" reads the buffer from its position as the first field, and writes that field.
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "cvt_identify.h"
#include "cvt_message.h"
#include "stt.h"

namespace {

std::string f_sFault;

bool fault(const char *ps) {
  return f_sFault == ps;
}

void *noRecord(void *, char *) {
  return nullptr;
}
void *noRecordWritten(void *, void *, char *, char *) {
  return nullptr;
}

// --- Faults that come with a message
// -------------------------------------------------------------------------

int loopPastTheLimit(ValueListInfo *ptInfo) {
  while (cvtNewLoopValueList(ptInfo->ptValueList, 1, 1) != nullptr) continue;
  return -1;
}

int endAt(int *pnNowLen, int nPosition) {
  *pnNowLen = nPosition;
  return 0;
}

int parse(void *, ValueListInfo *ptInfo, Msg *, char *psBuf, int *pnNowLen, int nLen) {
  if (fault("parse fails")) return 7;
  if (fault("parse throws")) throw std::runtime_error("no such currency");
  if (fault("parse aborts")) std::abort();
  if (fault("parse ends behind the buffer")) return endAt(pnNowLen, nLen + 100);
  if (fault("parse ends before the buffer")) return endAt(pnNowLen, -1);
  if (fault("parse loops past the limit")) return loopPastTheLimit(ptInfo);
  if (fault("parse asks for a field that is not there") &&
      cvtGetListValue(ptInfo->ptValueList, 99) == nullptr)
    return -1;
  if (fault("parse gives a value a negative length"))
    return cvtDumpValue(cvtGetListValue(ptInfo->ptValueList, 0), psBuf, -5, ptInfo->ptMemNode);
  if (fault("parse frees the caller's buffer")) std::free(psBuf);
  const int nSize = nLen - *pnNowLen;
  Value *const pt = cvtGetListValue(ptInfo->ptValueList, 0);
  if (pt == nullptr || cvtDumpValue(pt, psBuf + *pnNowLen, nSize, ptInfo->ptMemNode) != 0) return -1;
  *pnNowLen = nLen;
  return 0;
}

int generate(void *, ValueListInfo *ptInfo, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  if (fault("generate fails")) return 7;
  if (fault("generate throws")) throw 7;
  if (fault("generate ends behind the buffer")) return endAt(pnNowLen, nLen + 1);
  if (fault("generate ends before the buffer")) return endAt(pnNowLen, -1);
  if (fault("generate writes behind the buffer")) std::memset(psBuf, 'x', static_cast<size_t>(nLen) + 1);
  if (fault("generate frees the library's memory")) std::free(ptMsg->psMsgName);
  const Value *const pt = cvtGetListValue(ptInfo->ptValueList, 0);
  if (pt == nullptr || pt->nLen > nLen - *pnNowLen) return -1;
  if (pt->nLen > 0) std::memcpy(psBuf + *pnNowLen, pt->psValue, static_cast<size_t>(pt->nLen));
  *pnNowLen += pt->nLen;
  return 0;
}

int step(InnerMessage *, InnerMessage *, void *) {
  if (fault("step throws")) throw std::runtime_error("no such currency");
  return fault("step fails") ? 7 : 0;
}

// --- Faults that come with the configuration
// -----------------------------------------------------------------

int initDefinition(Msg *ptMsg) {
  if (fault("definition fails")) return 7;
  if (fault("definition throws")) throw std::runtime_error("no such currency");
  ptMsg->nValueNum = ptMsg->nFieldNum;
  if (!fault("no parse function")) ptMsg->fParse = parse;
  if (!fault("no generate function")) ptMsg->fGen = generate;
  return 0;
}

int addFormat() {
  char sFormat[] = "bad";
  const bool bNull = fault("null dispatchers");
  return cvtFmtAddPlug(sFormat, bNull ? nullptr : noRecord, bNull ? nullptr : noRecordWritten,
                       fault("null format initialiser") ? nullptr : initDefinition);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int badFormatInit(void *ptXmlNode) {
  char sName[] = "psFault";
  char *const ps = sttParseXmlString(ptXmlNode, sName);
  f_sFault = ps == nullptr ? "" : ps;
  sttFreeXmlString(ps);
  if (fault("initialiser aborts")) std::abort();
  if (fault("registers nothing")) return 0;
  char sStep[] = "badStep";
  cvtIdAddFunction(sStep, step);
  if (fault("null step")) cvtIdAddFunction(sStep, nullptr);
  if (addFormat() != 0) return -1;
  if (fault("registers twice") && addFormat() != 0) return -1;
  if (fault("initialiser throws")) throw std::runtime_error("no licence");
  return fault("initialiser fails") ? 7 : 0;
}
