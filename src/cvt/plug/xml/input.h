// input.h: in which encoding a document comes, and how it gets to the parser.
#pragma once

#include <string>
#include <string_view>

#include "plan.h"

namespace cvt::xml {

// A document as the parser reads it: as it came, or converted to UTF-8.
struct Input {
  std::string_view bytes;
  const char *encoding;               // what the parser must take it for; null: what it says itself
  std::string_view raw;               // as it came
  const kit::Charset *convertedFrom;  // null: bytes are raw

  // Whether the bytes are UTF-8, unless the document says otherwise itself.
  bool mayBeUtf8() const;

  // The place in `raw` of an offset in `bytes`.
  size_t rawOffset(size_t offset) const;
};

// The parser knows UTF-8, UTF-16, ISO-8859-1 and US-ASCII; other encodings are converted into `room`, and
// only when the definition names them: what a document declares opens no converter. A document that declares
// none has the definition's own encoding, unless it begins with a byte order mark. Throws Fault, with an
// offset from the start of the document, which is `from` bytes into the buffer.
Input openInput(const Plan &plan, std::string_view raw, size_t from, std::string &room);

}  // namespace cvt::xml
