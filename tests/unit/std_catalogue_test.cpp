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
  static constexpr int kMostArguments = 6;  // of an example

  void load(const std::string &sMoreAttributes = "") {
    plugAttributes(functions::kManualSettings + sMoreAttributes);
    tree.file("Table/Country.txt", functions::kManualTable);
    writeConverters();
    ASSERT_EQ(start(), 0);
    from = test::newMessage("In");
    to = test::newMessage("Out");
  }

  void call(const kit::FunctionRow &function, const kit::Example &example) {
    const std::vector<std::string> arguments(example.arguments.begin(), example.arguments.end());
    call(function, arguments);
  }
  void call(const kit::FunctionRow &function, const std::vector<std::string> &arguments) {
    for (size_t i = 0; i < arguments.size(); ++i) {
      from.set(std::string(1, "ABCDEF"[i]).c_str(), arguments[i]);
    }
    to.set("X", "");
    nStatus = ConvertTest::run(converter(function, arguments.size()).c_str(), from, to);
  }

  // A converter for each number of arguments that the examples have.
  static std::string converter(const kit::FunctionRow &function, size_t nArguments) {
    return function.name + std::to_string(nArguments);
  }
  void writeConverters() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (size_t n = 0; n <= kMostArguments; ++n) {
        convert(converter(function, n), {callRule(function.name, n)});
      }
    }
  }

  void expectExamples() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (const kit::Example &example : function.examples) {
        const std::string sCall = kit::shownCall(function, example.arguments);
        call(function, example);
        EXPECT_EQ(nStatus, 0) << sCall << "\n" << firstLine();
        if (example.match == kit::Match::Exact) {
          EXPECT_EQ(to.get("X"), example.result) << sCall;
        } else {
          EXPECT_TRUE(hasShape(to.get("X"), example.result)) << sCall << "\n" << to.get("X");
        }
      }
    }
  }
  void expectRefusals() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (const kit::Example &refusal : function.refusals) {
        const std::string sCall = kit::shownCall(function, refusal.arguments);
        call(function, refusal);
        EXPECT_EQ(nStatus, -1) << sCall;
        const std::string sBetween = refusal.result.starts_with("Arg") ? " " : ": ";
        EXPECT_EQ(firstLine(),
                  "Func[" + std::string(function.name) + "]" + sBetween + std::string(refusal.result))
            << sCall;
      }
    }
  }
  // Numbers of arguments that the table does not have.
  void expectRefusedCounts() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (int n = 0; n <= kMostArguments; ++n) {
        if (n >= function.minArguments && n <= function.maxArguments) continue;
        EXPECT_EQ(ConvertTest::run(converter(function, static_cast<size_t>(n)).c_str(), from, to), -1);
        const std::string sStart = "Func[" + std::string(function.name) + "]: expected ";
        EXPECT_EQ(firstLine().find(sStart), 0U) << firstLine();
        const std::string sEnd = ", found " + std::to_string(n) + ". Write " + kit::signature(function) + ".";
        EXPECT_TRUE(firstLine().ends_with(sEnd)) << firstLine();
      }
    }
  }
  // Each example with a secret in the place of each argument: whatever comes of it, no line of the log has it.
  void expectSecrecy() {
    for (const kit::FunctionRow &function : GetParam()->functions) {
      for (const kit::Example &example : function.examples) {
        for (size_t i = 0; i < example.arguments.size(); ++i) {
          for (const std::string sSecret : {"secret", "\xFFsecret", "4111secret(", "1secret"}) {
            std::vector<std::string> arguments(example.arguments.begin(), example.arguments.end());
            arguments[i] = sSecret;
            call(function, arguments);
            for (const std::string &sLine : test::logTexts(0)) {
              EXPECT_EQ(sLine.find("secret"), std::string::npos) << sLine;
            }
          }
        }
      }
    }
  }
  static std::string firstLine() { return test::logTexts().empty() ? "no line" : test::logTexts()[0]; }

  int nStatus = 0;
};

TEST_P(StdCatalogue, ItsExamplesHold) {
  load();
  expectExamples();
}

TEST_P(StdCatalogue, ItsErrorsHold) {
  load();
  expectRefusals();
  expectRefusedCounts();
}

TEST_P(StdCatalogue, ItsErrorsShowNoArgument) {
  load();
  expectSecrecy();
}

INSTANTIATE_TEST_SUITE_P(Topics, StdCatalogue, testing::ValuesIn(functions::kTopics));

using StdMachineCode = StdCatalogue;

TEST_P(StdMachineCode, DoesTheSame) {
  load(" nRegexJit='1'");
  expectExamples();
  expectRefusals();
}

INSTANTIATE_TEST_SUITE_P(Regex, StdMachineCode, testing::Values(&functions::kRegex));

TEST(StdCatalogueManual, IsWhatTheTablesSay) {
  EXPECT_TRUE(fileText("docs/functions.md") == functions::manual())
      << "Write it anew: cvt_function_catalogue > docs/functions.md";
}

}  // namespace
