// matrix.h: a configuration with every plug-in, an order of each, and a converter for each pair.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "config_tree.h"
#include "convert_xml.h"
#include "cvt.h"
#include "format.h"
#include "log_capture.h"
#include "samples.h"
#include "toy_config.h"

namespace formats {

inline std::string messageOf(const Format &format) {
  return "Order_" + format.name();
}

// The order in this format, written by other programs.
inline std::string golden(const Format &format) {
  std::ifstream in(std::string(CVT2_SOURCE_DIR) + "/tests/formats/golden/order." + format.name(),
                   std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The pipeline "read" parses; that of a format converts and generates.
class Matrix : public testing::Test {
 protected:
  void SetUp() override {
    test::RootFile root;
    std::vector<std::string> plugs;
    std::vector<test::Pipeline> pipelines = {{"read", {"pubParse"}, {"pubGenerate"}}};
    for (const Format *from : allFormats()) {
      plugs.push_back("psName=\"" + from->name() + "\"");
      pipelines.push_back({from->name(), {"pubParse"}, {"pubConvert", "pubGenerate"}});
      m_tree.file("msg/" + messageOf(*from) + ".xml", from->definition(messageOf(*from), orderItems()));
      std::string choices = "<IdInfo><IdMsgInfo psMsgName=\"" + messageOf(*from) + "\">";
      for (const Format *to : allFormats()) {
        const std::string pair = from->name() + "_" + to->name();
        m_tree.file("cvt/" + pair + ".xml", converter(*from, *to));
        choices += std::string("<IdCvtInfo __ID=\"") + (to == allFormats()[0] ? "ptIdCvtInfo" : "ptNext") +
                   "\" psFormatId=\"" + to->name() + "\" psCvtName=\"" + pair + "\"/>";
      }
      m_tree.file("idinfo/" + from->name() + ".xml", choices + "</IdMsgInfo></IdInfo>");
    }
    root.sPlug = test::plugSection(plugs);
    root.sMessage = test::messageSection({"msg"});
    root.sConvert = "<Convert __ID=\"ptConvert\" psCvtPath=\"cvt\"/>";
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\" psIdInfoPath=\"idinfo\"/>";
    m_tree.file("All/root.xml", root.text());
    m_tree.file("id/pipelines.xml", test::pipelines(pipelines));
    ASSERT_EQ(cvtInit(m_tree.arg()), 0) << testing::PrintToString(test::logTexts());
  }
  void TearDown() override { cvtEnd(); }

 private:
  // The same fields in both, loop by loop.
  static std::string converter(const Format &from, const Format &to) {
    using namespace test::xml;
    const auto same = [](const char *name) { return copy(src(name), dst(name)); };
    const ArgXml notes = loopRule(src("Notes"), dst("Notes"), {same("Note")});
    const ArgXml lines = loopRule(src("Lines"), dst("Lines"), {same("Sku"), same("Quantity"), notes});
    return test::xml::converter(from.name() + "_" + to.name(), messageOf(from), messageOf(to),
                                {same("Id"), same("Name"), same("City"), lines, same("Remark")});
  }

  test::ConfigTree m_tree;
};

}  // namespace formats
