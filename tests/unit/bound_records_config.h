// bound_records_config.h: a configuration in which the bound records of the table can be made and read.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"

namespace test {

inline int anyStep(InnerMessage *, InnerMessage *, void *) {
  return 0;
}
inline int anyFunction(Value *, int, Value **, MemPort) {
  return 0;
}
inline int anyFormat(Msg *) {
  return 0;
}

// Fail: a record type that cannot be read.
inline void *parseFail(void *, char *psType) {
  if (psType != nullptr && std::string(psType) == "Fail") nGRet = -1;
  return nullptr;
}
inline void *writeNothing(void *, void *, char *, char *) {
  return nullptr;
}

// A definition "Known" with the field "A", whose index is the current one on both sides; a converter "text3";
// a conversion function and a pipeline step "text2".
class BoundRecords : public testing::Test {
 protected:
  void SetUp() override {
    m_tree.file("All/root.xml",
                "<AllInfo><AllInfo>"
                "<Message __ID='ptMessage'><PathList __ID='ptMsgList' psPath='msg'/></Message>"
                "<Convert __ID='ptConvert' psCvtPath='cvt'/></AllInfo></AllInfo>");
    m_tree.file("msg/Known.xml",
                "<any><Msg psMsgName='Known'><Message __ID='ptHead' psNodeName='A'>"
                "<StructAttr __ID='ptStructAttr'/></Message></Msg></any>");
    m_tree.file(
        "cvt/known.xml",
        "<Convert><Converter psName='text3' psSrcStructName='Known' psDstStructName='Known'/></Convert>");
    m_tree.file("bad/bad.xml", "no XML");
    restart();
  }
  void TearDown() override { cvtEnd(); }

  void restart() {
    cvtEnd();
    cvtFmtAddPlug(cs("any"), sttParseVoidcvt_message, sttGenVoidcvt_message, anyFormat);
    cvtConvertAddFunction(cs("text2"), anyFunction);
    cvtIdAddFunction(cs("text2"), anyStep);
    ASSERT_EQ(cvtInit(m_tree.arg()), 0);
    sttAddFuncVoid(parseFail, writeNothing);
    gptCvtGlobalInfo->pptSrcIdx = cvtGetMsg(cs("Known"))->pptMessageIdx;
    gptCvtGlobalInfo->pptDstIdx = gptCvtGlobalInfo->pptSrcIdx;
    nGRet = 0;
    clearLog();
  }

  ConfigTree m_tree;
};

}  // namespace test
