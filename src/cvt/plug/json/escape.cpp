#include "escape.h"

#include "kit/fault.h"
#include "kit/utf8.h"

namespace cvt::json {

namespace {

bool isPlain(char c) {
  return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
}

void putUnit(kit::Output &out, uint32_t unit) {
  static constexpr char kHex[] = "0123456789abcdef";
  const char escape[] = {'\\',           'u', kHex[unit >> 12], kHex[unit >> 8 & 15], kHex[unit >> 4 & 15],
                         kHex[unit & 15]};
  out.put({escape, sizeof escape});
}

void putCode(kit::Output &out, uint32_t code) {
  if (code < 0x10000) return putUnit(out, code);
  putUnit(out, 0xD800 + ((code - 0x10000) >> 10));
  putUnit(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
}

void putControl(kit::Output &out, char c) {
  switch (c) {
    case '"':
      return out.put("\\\"");
    case '\\':
      return out.put("\\\\");
    case '\b':
      return out.put("\\b");
    case '\f':
      return out.put("\\f");
    case '\n':
      return out.put("\\n");
    case '\r':
      return out.put("\\r");
    case '\t':
      return out.put("\\t");
    default:
      return putUnit(out, static_cast<unsigned char>(c));
  }
}

kit::Utf8Char wideAt(std::string_view value, size_t at) {
  const kit::Utf8Char wide = kit::utf8Char(value.data() + at, value.size() - at);
  if (wide.length > 0) return wide;
  throw kit::Fault(kit::Fault::kHere, "UTF-8",
                   kit::quoted(value.data() + at, 1) + " in byte " + std::to_string(at) + " of the value",
                   "Convert the value to UTF-8, or carry it in another form, such as base64");
}

void putEscaped(kit::Output &out, std::string_view value, bool ascii) {
  size_t done = 0;  // written up to here
  for (size_t at = 0; at < value.size();) {
    const char c = value[at];
    if (isPlain(c) || c == 0x7F) {
      ++at;
      continue;
    }
    const bool wide = static_cast<unsigned char>(c) >= 0x80;
    const kit::Utf8Char next = wide ? wideAt(value, at) : kit::Utf8Char{0, 1};
    if (!wide || ascii) {
      out.put(value.substr(done, at - done));
      wide ? putCode(out, next.code) : putControl(out, c);
      done = at + static_cast<size_t>(next.length);
    }
    at += static_cast<size_t>(next.length);
  }
  out.put(value.substr(done));
}

}  // namespace

void putString(kit::Output &out, std::string_view value, bool ascii) {
  if (isPlain(value)) {
    char *piece = out.reserve(value.size() + 2);
    *piece = '"';
    if (!value.empty()) std::memcpy(piece + 1, value.data(), value.size());
    piece[value.size() + 1] = '"';
    return;
  }
  out.put('"');
  putEscaped(out, value, ascii);
  out.put('"');
}

}  // namespace cvt::json
