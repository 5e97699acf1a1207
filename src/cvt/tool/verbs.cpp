#include "verbs.h"

#include <charconv>

#include "json.h"
#include "layout.h"
#include "library.h"
#include "log.h"
#include "output_buffer.h"
#include "run.h"
#include "text.h"
#include "tree.h"

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

MessageHandle parsed(const Options &options, const Frame &frame) {
  std::string name = options.message;
  std::string format = options.from;
  const int size = static_cast<int>(frame.size);
  int error = 0;
  MessageHandle message(name.empty() ? cvtParseMessasge(format.data(), frame.data, size, &error)
                                     : cvtInitMessasge(name.data(), format.data(), frame.data, size, &error));
  if (message == nullptr) refuse("the message cannot be parsed", placeInInput(frame));
  if (message->ptMsgInfo == nullptr) {
    throw DataError("the parse pipeline of format '" + format + "' binds the message to no definition");
  }
  checkConsumed(*message, frame);
  return message;
}

std::string adviceOnGenerating(const Options &options, const InnerMessage &source) {
  if (log::cause().find("left in the buffer") != std::string::npos) {
    return "(write --max-output with more than " + std::to_string(options.maxOutput) + ")";
  }
  if (log::has("Message Convert Format id [" + options.to + "] not fond!!")) {
    return "(message " + std::string(source.sMsgName) +
           " can be converted to: " + knownTargets(*source.ptMsgInfo) + ")";
  }
  return "";
}

void writeGenerated(const Options &options, const OutputBuffer &buffer, int size, OutputFile &output) {
  if (size < 0 || size > buffer.size()) {
    throw DataError("the generate pipeline of format '" + options.to + "' went beyond the " +
                    std::to_string(buffer.size()) + " bytes of its buffer; write a larger --max-output");
  }
  const std::string_view bytes(buffer.data(), static_cast<size_t>(size));
  const Wrapping wrapping = wrap(options.outFraming, bytes);
  output.write(wrapping.head);
  output.write(bytes);
  output.write(wrapping.tail);
}

// Through the generate chain, which begins with a converter.
void generateConverted(const Options &options, InnerMessage &source, const OutputBuffer &buffer,
                       OutputFile &output) {
  std::string format = options.to;
  int size = buffer.size();
  int error = 0;
  const MessageHandle target(cvtGenerateMessasge(&source, format.data(), buffer.data(), &size, &error));
  if (target == nullptr) refuse("the message cannot be generated", adviceOnGenerating(options, source));
  writeGenerated(options, buffer, size, output);
}

// As it is: the generate chain gets the message itself.
void generateAsIs(const Options &options, InnerMessage &message, const OutputBuffer &buffer,
                  OutputFile &output) {
  std::string format = options.to;
  message.psBuf = buffer.data();
  message.nLen = buffer.size();
  message.nNowLen = 0;
  if (fucGenerate(format.data(), nullptr, &message) != 0) {
    refuse("the message cannot be generated", adviceOnGenerating(options, message));
  }
  writeGenerated(options, buffer, message.nNowLen, output);
}

MessageHandle filled(const Options &options, const Frame &frame, Layouts &layouts) {
  const JsonMessage json({frame.data, frame.size});
  std::string name = json.message().empty() ? options.message : json.message();
  if (name.empty()) throw DataError("expected \"message\" in the JSON text, found none; write it, or -m");
  std::string format = options.to;
  int error = 0;
  MessageHandle message(cvtNewMessage(name.data(), format.data(), &error));
  if (message == nullptr) refuse("the message cannot be made", "(known: " + knownMessages() + ")");
  const ValueListInfo values = message->tValueListInfo;
  json.fill(layouts.of(*message->ptMsgInfo), values);
  return message;
}

bool isBlank(const Frame &frame) {
  return std::string_view(frame.data, frame.size).find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

Exit convert(const Options &options) {
  parsePipeline(options.from);
  generatePipeline(options.to);
  if (!options.message.empty()) checkMessageName(options.message);
  const OutputBuffer buffer(options.maxOutput);
  return run(options, [&](const Frame &frame, OutputFile &output) {
    const MessageHandle source = parsed(options, frame);
    generateConverted(options, *source, buffer, output);
  });
}

Exit parse(const Options &options) {
  parsePipeline(options.from);
  if (!options.message.empty()) checkMessageName(options.message);
  Layouts layouts;
  std::string text;
  return run(options, [&](const Frame &frame, OutputFile &output) {
    const MessageHandle message = parsed(options, frame);
    const Msg &msg = *message->ptMsgInfo;
    const Fields &fields = layouts.of(msg);
    ValueList *const values = message->tValueListInfo.ptValueList;
    text.clear();
    if (options.bJson) {
      appendJson(text, msg, fields, values, options.bAll);
      text += '\n';
    } else {
      text.append(msg.psMsgName).append("\n");
      appendTree(text, fields, values, options.bAll);
    }
    output.write(text);
  });
}

Exit generate(const Options &options) {
  const bool bConverts = converts(generatePipeline(options.to));
  if (!options.message.empty()) checkMessageName(options.message);
  const OutputBuffer buffer(options.maxOutput);
  Layouts layouts;
  return run(options, [&](const Frame &frame, OutputFile &output) {
    if (isBlank(frame)) return;
    const MessageHandle message = filled(options, frame, layouts);
    if (bConverts) {
      generateConverted(options, *message, buffer, output);
    } else {
      generateAsIs(options, *message, buffer, output);
    }
  });
}

}  // namespace tool
