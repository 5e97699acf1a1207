// tool_framing.cpp: how the command cuts a stream into messages: they are the same however the bytes arrive,
// in their order the frames are the stream, and a wrapped message is cut out as it was.
#include "framing.h"

#include <vector>

#include "support/input.h"

namespace {

constexpr const char *kFramings[] = {"whole", "line", "len2", "len4", "lenascii4", "rec=1", "rec=7"};

tool::FrameReader::ReadBytes stream(const std::string &bytes, size_t step) {
  return [&bytes, step, at = size_t{0}](char *to, size_t size) mutable {
    const size_t length = std::min({step, size, bytes.size() - at});
    bytes.copy(to, length, at);
    at += length;
    return length;
  };
}

struct Cut {
  std::vector<std::string> messages;
  std::string error;
  bool operator==(const Cut &) const = default;
};

Cut cut(const tool::Framing &framing, const std::string &bytes, size_t step) {
  tool::FrameReader reader(framing, stream(bytes, step));
  Cut result;
  std::string seen;
  try {
    while (const auto frame = reader.next()) {
      result.messages.emplace_back(frame->data, frame->size);
      fuzz::require(frame->data[frame->size] == '\0', "a zero byte stands behind a message");
      fuzz::require(bytes.compare(frame->offset, frame->size, result.messages.back()) == 0,
                    "a message stands where its offset says");
      seen += frame->raw;
    }
    fuzz::require(seen == bytes, "the frames are the stream");
  } catch (const tool::FramingError &error) {
    result.error = error.what();
    fuzz::require(error.offset() <= bytes.size(), "the error lies in the stream");
    seen += reader.rest();
    fuzz::require(bytes.starts_with(seen), "the frames and the rest begin the stream");
  }
  return result;
}

void expectWrapped(const tool::Framing &framing, const std::string &message) {
  try {
    const tool::Wrapping wrapping = tool::wrap(framing, message);
    const Cut result = cut(framing, wrapping.head + message + std::string(wrapping.tail), 5);
    const bool lines = framing.kind == tool::Framing::Kind::line;
    fuzz::require(lines || result.messages == std::vector{message}, "a wrapped message comes back");
  } catch (const tool::DataError &error) {
    fuzz::require(*error.what() != '\0', "the refusal says why");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const tool::Framing framing = tool::parseFraming("--framing", kFramings[input.below(std::size(kFramings))]);
  const size_t step = input.byte() + 1U;
  const std::string bytes = input.rest();
  fuzz::require(cut(framing, bytes, step) == cut(framing, bytes, bytes.size() + 1),
                "the messages are the same however the bytes arrive");
  expectWrapped(framing, bytes);
  return 0;
}
