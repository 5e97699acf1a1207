#include "expat.h"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <random>

#include "kit/log.h"
#include "reader.h"

namespace cvt::xml {

namespace {

using kit::Fault;

// Stands between namespace URI and local name in the names that the parser tells; no document can contain it.
constexpr char kSeparator = '\x1F';

Name nameOf(const Plan &plan, const char *expanded) {
  const std::string_view text(expanded);
  const size_t separator = text.find(kSeparator);
  if (separator == std::string_view::npos) return {{}, text, 0};
  const std::string_view uri = text.substr(0, separator);
  return {uri, text.substr(separator + 1), plan.spaceOf(uri)};
}

// The parser gets a document in pieces, each as large as all before it.
constexpr size_t kFirstPiece = size_t{64} * 1024;

// The attributes of the start tag that a text begins with, as far as it goes; 0 where none begins.
size_t attributesIn(std::string_view text) {
  if (text.size() < 2 || text[0] != '<' || text[1] == '!' || text[1] == '?') return 0;
  size_t attributes = 0;
  char quote = 0;
  for (const char c : text) {
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '=') {
      ++attributes;
    } else if (c == '>') {
      break;
    }
  }
  return attributes;
}

// Seeds the parser's hash tables, so that no input can be made to collide in them.
unsigned long hashSalt() {
  static const unsigned long salt = [] {
    std::random_device random;
    return static_cast<unsigned long>(random()) << 32 | random() |
           1UL;  // 0 would ask for a new one each time
  }();
  return salt;
}

// Where the parser's memory comes from; it passes nothing to the functions that ask for it.
Region *f_region = nullptr;

// One document's parser. It is made anew each time, so that nothing of a document reaches the next, and has
// all its memory in the region, which takes it back as a whole.
class Document {
 public:
  Document(const Plan &plan, kit::ParseCall &call, const Input &input, Room &room)
      : m_plan(plan), m_call(call), m_input(input), m_room(room), m_reader(plan, call, room) {
    f_region = &room.region;
    static constexpr XML_Memory_Handling_Suite kMemory = {
        [](size_t size) { return f_region->allocate(size); },
        [](void *piece, size_t size) { return f_region->resize(piece, size); }, [](void *) {}};
    m_parser = XML_ParserCreate_MM(input.encoding, &kMemory, &kSeparator);
    if (m_parser == nullptr) throw std::bad_alloc();
    XML_SetHashSalt(m_parser, hashSalt());
    XML_SetUserData(m_parser, this);
    XML_SetElementHandler(m_parser, onOpen, onClose);
    XML_SetCharacterDataHandler(m_parser, onText);
    XML_SetStartNamespaceDeclHandler(m_parser, onDeclaration);
    XML_SetStartDoctypeDeclHandler(m_parser, onDoctype);
  }

  void parse() {
    const std::string_view bytes = m_input.bytes;
    if (bytes.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
      throw Fault(Fault::kHere, "a document of less than 2 GiB", std::to_string(bytes.size()) + " bytes");
    }
    XML_Status status = XML_STATUS_OK;
    for (size_t fed = 0, piece = kFirstPiece; status == XML_STATUS_OK; piece = fed) {
      piece = std::min(piece, bytes.size() - fed);
      const bool last = fed + piece == bytes.size();
      status = XML_Parse(m_parser, bytes.data() + fed, static_cast<int>(piece), last ? XML_TRUE : XML_FALSE);
      fed += piece;
      if (last) break;
      if (status == XML_STATUS_OK) checkOpenTag(bytes.substr(0, fed));
    }
    if (m_fault != nullptr) {
      m_call.end = offset(m_stoppedAt);  // where faults without an offset are reported
      std::rethrow_exception(m_fault);
    }
    if (status != XML_STATUS_OK) malformed();
  }

 private:
  // No exception may cross the parser: it is kept, and the parser stopped.
  template <class Body>
  static void guard(void *data, Body body) noexcept {
    auto &self = *static_cast<Document *>(data);
    if (self.m_fault != nullptr) return;  // a stopped parser may still deliver what it has begun
    try {
      body(self);
    } catch (...) {
      self.m_fault = std::current_exception();
      self.m_stoppedAt = XML_GetCurrentByteIndex(self.m_parser);
      XML_StopParser(self.m_parser, XML_FALSE);
      self.m_room.region.allow(0);  // for the rest of the tag, which it still takes apart
    }
  }

  static void onOpen(void *data, const XML_Char *name, const XML_Char **attributes) {
    guard(data, [&](Document &self) {
      std::vector<Given> &given = self.m_room.given;
      const int names = XML_GetSpecifiedAttributeCount(self.m_parser);  // and values
      self.m_reader.limitAttributes(static_cast<size_t>(names) / 2 + self.m_declarations, Fault::kHere, "");
      given.clear();
      for (; *attributes != nullptr; attributes += 2) {
        given.push_back({nameOf(self.m_plan, attributes[0]), attributes[1]});
      }
      self.m_reader.open(nameOf(self.m_plan, name), given, self.m_declarations);
      self.m_declarations = 0;
    });
  }
  static void onClose(void *data, const XML_Char *) {
    guard(data, [](Document &self) { self.m_reader.close(); });
  }
  static void onText(void *data, const XML_Char *bytes, int length) {
    guard(data, [&](Document &self) {
      self.m_reader.text({bytes, static_cast<size_t>(length)}, Reader::Bytes::Passing);
    });
  }
  static void onDeclaration(void *data, const XML_Char *, const XML_Char *uri) {
    guard(data, [&](Document &self) {
      self.m_declarations += 1;
      const size_t length = uri == nullptr ? 0 : std::strlen(uri);
      if (length <= kLongestUri) return;
      throw Fault(Fault::kHere, "a namespace URI of at most " + std::to_string(kLongestUri) + " bytes",
                  "one of " + std::to_string(length), "Shorten it");
    });
  }
  static void onDoctype(void *data, const XML_Char *name, const XML_Char *, const XML_Char *, int) {
    guard(data, [&](Document &self) {
      throw Fault(self.doctypeOffset(), "no DOCTYPE", "<!DOCTYPE " + std::string(name),
                  "Remove it: entities and external definitions are never read");
    });
  }

