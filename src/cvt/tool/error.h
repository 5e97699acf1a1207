// error.h: how the command ends.
#pragma once

#include <stdexcept>
#include <string>

#include "text.h"

namespace tool {

enum class Exit : int {
  ok = 0,
  usage = 2,      // the command line
  data = 65,      // a message was refused
  noInput = 66,   // an input file cannot be read
  internal = 70,  // a fault of the program
  io = 74,        // output cannot be written, input broke off
  config = 78     // the configuration is missing or does not load
};

// Ends the run. The text says what, where and what to do instead, without the program's name in front; what it quotes
// is kept as a terminal may get it, since a zero byte would end it.
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string &text) : std::runtime_error(printable(text)), m_code(code) {}
  Exit code() const { return m_code; }

 private:
  Exit m_code;
};

// One message is refused; with --keep-going the run goes on with the next.
class DataError : public Failure {
 public:
  explicit DataError(const std::string &text) : Failure(Exit::data, text) {}
};

}  // namespace tool
