// The catalogue of functions: every example and every error in it holds, in the plug-in that the library loads,
// and docs/functions.md is what the tables say.
#include <fstream>
#include <iterator>

#include "std/manual.h"
#include "std_config.h"

namespace {

using namespace cvt;
using test::xml::Args;

std::string fileText(const std::string &sName) {
  std::ifstream in(CVT2_SOURCE_DIR "/" + sName);
  return {std::istreambuf_iterator<char>(in), {}};
}

// "#" in the shape is any hexadecimal digit.
bool hasShape(const std::string &sText, std::string_view sShape) {
  if (sText.size() != sShape.size()) return false;
  for (size_t i = 0; i < sText.size(); ++i) {
    if (sShape[i] == '#' ? isxdigit(static_cast<unsigned char>(sText[i])) == 0 : sText[i] != sShape[i]) {
      return false;
    }
  }
  return true;
}

class StdCatalogue : public test::StdTest, public testing::WithParamInterface<const kit::Topic *> {
 protected:
  void call(const kit::FunctionRow &function, const kit::Example &example) {
    for (size_t i = 0; i < example.arguments.size(); ++i) {
      from.set(std::string(1, "ABCDEF"[i]).c_str(), std::string(example.arguments[i]));
    }
    to.set("X", "");
    nStatus = ConvertTest::run(converter(function, example.arguments.size()).c_str(), from, to);
  }

  // A converter for each number of arguments that the examples have.
  static std::string converter(const kit::FunctionRow &function, size_t nArguments) {
    return function.name + std::to_string(nArguments);
  }
  void writeConverters() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (size_t n = 0; n <= 6; ++n) {
        convert(converter(function, n), {callRule(function.name, n)});
      }
    }
  }

  int nStatus = 0;
};

TEST_P(StdCatalogue, HoldsInTheLoadedPlugIn) {
  plugAttributes(functions::kManualSettings);
  tree.file("Table/Country.txt", functions::kManualTable);
  writeConverters();
  ASSERT_EQ(start(), 0);
  from = test::newMessage("In");
  to = test::newMessage("Out");
  for (const kit::FunctionRow &function : GetParam()->functions) {
    for (const kit::Example &example : function.examples) {
      call(function, example);
      const std::string sCall = kit::shownCall(function, example.arguments);
      EXPECT_EQ(nStatus, 0) << sCall << "\n" << (test::logTexts().empty() ? "" : test::logTexts()[0]);
      if (example.match == kit::Match::Exact) {
        EXPECT_EQ(to.get("X"), example.result) << sCall;
      } else {
        EXPECT_TRUE(hasShape(to.get("X"), example.result)) << sCall << "\n" << to.get("X");
      }
    }
    for (const kit::Example &refusal : function.refusals) {
      call(function, refusal);
      const std::string sCall = kit::shownCall(function, refusal.arguments);
      EXPECT_EQ(nStatus, -1) << sCall;
      EXPECT_EQ(test::logTexts().empty() ? "no line" : test::logTexts()[0],
                "Func[" + std::string(function.name) + "]" +
                    (refusal.result.starts_with("Arg") ? " " : ": ") + std::string(refusal.result))
          << sCall;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Topics, StdCatalogue, testing::ValuesIn(functions::kTopics));

TEST(StdCatalogueManual, IsWhatTheTablesSay) {
  EXPECT_TRUE(fileText("docs/functions.md") == functions::manual())
      << "Write it anew: cvt_function_catalogue > docs/functions.md";
}

}  // namespace
