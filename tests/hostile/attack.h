// attack.h: XML that means harm.
#pragma once

#include <string>
#include <vector>

namespace hostile {

struct Attack {
  std::string sName;
  std::string sText;
  std::string sConfigReason;   // of the refusal as a configuration file; empty: it loads
  std::string sMessageReason;  // of the refusal as a message; empty: it is read
};

// Files and addresses that a reader could be made to open lie below sBait. The document element is sOpen ...
// sClose with sInside in it, which both readers take.
std::vector<Attack> attacks(const std::string &sBait, const std::string &sOpen, const std::string &sInside,
                            const std::string &sClose);

}  // namespace hostile
