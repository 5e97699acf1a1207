// convert_fixture.h: starts the library on definitions and converters that a test writes.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "config_tree.h"
#include "convert_xml.h"
#include "cvt.h"
#include "log_capture.h"
#include "message_level.h"

namespace test {

// A format that gives its definitions nothing: what a converter needs of a message is its definition.
inline void registerPlainFormat() {
  cvtFmtAddPlug(
      cs("plain"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; }, [](Msg *) { return 0; });
}

// Entries of the temporary-value stack up to and with the current one, without the bottom entry.
inline int temporariesTaken() {
  int n = 0;
  for (const ::Stack *pt = gptCvtGlobalInfo->ptStack; pt->ptNext != nullptr; pt = pt->ptNext) ++n;
  return n;
}

class ConvertTest : public testing::Test {
 protected:
  using Texts = std::vector<std::string>;

  void SetUp() override { registerPlainFormat(); }

  void define(const std::string &sName, const std::vector<xml::Field> &fields) {
    tree.file("Msg/" + sName + ".xml", xml::definition("plain", sName, fields));
  }
  void convert(const std::string &sName, const xml::Args &rules, const std::string &sSrc = "In",
               const std::string &sDst = "Out") {
    tree.file("Cvt/" + sName + ".xml", xml::converter(sName, sSrc, sDst, rules));
  }

  // Starts with the sections Message and Convert and those of sMoreSections; the log begins here.
  int start(const std::string &sConvertAttributes = "psCvtPath='Cvt'") {
    tree.file(
        "All/root.xml",
        "<AllInfo><AllInfo><Message __ID='ptMessage'><PathList __ID='ptMsgList' psPath='Msg'/></Message>"
        "<Convert __ID='ptConvert' " +
            sConvertAttributes + "/>" + sMoreSections + "</AllInfo></AllInfo>");
    clearLog();
    return cvtInit(tree.arg());
  }

  // Runs a converter; the log begins here.
  int run(const char *psName, const Level &from, const Level &to) {
    clearLog();
    return cvtConvert(from.ptList, to.ptList, cvtGetCvt(cs(psName)), to.ptNode);
  }

  // What a start that fails logs behind the failing section's own texts. The framework names the place of a
  // failure once; where no record of the section's files failed, that is the root file's.
  Texts rootTrail(Texts inner, bool bPlaced) const {
    const std::string sRoot = tree.path("All/root.xml");
    if (!bPlaced) inner.push_back("File[" + sRoot + "] Line[1] Element[AllInfo]");
    inner.push_back("parse xml[AllInfo)" + sRoot + "] faile");
    inner.push_back("Parse Xml File To Xml Struct Err!!");
    inner.push_back("Parse File[" + sRoot + "] Err!!");
    inner.push_back("Init[root.xml] err !!");
    inner.push_back("XmlFileInit [All] Init Err!!");
    inner.push_back("Init Path[" + tree.path() + "] err!!\n");
    return inner;
  }

  // The whole trail of a start that fails on the converter file Cvt/sName.xml.
  Texts startTrail(const std::string &sName, Texts inner, bool bPlaced = false) const {
    inner.push_back("Init Convert define: load file[" + file(sName) + "] err!!");
    inner.push_back("Parse File[" + file(sName) + "] Err!!");
    inner.push_back("Init[" + sName + ".xml] err !!");
    inner.push_back("Convert Pare Path[Cvt] err!!");
    inner.push_back(
        "void * ptConvert = sttParseXmlStruct(ptXmlNode, \"Convert\", \"ptConvert\", cvtCvtInit) is Err!!");
    return rootTrail(std::move(inner), bPlaced);
  }

  // The same for a file in which a record fails.
  Texts recordTrail(const std::string &sName, Texts inner) const {
    inner.push_back("parse xml[Convert)" + file(sName) + "] faile");
    return startTrail(sName, std::move(inner), true);
  }

  std::string file(const std::string &sName) const { return tree.path("Cvt/" + sName + ".xml"); }
  std::string place(const std::string &sName, const std::string &sElement) const {
    return "File[" + file(sName) + "] Line[1] Element[" + sElement + "]";
  }

  ConfigTree tree;
  std::string sMoreSections;
};

}  // namespace test
