// session.h: one plug-in with the suite's definitions, and messages going through it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "config_tree.h"
#include "cvt.h"
#include "format.h"
#include "layout.h"
#include "samples.h"

namespace formats {

struct Free {
  void operator()(InnerMessage *message) const { cvtFreeMessage(message); }
};
using Handle = std::unique_ptr<InnerMessage, Free>;

class Session {
 public:
  explicit Session(const Format &format) : m_format(format) {}

  // A definition of the next start. Another one of the same name replaces it.
  void define(const std::string &message, const Items &items, const std::string &charset = "");
  void defineText(const std::string &message, const std::string &file);
  int start();

  Handle create(const std::string &message);
  // A message with these values, by field name.
  Handle fill(const std::string &message, const Json &fields);

  // A message of these bytes, which lie in a block of exactly their size until the session ends; null: refused.
  // `used`: how many were taken.
  Handle read(const std::string &message, const std::string &bytes, int *used = nullptr);

  // Its bytes in a buffer of `room`, or nothing when it is refused; then not a byte behind the room was touched.
  std::optional<std::string> write(const Handle &handle, size_t room = 1 << 16);

  // All values but those that the format fills in: constants, and counts of loops.
  Json values(const Handle &handle);

 private:
  const Format &m_format;
  test::ConfigTree m_tree;
  tool::Layouts m_layouts;
  std::vector<std::unique_ptr<char[]>> m_kept;
};

}  // namespace formats
