#include "message.h"

#include <charconv>

#include "log.h"
#include "text.h"

namespace tool {
namespace {

constexpr size_t kShownBytes = 32;

std::string shown(std::string_view bytes) {
  const std::string_view part = bytes.substr(0, kShownBytes);
  std::string out;
  if (isUtf8(part)) {
    appendJsonString(out, part);
  } else {
    appendHex(out += "0x", part);
  }
  return part.size() < bytes.size() ? out + "..." : out;
}

// A format's error names an offset in the message, "... Offset[12]: ..."; told for the input too where it is
// another one.
std::string placeInInput(const Frame &frame) {
  if (frame.offset == 0) return "";
  constexpr std::string_view kMark = "Offset[";
  const std::string cause = log::cause();
  const size_t mark = cause.find(kMark);
  if (mark == cause.npos) return "";
  uint64_t offset = 0;
  const char *const digits = cause.data() + mark + kMark.size();
  if (std::from_chars(digits, cause.data() + cause.size(), offset).ec != std::errc()) return "";
  return "(byte " + std::to_string(frame.offset + offset) + " of the input)";
}

// A message has to use its whole frame: bytes behind it would be lost.
void checkConsumed(const InnerMessage &message, const Frame &frame) {
  const auto used = static_cast<size_t>(message.nNowLen);
  if (used == frame.size) return;
  if (used > frame.size) {
    throw DataError("the format took " + std::to_string(used) + " bytes of a message of " +
                    std::to_string(frame.size) + "; its parse pipeline moves too far");
  }
  const std::string_view rest(frame.data + used, frame.size - used);
  throw DataError("the message ends at byte " + std::to_string(frame.offset + used) + " of the input, but " +
                  std::to_string(rest.size()) + " more bytes belong to its frame: " + shown(rest) +
                  "; check -m and --framing");
}

std::string adviceOnGenerating(const std::string &format, const OutputBuffer &buffer,
                               const InnerMessage &source) {
  if (log::cause().find("left in the buffer") != std::string::npos) {
    return "(write --max-output with more than " + std::to_string(buffer.size()) + ")";
  }
  if (log::has("Message Convert Format id [" + format + "] not fond!!")) {
    return "(message " + std::string(source.sMsgName) +
           " can be converted to: " + knownTargets(*source.ptMsgInfo) + ")";
  }
  if (log::has("[ptInMsg->ptMsgInfo] is NULL") && convertStep(generatePipeline(format)) == nullptr) {
    return "(the generate chain of format '" + format +
           "' has no pubConvert; check -t, formats that convert: " + convertingFormats() + ")";
  }
  return "";
}

std::string adviceOnParsing(const std::string &format, const std::string &message, const Frame &frame) {
  if (message.empty() && log::has("Msg [] get define info err!!")) {
    return "(the parse chain of format '" + format +
           "' names no message; give -m, known: " + knownMessages() + ")";
  }
  return placeInInput(frame);
}

}  // namespace

Parser::Parser(const Options &options) : m_format(options.from), m_message(options.message) {
  parsePipeline(m_format);
  if (!m_message.empty()) checkMessageName(m_message);
}

MessageHandle Parser::parsed(const Frame &frame) {
  const int size = static_cast<int>(frame.size);
  int error = 0;
  MessageHandle message(m_message.empty()
                            ? cvtParseMessasge(m_format.data(), frame.data, size, &error)
                            : cvtInitMessasge(m_message.data(), m_format.data(), frame.data, size, &error));
  if (message == nullptr) refuse("the message cannot be parsed", adviceOnParsing(m_format, m_message, frame));
  if (message->ptMsgInfo == nullptr) {
    throw DataError("the parse pipeline of format '" + m_format + "' binds the message to no definition");
  }
  checkConsumed(*message, frame);
  return message;
}

Generator::Generator(const Options &options) : m_format(options.to), m_buffer(options.maxOutput) {
  generatePipeline(m_format);
}

Generated Generator::converted(InnerMessage &source) {
  int size = m_buffer.size();
  int error = 0;
  MessageHandle target(cvtGenerateMessasge(&source, m_format.data(), m_buffer.data(), &size, &error));
  if (target == nullptr) {
    refuse("the message cannot be generated", adviceOnGenerating(m_format, m_buffer, source));
  }
  return {std::move(target), checked(size)};
}

std::string_view Generator::asIs(InnerMessage &message) {
  message.psBuf = m_buffer.data();
  message.nLen = m_buffer.size();
  message.nNowLen = 0;
  if (fucGenerate(m_format.data(), nullptr, &message) != 0) {
    refuse("the message cannot be generated", adviceOnGenerating(m_format, m_buffer, message));
  }
  return checked(message.nNowLen);
}

std::string_view Generator::checked(int size) const {
  if (size < 0 || size > m_buffer.size()) {
    throw DataError("the generate pipeline of format '" + m_format + "' went beyond the " +
                    std::to_string(m_buffer.size()) + " bytes of its buffer; write a larger --max-output");
  }
  return {m_buffer.data(), static_cast<size_t>(size)};
}

}  // namespace tool