  // The parser tells of a DOCTYPE at its end.
  size_t doctypeOffset() const {
    const auto end = static_cast<size_t>(XML_GetCurrentByteIndex(m_parser));
    const size_t start = m_input.bytes.substr(0, end).rfind("<!DOCTYPE");
    return offset(static_cast<XML_Index>(start == std::string_view::npos ? end : start));
  }

  // The parser takes a tag apart as a whole: one whose end has not come yet is counted before it gets large.
  void checkOpenTag(std::string_view fed) const {
    const std::string_view tag = unread(fed);
    if (tag.size() >= kFirstPiece / 2) checkTag(tag, " before the end of the tag");
  }

  void checkTag(std::string_view tag, const char *soFar) const {
    if (isWide(m_input.bytes)) return;
    m_reader.limitAttributes(attributesIn(tag), offset(XML_GetCurrentByteIndex(m_parser)), soFar);
  }

  // What the parser has not gone over.
  std::string_view unread(std::string_view fed) const {
    const XML_Index index = XML_GetCurrentByteIndex(m_parser);
    return fed.substr(index < 0 ? fed.size() : std::min(static_cast<size_t>(index), fed.size()));
  }

  // UTF-16: its bytes are no characters.
  static bool isWide(std::string_view bytes) {
    return bytes[0] == '\0' || bytes[1] == '\0' || bytes[0] == '\xFE' || bytes[0] == '\xFF';
  }

  // A place of the parser, from the start of the buffer.
  size_t offset(XML_Index index) const {
    return m_call.from + m_input.rawOffset(index < 0 ? 0 : static_cast<size_t>(index));
  }

  std::string advice(XML_Error error) const {
    switch (error) {
      case XML_ERROR_INVALID_TOKEN:
        return "Write & as &amp; and < as &lt;, put attribute values in quotes, remove control "
               "characters, and declare the right encoding";
      case XML_ERROR_TAG_MISMATCH: {
        const std::string open(m_reader.innermost());
        return open.empty() ? "Close the element that was opened last" : "Close <" + open + "> first";
      }
      case XML_ERROR_UNDEFINED_ENTITY:
        return "Write the character itself, or its number as &#N;";
      case XML_ERROR_UNBOUND_PREFIX:
        return "Declare the prefix with xmlns:";
      case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        return "A message is one document; for several, set the framing";
      case XML_ERROR_NO_ELEMENTS:
      case XML_ERROR_UNCLOSED_TOKEN:
      case XML_ERROR_UNCLOSED_CDATA_SECTION:
      case XML_ERROR_PARTIAL_CHAR:
        return "The document is cut off";
      case XML_ERROR_MISPLACED_XML_PI:
        return "Remove what stands before <?xml";
      default:
        return "";
    }
  }

  // Mostly by one tag: the parser writes out the namespace of each attribute before it tells of any.
  [[noreturn]] void outOfMemory() const {
    if (!m_room.region.spent()) throw std::bad_alloc();
    checkTag(unread(m_input.bytes), "");
    throw Fault(
        offset(XML_GetCurrentByteIndex(m_parser)),
        "a document that takes at most " + std::to_string(m_room.region.most()) + " bytes of memory to read",
        "one that takes more", "Write fewer attributes into a tag, or shorter namespaces");
  }

  [[noreturn]] void malformed() const {
    const XML_Error error = XML_GetErrorCode(m_parser);
    if (error == XML_ERROR_NO_MEMORY) outOfMemory();
    const size_t at = offset(XML_GetCurrentByteIndex(m_parser));
    const std::string_view rest(m_call.buffer + at, m_call.length - at);
    const std::string found =
        rest.empty() ? "the end" : kit::quoted(rest.data(), std::min<size_t>(rest.size(), 24));
    throw Fault(at, "well-formed XML",
                std::string(XML_ErrorString(error)) + " in line " +
                    std::to_string(XML_GetCurrentLineNumber(m_parser)) + ", column " +
                    std::to_string(XML_GetCurrentColumnNumber(m_parser) + 1) + ": " + found,
                advice(error));
  }

  const Plan &m_plan;
  kit::ParseCall &m_call;
  const Input &m_input;
  Room &m_room;
  Reader m_reader;
  XML_Parser m_parser = nullptr;
  std::exception_ptr m_fault;
  XML_Index m_stoppedAt = 0;
  size_t m_declarations = 0;  // of the element to come
};

}  // namespace

void readWithExpat(const Plan &plan, kit::ParseCall &call, const Input &input, Room &room) {
  Document(plan, call, input, room).parse();
}

}  // namespace cvt::xml
