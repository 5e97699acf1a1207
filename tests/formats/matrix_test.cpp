// One order in every format, converted from each into each: the bytes of golden/, whichever way they came.
#include <fstream>
#include <iterator>

#include "convert_xml.h"
#include "suite.h"
#include "toy_config.h"

namespace formats {

namespace {

using test::cs;

std::string messageOf(const Format &format) {
  return "Order_" + format.name();
}

// The same fields in both, loop by loop.
std::string converter(const Format &from, const Format &to) {
  using namespace test::xml;
  const auto same = [](const char *name) { return copy(src(name), dst(name)); };
  const ArgXml notes = loopRule(src("Notes"), dst("Notes"), {same("Note")});
  const ArgXml lines = loopRule(src("Lines"), dst("Lines"), {same("Sku"), same("Quantity"), notes});
  return test::xml::converter(from.name() + "_" + to.name(), messageOf(from), messageOf(to),
                              {same("Id"), same("Name"), same("City"), lines, same("Remark")});
}

std::string golden(const Format &format) {
  std::ifstream in(std::string(CVT2_SOURCE_DIR) + "/tests/formats/golden/order." + format.name(),
                   std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A configuration with every plug-in, an order of each, and a converter for each pair.
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

  std::string converted(const Format &from, const Format &to, std::string bytes) {
    int error = 0;
    const Handle source(cvtInitMessasge(cs(messageOf(from).c_str()), cs("read"), bytes.data(),
                                        static_cast<int>(bytes.size()), &error));
    if (source == nullptr) return "not read";
    std::string room(1 << 16, '\0');
    int length = static_cast<int>(room.size());
    const Handle made(cvtGenerateMessasge(source.get(), cs(to.name().c_str()), room.data(), &length, &error));
    return made == nullptr ? "not converted" : room.substr(0, static_cast<size_t>(length));
  }

  test::ConfigTree m_tree;
};

}  // namespace

TEST_F(Matrix, EveryFormatBecomesEveryOther) {
  for (const Format *from : allFormats()) {
    for (const Format *to : allFormats()) {
      EXPECT_EQ(converted(*from, *to, golden(*from)), golden(*to))
          << from->name() << " to " << to->name() << "\n"
          << testing::PrintToString(test::logTexts());
      test::clearLog();
    }
  }
}

}  // namespace formats
