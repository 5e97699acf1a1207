#include "escape.h"

#include <array>
#include <charconv>
#include <string>

#include "kit/fault.h"
#include "kit/log.h"
#include "kit/utf8.h"

namespace cvt::xml {

namespace {

using kit::Fault;

enum class Kind : unsigned char {
  Plain,
  Markup,  // & < >
  Quote,   // markup in attribute values
  Break,   // tab, line feed: attribute values only
  Return,
  Control,  // not in XML 1.0
  Wide,     // part of a character above ASCII
};

constexpr std::array<Kind, 256> kinds() {
  std::array<Kind, 256> all{};
  for (size_t i = 0; i < all.size(); ++i) {
    all[i] = i < 0x20 ? Kind::Control : i < 0x80 ? Kind::Plain : Kind::Wide;
  }
  all['&'] = all['<'] = all['>'] = Kind::Markup;
  all['"'] = Kind::Quote;
  all['\t'] = all['\n'] = Kind::Break;
  all['\r'] = Kind::Return;
  return all;
}
constexpr std::array<Kind, 256> kKinds = kinds();

Kind kindOf(char c) {
  return kKinds[static_cast<unsigned char>(c)];
}

std::string_view reference(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return "&#13;";
  }
}

void putNumber(kit::Output &out, uint32_t code) {
  char digits[24];
  const char *end = std::to_chars(digits, digits + sizeof digits, code).ptr;
  out.put("&#");
  out.put({digits, static_cast<size_t>(end - digits)});
  out.put(';');
}

[[noreturn]] void refuse(std::string_view value, size_t at, size_t length) {
  throw Fault(Fault::kHere, "characters that XML 1.0 can carry, in UTF-8",
              kit::quoted(value.data() + at, length) + " in byte " + std::to_string(at) + " of the value",
              "Remove it, or carry the value in another form, such as base64");
}

// The two code points above the surrogates that no document may contain.
bool forbidden(uint32_t code) {
  return code == 0xFFFE || code == 0xFFFF;
}

// The end of the run of characters above ASCII that begins at `at`; every one of them is checked.
size_t wideRun(std::string_view value, size_t at) {
  while (at < value.size() && kindOf(value[at]) == Kind::Wide) {
    const kit::Utf8Char next = kit::utf8Char(value.data() + at, value.size() - at);
    if (next.length <= 0) refuse(value, at, 1);
    if (forbidden(next.code)) refuse(value, at, static_cast<size_t>(next.length));
    at += static_cast<size_t>(next.length);
  }
  return at;
}

// A run of characters above ASCII in another encoding.
void putEncoded(kit::Output &out, const kit::Charset &charset, std::string_view run) {
  while (!run.empty()) {
    char *room = out.reserve(0);
    const kit::Converted done = charset.encode(run.data(), run.size(), room, out.room());
    out.reserve(done.written);
    run.remove_prefix(done.read);
    if (done.damage == kit::Damage::None) return;
    if (done.damage == kit::Damage::NoRoom) out.reserve(out.room() + 1);  // says where the room ended
    const kit::Utf8Char lacking = kit::utf8Char(run.data(), run.size());
    putNumber(out, lacking.code);
    run.remove_prefix(static_cast<size_t>(lacking.length));
  }
}

bool written(Kind kind, Place place) {
  return kind == Kind::Plain || (place == Place::Content && (kind == Kind::Quote || kind == Kind::Break));
}

}  // namespace

void putEscaped(kit::Output &out, const kit::Charset &charset, std::string_view value, Place place) {
  if (kit::isPlainXml(value.data(), value.size())) return out.put(value);
  size_t done = 0;  // written up to here
  for (size_t at = 0; at < value.size();) {
    const Kind kind = kindOf(value[at]);
    if (written(kind, place)) {
      ++at;
      continue;
    }
    if (kind == Kind::Control) refuse(value, at, 1);
    if (kind == Kind::Wide) {
      const size_t end = wideRun(value, at);
      if (!charset.isUtf8()) {
        out.put(value.substr(done, at - done));
        putEncoded(out, charset, value.substr(at, end - at));
        done = end;
      }
      at = end;
      continue;
    }
    out.put(value.substr(done, at - done));
    out.put(reference(value[at]));
    done = ++at;
  }
  out.put(value.substr(done));
}

}  // namespace cvt::xml
