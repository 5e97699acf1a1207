// mutation.h: damaged copies of a configuration file, each made from a number.
#pragma once

#include <string>
#include <vector>

namespace hostile {

struct Mutant {
  std::string sText;
  std::string sKind;  // "attribute renamed"
  std::string sWhat;  // "psName="Id" -> psNamf="Id""
};

// The kinds of damage that mutate() does, by name.
std::vector<std::string> mutationKinds();

// The same number makes the same mutant.
//   sText    the file
//   donors   other files, whose names and elements are put where they do not belong
Mutant mutate(const std::string &sText, const std::vector<std::string> &donors, unsigned nNumber);

}  // namespace hostile
