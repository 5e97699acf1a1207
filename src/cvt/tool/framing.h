// framing.h: how messages stand in a stream of bytes, one behind the other.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "error.h"

namespace tool {

struct Framing {
  enum class Kind {
    whole,      // the stream is one message; as output framing: nothing between messages
    line,       // messages end with a line feed, or with carriage return and line feed
    len2,       // two bytes of length, big-endian, before each message; the length counts the message alone
    len4,       // four bytes of length
    lenAscii4,  // four decimal digits
    record      // every message has `size` bytes
  };
  Kind kind = Kind::whole;
  size_t size = 0;
};

// "line", "len2", "len4", "lenascii4", "rec=N", or what the option calls Kind::whole. Throws a usage Failure
// that names the option.
Framing parseFraming(const std::string &option, const std::string &text, const std::string &whole = "whole");

// One message in its stream.
struct Frame {
  char *data;            // the message; writable, with a zero byte behind it
  size_t size;           // at most what an int holds
  std::string_view raw;  // the same bytes with their framing, as they stand in the stream
  uint64_t offset;       // of the message's first byte in the stream
};

// The stream is not framed as told; there is no telling where the next message begins.
class FramingError : public DataError {
 public:
  FramingError(uint64_t offset, const std::string &text) : DataError(text), m_offset(offset) {}
  uint64_t offset() const { return m_offset; }

 private:
  uint64_t m_offset;
};

// Cuts a stream into messages, holding no more of it than the message at hand.
class FrameReader {
 public:
  // Reads at most `size` bytes into `to` and returns their number, 0 at the end of the stream.
  using ReadBytes = std::function<size_t(char *to, size_t size)>;

  FrameReader(Framing framing, ReadBytes read) : m_framing(framing), m_read(std::move(read)) {}

  // The next message, valid until the next call; nothing at the end of the stream. Throws FramingError.
  std::optional<Frame> next();

  // After a FramingError: what has been read and is not part of any message.
  std::string_view rest() const { return std::string_view(m_buffer).substr(m_start, unread()); }

 private:
  std::optional<Frame> nextWhole();
  std::optional<Frame> nextLine();
  std::optional<Frame> nextRecord();
  std::optional<Frame> nextWithLength(size_t headSize);
  size_t bodySize(size_t headSize) const;

  Frame take(size_t headSize, size_t bodySize, size_t tailSize);
  size_t unread() const { return m_filled - m_start; }
  bool have(size_t size);
  void dropTaken();
  bool fill();
  uint64_t offset() const { return m_base + m_start; }

  Framing m_framing;
  ReadBytes m_read;
  std::string m_buffer;  // room; the bytes of the stream end at m_filled
  size_t m_filled = 0;
  size_t m_start = 0;   // first unread byte of m_buffer
  uint64_t m_base = 0;  // where m_buffer begins in the stream
  bool m_end = false;
  bool m_done = false;
  std::string m_copy;  // the message at hand when other bytes stand behind it
};

// What stands before and behind a message in the output.
struct Wrapping {
  std::string head;
  std::string_view tail;
};

// Throws DataError when the framing cannot carry that message.
Wrapping wrap(const Framing &framing, std::string_view message);

}  // namespace tool
