// message.h: one message through the library, as the command line says. What the library refuses is thrown
// as a DataError that says why and what to write instead.
#pragma once

#include <string>
#include <string_view>

#include "library.h"
#include "options.h"
#include "output_buffer.h"

namespace tool {

// Bytes into messages, by the format id after -f and the message type after -m.
class Parser {
 public:
  // Throws a usage Failure when the configuration has no such format or message.
  explicit Parser(const Options &options);

  // The message; it borrows the frame's bytes and has used all of them.
  MessageHandle parsed(const Frame &frame);

 private:
  std::string m_format;
  std::string m_message;
};

// A message that was made of another one, which has to outlive it, and its bytes, valid until the next one is
// generated.
struct Generated {
  MessageHandle message;
  std::string_view bytes;
};

// Messages into bytes, by the format id after -t.
class Generator {
 public:
  // Throws a usage Failure when the configuration has no such format.
  explicit Generator(const Options &options);

  // Through the generate chain, which begins with a converter.
  Generated converted(InnerMessage &source);

  // As it is: the generate chain gets the message itself.
  std::string_view asIs(InnerMessage &message);

 private:
  std::string_view checked(int size) const;

  std::string m_format;
  OutputBuffer m_buffer;
};

}  // namespace tool
