// convert_fixture.h: starts the library on definitions and converters that a test writes.
#pragma once

#include <gtest/gtest.h>

#include <string>
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

class ConvertTest : public testing::Test {
 protected:
  void SetUp() override { registerPlainFormat(); }

  void define(const std::string &sName, const std::vector<xml::Field> &fields) {
    tree.file("Msg/" + sName + ".xml", xml::definition("plain", sName, fields));
  }
  void convert(const std::string &sName, const xml::Args &rules, const std::string &sSrc = "In",
               const std::string &sDst = "Out") {
    tree.file("Cvt/" + sName + ".xml", xml::converter(sName, sSrc, sDst, rules));
  }

  // Starts with the sections Message and Convert; the log begins here.
  int start(const std::string &sConvertAttributes = "psCvtPath='Cvt'") {
    tree.file(
        "All/root.xml",
        "<AllInfo><AllInfo><Message __ID='ptMessage'><PathList __ID='ptMsgList' psPath='Msg'/></Message>"
        "<Convert __ID='ptConvert' " +
            sConvertAttributes + "/></AllInfo></AllInfo>");
    clearLog();
    return cvtInit(tree.arg());
  }

  // Runs a converter; the log begins here.
  int run(const char *psName, const Level &from, const Level &to) {
    clearLog();
    return cvtConvert(from.ptList, to.ptList, cvtGetCvt(cs(psName)), to.ptNode);
  }

  // The whole trail of a start that fails on the converter file Cvt/sName.xml: what is logged up to the
  // file's own failure, then what every failing converter file is followed by.
  std::vector<std::string> startTrail(const std::string &sName, std::vector<std::string> inner) const {
    const std::string sFile = file(sName);
    const std::string sRoot = tree.path("All/root.xml");
    const std::vector<std::string> outer = {
        "Init Convert define: load file[" + sFile + "] err!!",
        "Parse File[" + sFile + "] Err!!",
        "Init[" + sName + ".xml] err !!",
        "Convert Pare Path[Cvt] err!!",
        "void * ptConvert = sttParseXmlStruct(ptXmlNode, \"Convert\", \"ptConvert\", cvtCvtInit) is Err!!",
        "File[" + sRoot + "] Line[1] Element[AllInfo]",
        "parse xml[AllInfo)" + sRoot + "] faile",
        "Parse Xml File To Xml Struct Err!!",
        "Parse File[" + sRoot + "] Err!!",
        "Init[root.xml] err !!",
        "XmlFileInit [All] Init Err!!",
        "Init Path[" + tree.path() + "] err!!\n",
    };
    inner.insert(inner.end(), outer.begin(), outer.end());
    return inner;
  }

  // The same for a file in which a record fails: the framework's place and file lines stand in it, too.
  std::vector<std::string> recordTrail(const std::string &sName, std::vector<std::string> inner) const {
    inner.push_back("parse xml[Convert)" + file(sName) + "] faile");
    std::vector<std::string> trail = startTrail(sName, std::move(inner));
    std::erase(trail, "File[" + tree.path("All/root.xml") + "] Line[1] Element[AllInfo]");  // placed already
    return trail;
  }

  std::string file(const std::string &sName) const { return tree.path("Cvt/" + sName + ".xml"); }
  std::string place(const std::string &sName, const std::string &sElement) const {
    return "File[" + file(sName) + "] Line[1] Element[" + sElement + "]";
  }

  ConfigTree tree;
};

}  // namespace test
