// campaign.h: many damaged configurations one after the other, and the classes into which their ends fall.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "scenario.h"

namespace hostile {

// The classes, good and bad.
inline constexpr const char *kRefusedHere = "refused, the damaged file is named";
inline constexpr const char *kRefusedThere = "refused, the file that needs it is named";
inline constexpr const char *kRefusedNowhere = "refused, no file is named";
inline constexpr const char *kSame = "loads and converts as before";
inline constexpr const char *kDifferent = "loads and converts differently";
inline constexpr const char *kMessageRefused = "loads, the message is refused";
inline constexpr const char *kMessageSilent = "loads, the message is refused without a word";
inline constexpr const char *kTrusted = "crash by what is trusted";  // see docs/configuration.md
inline constexpr const char *kCrash = "crash";
inline constexpr const char *kHang = "hang";

struct Tally {
  std::map<std::string, int> classes;
  std::vector<std::string> bad;  // what was done, and what came of it
  int count() const;
  void add(const Tally &other);
  std::string figures() const;  // "1234 mutants: 1000 refused, ..., 0 crash"
};

// Damages one file after the other of the scenario's tree, nCount times, each mutant made from its number,
// nFirst onwards. With CVT2_HOSTILE_REPORT in the environment every mutant is a line of that file.
Tally run(Scenario &scenario, unsigned nFirst, unsigned nCount);

}  // namespace hostile
