// w7.cpp INPUT OUTPUT FROM TO: lines of three text fields from one character set to another, by iconv(3), field by
// field; a field of ASCII alone is copied. FROM and TO are UTF-8 and GB18030.
#include <iconv.h>

#include "text.h"

namespace {

using namespace bench;

class Converter {
 public:
  Converter(const char *to, const char *from) : m_handle(iconv_open(to, from)) {
    if (m_handle == reinterpret_cast<iconv_t>(-1)) throw Failure("no such character set");
  }
  ~Converter() { iconv_close(m_handle); }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;

  char *put(char *to, std::string_view text, size_t room) const {
    char *from = const_cast<char *>(text.data());
    size_t left = text.size();
    if (iconv(m_handle, &from, &left, &to, &room) != 0) throw Failure("a text that cannot be converted");
    return to;
  }

 private:
  iconv_t m_handle;
};

using Widths = std::array<size_t, 3>;

Widths widthsOf(std::string_view charset) {
  if (charset == "UTF-8") return {120, 16, 120};
  if (charset == "GB18030") return {80, 16, 80};
  throw Failure("expected UTF-8 or GB18030");
}

bool isAscii(std::string_view text) {
  unsigned char all = 0;
  for (const char c : text) all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
  return all < 128;
}

char *putField(char *to, const Converter &converter, std::string_view text, size_t width) {
  if (isAscii(text)) return putPadded(to, trimmed(text), width);
  char *const end = converter.put(to, trimmed(text), width);
  std::memset(end, ' ', width - static_cast<size_t>(end - to));
  return to + width;
}

void convertLine(const Converter &converter, const Widths &from, const Widths &to, std::string_view line,
                 Output &output) {
  needLength(line, from[0] + from[1] + from[2], from[0] + from[1] + from[2]);
  char *at = output.room(to[0] + to[1] + to[2] + 1);
  for (size_t i = 0; i < from.size(); ++i) {
    at = putField(at, converter, line.substr(0, from[i]), to[i]);
    line.remove_prefix(from[i]);
  }
  *at++ = '\n';
  output.stop(at);
}

void run(char **arguments) {
  const Widths from = widthsOf(arguments[3]), to = widthsOf(arguments[4]);
  const Converter converter(arguments[4], arguments[3]);
  convertFile(arguments[1], arguments[2], 2, [&](std::string_view input, Output &output) {
    eachLine(input, [&](std::string_view line) { convertLine(converter, from, to, line, output); });
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 2, run);
}
