// config.h: a configuration of a chosen size that converts a fixed-length record to JSON.
#pragma once

#include <string>

#include "config_tree.h"

namespace growth {

// How much of everything there is. The message that is converted is In, its target Out; what is called "other"
// is loaded beside them and never used.
struct Shape {
  int fields = 10;
  int fieldLength = 10;  // bytes
  int rules = 10;        // copies, over and over the fields
  int tags = 0;          // entries of a look-up rule, of which the last is the field's; 0: no such rule
  int repetitions = 0;   // of a loop of two fields; 0: no loop
  int definitions = 0;   // other definitions, of ten fields
  int longest = 0;       // fields of one more definition; 0: none
  int converters = 0;    // other converters, of the rules of this one, from In to Out
  int entries = 0;       // other definitions that have an identification entry with a converter of their own
  int pipelines = 0;     // other pipelines
  int pairs = 0;         // other target formats in the identification entry of In
  int strings = 0;       // interned strings
  int live = 0;          // messages that are held meanwhile
};

class Config : public test::ConfigTree {
 public:
  explicit Config(const Shape &shape);

  // Starts the library on it; throws when that fails.
  void start();

  // Makes the root file newer than what is loaded, and lets the library read everything again. Otherwise it is told
  // not to look at that file, which would cost each message a system call.
  void reload();

  // One message of In.
  const std::string &message() const { return m_message; }

 private:
  void writeOthers(const Shape &shape);

  std::string m_message;
};

}  // namespace growth
