// strings.cpp: the library's small tools for strings, each against a plain statement of what it does.
#include <cstdlib>
#include <cstring>

#include "cvt_string.h"
#include "support/input.h"

namespace {

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encode(const std::string &bytes) {
  std::string out;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const std::string group = bytes.substr(i, 3);
    unsigned bits = 0;
    for (size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
    }
    for (size_t k = 0; k < 4; ++k) out += k <= group.size() ? kBase64[bits >> (18 - 6 * k) & 63] : '=';
  }
  return out;
}

// Any text; one byte of capacity at least. A cut group is read whole, up to the terminator.
void decodeBase64(fuzz::Input &input) {
  const size_t more = input.below(4);
  std::string text = input.rest();
  const int length = static_cast<int>(text.size());
  text.append(4, '=');
  std::string out(text.size() / 4 * 3 + more + 1, '\0');
  int room = static_cast<int>(out.size());
  if (cvtStrDecodeBase64(text.data(), length, out.data(), &room) == 0) {
    fuzz::require(room >= 0 && room <= static_cast<int>(out.size()), "the decoded length fits");
  }
}

void decodeWhatWasEncoded(fuzz::Input &input) {
  const std::string bytes = input.rest();
  std::string text = encode(bytes);
  std::string out(text.size() / 4 * 3 + 1, '\0');
  int length = static_cast<int>(out.size());
  const int code = cvtStrDecodeBase64(text.data(), static_cast<int>(text.size()), out.data(), &length);
  fuzz::require(code == 0 && out.substr(0, static_cast<size_t>(length)) == bytes,
                "base64 decodes to what was encoded");
}

// To GB18030 and back; every character of Unicode has its place there.
void convertCharacters(fuzz::Input &input) {
  const size_t room = input.below(256);
  std::string text = input.rest();
  std::string small(room, '\0');
  int length = static_cast<int>(room);
  cvtStrG2U(text.data(), static_cast<int>(text.size()), small.data(), &length);
  fuzz::require(length >= 0 && length <= static_cast<int>(room), "the converted length fits");

  std::string there(text.size() * 4, '\0');
  length = static_cast<int>(there.size());
  if (cvtStrU2G(text.data(), static_cast<int>(text.size()), there.data(), &length) != 0) return;
  std::string back(text.size(), '\0');
  int backLength = static_cast<int>(back.size());
  const int code = cvtStrG2U(there.data(), length, back.data(), &backLength);
  fuzz::require(code == 0 && back.substr(0, static_cast<size_t>(backLength)) == text,
                "UTF-8 comes back from GB18030 as it was");
}

void split(fuzz::Input &input) {
  const int most = static_cast<int>(input.below(8));
  std::string separators = input.string();
  const std::string line = input.rest();
  std::string cut = line;
  char *fields[8] = {};
  const int count = cvtStrNSplit(fields, cut.data(), separators.data(), most);
  fuzz::require(count >= 1 && count <= std::max(most, 1), "there are as many fields as asked for at most");
  size_t total = 0;
  for (int i = 0; i < count; ++i) total += std::strlen(fields[i]) + 1;
  fuzz::require(total == std::strlen(line.c_str()) + 1, "the fields and their separators are the line");
}

void readNumber(fuzz::Input &input) {
  std::string text = input.rest();
  const size_t length = std::min<size_t>(text.size(), 9);
  const std::string before = text;
  const int value = cvtStrAntoi(text.data(), static_cast<int>(length));
  fuzz::require(text == before, "the text is as it was");
  fuzz::require(value == std::atoi(text.substr(0, length).c_str()), "the number is that of its digits");
}

void upperCase(fuzz::Input &input) {
  std::string text = input.rest();
  std::string upper = text;
  cvtStrToUp(upper.data(), static_cast<int>(upper.size()));
  for (size_t i = 0; i < text.size(); ++i) {
    const bool lower = text[i] >= 'a' && text[i] <= 'z';
    fuzz::require(upper[i] == (lower ? text[i] - 'a' + 'A' : text[i]), "only small letters change");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  void (*const tools[])(fuzz::Input &) = {decodeBase64, decodeWhatWasEncoded, convertCharacters,
                                          split,        readNumber,           upperCase};
  tools[input.below(std::size(tools))](input);
  return 0;
}
