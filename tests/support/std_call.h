// std_call.h: a function of the library called by its name, without a converter.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "log_capture.h"
#include "std/topics.h"

namespace test {

using CallTexts = std::vector<std::string>;

inline FncConvert functionOf(const std::string &sName) {
  static const std::map<std::string, FncConvert> all = [] {
    std::map<std::string, FncConvert> entries;
    for (const cvt::kit::Topic *topic : cvt::functions::kTopics) {
      for (size_t i = 0; i < topic->functions.size(); ++i) {
        entries[topic->functions[i].name] = topic->entries[i];
      }
    }
    return entries;
  }();
  const auto found = all.find(sName);
  if (found == all.end()) ADD_FAILURE() << "no function " << sName;
  return found == all.end() ? nullptr : found->second;
}

struct CallOutcome {
  int nStatus;
  std::string sResult;
};

inline CallOutcome callFunction(FncConvert entry, const CallTexts &arguments) {
  std::vector<Value> values(arguments.size());
  std::vector<Value *> pointers;
  for (size_t i = 0; i < arguments.size(); ++i) {
    values[i].psValue = const_cast<char *>(arguments[i].data());
    values[i].nLen = static_cast<int>(arguments[i].size());
    pointers.push_back(&values[i]);
  }
  Value result{};
  MemPort memory = cvtMemNewNode();
  const int nStatus = entry(&result, static_cast<int>(arguments.size()), pointers.data(), memory);
  CallOutcome outcome = {nStatus, ""};
  if (nStatus == 0) outcome.sResult.assign(result.psValue, static_cast<size_t>(result.nLen));
  cvtMemDelNode(memory);
  return outcome;
}

inline CallOutcome callFunction(const std::string &sName, const CallTexts &arguments) {
  return callFunction(functionOf(sName), arguments);
}

// The result; "refused" when there is none.
inline std::string resultOf(FncConvert entry, const CallTexts &arguments) {
  const CallOutcome outcome = callFunction(entry, arguments);
  return outcome.nStatus == 0 ? outcome.sResult : "refused";
}

inline std::string resultOf(const std::string &sName, const CallTexts &arguments) {
  return resultOf(functionOf(sName), arguments);
}

// The one line of a refusal, without "Func[NAME] ".
inline std::string errorOf(const std::string &sName, const CallTexts &arguments) {
  clearLog();
  if (callFunction(sName, arguments).nStatus == 0) return "not refused";
  const CallTexts lines = logTexts();
  const std::string sStart = "Func[" + sName + "]";
  if (lines.size() != 1 || lines[0].rfind(sStart, 0) != 0) return "other lines";
  return lines[0].substr(sStart.size() + 1);
}

}  // namespace test
