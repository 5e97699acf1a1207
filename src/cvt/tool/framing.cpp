#include "framing.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>

namespace tool {
namespace {

constexpr size_t kChunk = size_t{64} * 1024;
constexpr size_t kMaxMessage = INT_MAX - 1;  // the library counts bytes in int
constexpr size_t kAsciiDigits = 4;

std::string bytes(size_t n) {
  return std::to_string(n) + (n == 1 ? " byte" : " bytes");
}

std::optional<size_t> decimal(std::string_view text) {
  size_t value = 0;
  const char *const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

std::string bigEndian(size_t value, size_t size) {
  std::string out(size, '\0');
  for (size_t i = size; i-- > 0; value >>= 8) out[i] = static_cast<char>(value & 0xff);
  return out;
}

DataError tooLong(std::string_view message, const char *framing, size_t most) {
  return DataError("the message has " + bytes(message.size()) + ", but the output framing " + framing +
                   " carries at most " + std::to_string(most) + "; write --out-framing len4");
}

}  // namespace

Framing parseFraming(const std::string &option, const std::string &text, const std::string &whole) {
  using Kind = Framing::Kind;
  if (text == whole) return {Kind::whole};
  if (text == "line") return {Kind::line};
  if (text == "len2") return {Kind::len2};
  if (text == "len4") return {Kind::len4};
  if (text == "lenascii4") return {Kind::lenAscii4};
  if (text.starts_with("rec=")) {
    const auto size = decimal(std::string_view(text).substr(4));
    if (size && *size >= 1 && *size <= kMaxMessage) return {Kind::record, *size};
  }
  throw Failure(Exit::usage, option + ": expected " + whole +
                                 ", line, len2, len4, lenascii4 or rec=N with N from 1 to " +
                                 std::to_string(kMaxMessage) + ", found '" + text + "'");
}

std::optional<Frame> FrameReader::next() {
  switch (m_framing.kind) {
    case Framing::Kind::whole:
      return nextWhole();
    case Framing::Kind::line:
      return nextLine();
    case Framing::Kind::len2:
      return nextWithLength(2);
    case Framing::Kind::len4:
    case Framing::Kind::lenAscii4:
      return nextWithLength(4);
    case Framing::Kind::record:
      return nextRecord();
  }
  return std::nullopt;
}

std::optional<Frame> FrameReader::nextWhole() {
  if (m_done) return std::nullopt;
  m_done = true;  // an empty stream is one empty message
  while (fill()) {
  }
  return take(0, unread(), 0);
}

std::optional<Frame> FrameReader::nextLine() {
  size_t searched = 0;
  for (;;) {
    const std::string_view text = rest();
    const size_t end = text.find('\n', searched);
    if (end != text.npos) {
      const size_t body = end > 0 && text[end - 1] == '\r' ? end - 1 : end;
      return take(0, body, end + 1 - body);
    }
    searched = text.size();
    if (fill()) continue;
    if (searched == 0) return std::nullopt;
    return take(0, searched, 0);
  }
}

std::optional<Frame> FrameReader::nextRecord() {
  if (have(m_framing.size)) return take(0, m_framing.size, 0);
  if (unread() == 0) return std::nullopt;
  throw FramingError(offset(), "expected a record of " + bytes(m_framing.size) + ", found " +
                                   bytes(unread()) +
                                   " before the end of the input; check the N of --framing rec=N");
}

std::optional<Frame> FrameReader::nextWithLength(size_t headSize) {
  if (!have(headSize)) {
    if (unread() == 0) return std::nullopt;
    throw FramingError(offset(), "expected a length of " + bytes(headSize) + ", found " + bytes(unread()) +
                                     " before the end of the input");
  }
  const size_t size = bodySize(headSize);
  if (have(headSize + size)) return take(headSize, size, 0);
  throw FramingError(offset(), "expected a message of " + bytes(size) + " as its length says, found " +
                                   bytes(unread() - headSize) +
                                   " before the end of the input; check --framing");
}

size_t FrameReader::bodySize(size_t headSize) const {
  const std::string_view head = rest().substr(0, headSize);
  if (m_framing.kind == Framing::Kind::lenAscii4) {
    const auto size = decimal(head);
    if (size) return *size;
    throw FramingError(offset(), "expected a length of " + std::to_string(kAsciiDigits) + " digits, found '" +
                                     std::string(head) + "'; check --framing");
  }
  size_t size = 0;
  for (const char c : head) size = size << 8 | static_cast<unsigned char>(c);
  if (size <= kMaxMessage) return size;
  throw FramingError(offset(), "expected a length of at most " + bytes(kMaxMessage) + ", found " +
                                   std::to_string(size) + "; check --framing");
}

Frame FrameReader::take(size_t headSize, size_t bodySize, size_t tailSize) {
  Frame frame{};
  frame.raw = rest().substr(0, headSize + bodySize + tailSize);
  frame.offset = offset() + headSize;
  frame.size = bodySize;
  const std::string_view body = frame.raw.substr(headSize, bodySize);
  if (body.data() + body.size() == m_buffer.data() + m_filled) {
    frame.data = m_buffer.data() + m_start + headSize;
    m_buffer[m_filled] = '\0';
  } else {
    m_copy.assign(body);
    frame.data = m_copy.data();
  }
  m_start += frame.raw.size();
  return frame;
}

// Whether that many unread bytes are there, reading on as long as needed.
bool FrameReader::have(size_t size) {
  while (unread() < size) {
    if (!fill()) return false;
  }
  return true;
}

// Moves the unread bytes to the front of the room.
void FrameReader::dropTaken() {
  if (m_start == 0) return;
  std::memmove(m_buffer.data(), m_buffer.data() + m_start, unread());
  m_filled -= m_start;
  m_base += m_start;
  m_start = 0;
}

bool FrameReader::fill() {
  if (m_end) return false;
  dropTaken();
  if (m_filled > kMaxMessage) {
    throw FramingError(offset(), "a message of more than " + bytes(kMaxMessage) + "; check --framing");
  }
  // Grows by a share of what is there, so that a large message is moved a few times only.
  if (m_buffer.size() < m_filled + kChunk) m_buffer.resize(m_filled + std::max(kChunk, m_filled / 2));
  const size_t got = m_read(m_buffer.data() + m_filled, m_buffer.size() - m_filled);
  m_filled += got;
  m_end = got == 0;
  return !m_end;
}

Wrapping wrap(const Framing &framing, std::string_view message) {
  const size_t size = message.size();
  switch (framing.kind) {
    case Framing::Kind::whole:
      return {};
    case Framing::Kind::line:
      return {"", message.ends_with('\n') ? "" : "\n"};
    case Framing::Kind::len2:
      if (size > 0xffff) throw tooLong(message, "len2", 0xffff);
      return {bigEndian(size, 2), ""};
    case Framing::Kind::len4:
      return {bigEndian(size, 4), ""};
    case Framing::Kind::lenAscii4: {
      if (size > 9999) throw tooLong(message, "lenascii4", 9999);
      const std::string digits = std::to_string(size);
      return {std::string(kAsciiDigits - digits.size(), '0') + digits, ""};
    }
    case Framing::Kind::record:
      if (size == framing.size) return {};
      throw DataError("the message has " + bytes(size) + ", but the output framing rec=" +
                      std::to_string(framing.size) + " carries exactly " + std::to_string(framing.size));
  }
  return {};
}

}  // namespace tool
