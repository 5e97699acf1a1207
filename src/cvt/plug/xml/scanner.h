// scanner.h: goes over a document of plain XML.
//
// Plain are elements, attributes, texts, comments and CDATA sections in UTF-8, with names of ASCII characters and
// without a DOCTYPE: what messages are made of. Whatever else comes, right or wrong, the scanner does not judge:
// it stops, and the document is read once more by the parser that knows all of XML. So what it takes is
// well-formed, and what is refused is refused with that parser's words.
#pragma once

#include <string_view>
#include <vector>

#include "reader.h"

namespace cvt::xml {

class Scanner {
 public:
  struct Memory;  // stays for the next document

  // The bytes must outlive the scanner. Names and values that it tells lie in them or in the room.
  Scanner(const Plan &plan, std::string_view bytes, Room &room, Memory &memory);

  enum class Token { Open, Text, Close, End, NotPlain };
  Token next();

  // Whether that element comes next, without prefix and attributes. It is passed then: its start tag, or, a field
  // whose text is one piece of ASCII, all of it, and its text is told.
  bool opens(const Element &element);
  bool leaf(const Element &element);

  // Where the last token begins.
  size_t offset() const { return static_cast<size_t>(m_token - m_begin); }

  // Open: the element, its attributes, and how many namespaces it declares.
  const Name &name() const { return m_name; }
  Attributes attributes() const { return m_room.given; }
  size_t declarations() const { return m_declarations; }

  // Text: a piece of it, and whether it stays where it is until the end.
  std::string_view text() const { return m_text; }
  Reader::Bytes textIs() const { return m_textIs; }

 private:
  // A name as it is written.
  struct Written {
    std::string_view prefix;
    std::string_view local;
    std::string_view whole;
  };
  struct Binding {
    std::string_view prefix;  // empty: the default namespace
    std::string_view uri;
    int space;
  };
  struct Tag {
    std::string_view name;  // as it is written
    size_t bindings;        // those around it
  };

  Token outside();
  Token markup();
  bool skipComment();
  Token section();
  Token content();
  Token lineEnd();
  Token reference();
  Token openTag();
  Token closeTag();
  Token leave();
  Token told(const char *from, const char *to);
  Token told(std::string_view text);

  void skipHead();
  bool attributeList();
  bool attribute();
  bool declare(std::string_view prefix, std::string_view uri);
  bool resolve();
  bool resolve(const Written &written, Name &name) const;
  bool distinct() const;
  bool written(Written &name);
  bool value(std::string_view &value);
  bool decode(std::string_view raw, std::string_view &value);
  const char *skipCharacter(const char *at) const;
  bool skipSpace();
  bool comes(std::string_view text) const;
  bool comesPlain(const Element &element) const;

  const Plan &m_plan;
  const char *m_begin;
  const char *m_end;
  const char *m_at;
  const char *m_token;
  Room &m_room;
  Memory &m_memory;
  bool m_started = false;
  bool m_closes = false;  // an element without content has been told of, but not its end

  Name m_name{};
  size_t m_declarations = 0;
  std::string_view m_text;
  Reader::Bytes m_textIs = Reader::Bytes::Staying;
  char m_character[4]{};
};

struct Scanner::Memory {
  std::vector<Tag> open;
  std::vector<Binding> bindings;
  std::vector<Written> attributes;
};

}  // namespace cvt::xml
