// fault.h: what goes wrong in a message (Fault) and in a definition (Misconfigured). Both are thrown, caught
// by the entry points of plugin.h and logged there as one line; none leaves the plug-in.
//
//   Msg[NAME] Field[PATH] Offset[N]: expected X, found Y. ADVICE          Fault
//   Msg[NAME] Node[PATH] File[FILE:LINE]: expected X, found Y. ADVICE     Misconfigured
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

#include "log.h"

namespace cvt::kit {

// The input or the values cannot be what the definition says. The path is not part of it: it is still in the
// call's Path when the entry point catches the fault.
class Fault : public std::exception {
 public:
  // For code that knows no position: the entry point puts in how far the call has come.
  static constexpr size_t kHere = static_cast<size_t>(-1);

  // offset: from the start of the buffer. advice: what to write instead, a sentence without its full stop;
  // may be empty.
  Fault(size_t offset, std::string expected, std::string found, std::string advice = {})
      : m_offset(offset),
        m_expected(std::move(expected)),
        m_found(std::move(found)),
        m_advice(std::move(advice)) {}

  size_t offset() const { return m_offset; }

  // The same at another place, for who reads a text that was converted before.
  Fault at(size_t offset) const {
    Fault moved = *this;
    moved.m_offset = offset;
    return moved;
  }

  // "expected X, found Y. ADVICE"
  std::string text() const;
  const char *what() const noexcept override { return m_expected.c_str(); }

 private:
  size_t m_offset;
  std::string m_expected;
  std::string m_found;
  std::string m_advice;
};

// A definition makes no sense for the format. `record`: the plug-in's record that shows where in the file, or
// null. `path`: the node, may be empty.
class Misconfigured : public std::exception {
 public:
  Misconfigured(std::string path, const void *record, std::string expected, std::string found,
                std::string advice = {})
      : m_path(std::move(path)),
        m_record(record),
        m_expected(std::move(expected)),
        m_found(std::move(found)),
        m_advice(std::move(advice)) {}

  // The whole line without "Msg[NAME] ".
  std::string text() const;
  const char *what() const noexcept override { return m_expected.c_str(); }

 private:
  std::string m_path;
  const void *m_record;
  std::string m_expected;
  std::string m_found;
  std::string m_advice;
};

}  // namespace cvt::kit
