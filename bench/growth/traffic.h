// traffic.h: messages that go through a configuration.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cvt.h"

namespace growth {

struct Free {
  void operator()(InnerMessage *message) const { cvtFreeMessage(message); }
};
using Handle = std::unique_ptr<InnerMessage, Free>;

class Traffic {
 public:
  // live: how many messages are held while others pass; the one that has been held longest goes first.
  Traffic(const std::string &message, int live);

  // Reads a message, converts it, writes it. Throws when that fails.
  void pass();

  // Does so count times. A function of its own, for tools that count only what it does.
  void passAll(long count);

  // Bytes of the heap that a live message takes.
  struct Bytes {
    double read;  // one that was read
    double made;  // one that was made of it
  };
  Bytes bytesOfMessages();

 private:
  Handle read();
  Handle make(const Handle &from);

  std::string m_message;
  std::vector<char> m_room;
  std::vector<Handle> m_held;
  size_t m_longest = 0;
};

}  // namespace growth
