#include "scanner.h"

#include <array>
#include <cstring>

#include "kit/bytes.h"
#include "kit/utf8.h"

namespace cvt::xml {

namespace {

// Attributes of an element, and namespaces declared so far, that are gone over one by one. Where there are more the
// other parser looks, which has tables.
constexpr size_t kMost = 64;

// What a byte can be. Bytes of texts in other scripts are none of these.
enum Class : unsigned char {
  kNameStart = 1,  // of names of ASCII characters, but for the colon
  kNameRest = 2,
  kBlank = 4,
  kPlain = 8,    // stands for itself in a text
  kLiteral = 16  // stands for itself in an attribute's value, unless it is the quote
};

constexpr std::array<unsigned char, 256> classes() {
  std::array<unsigned char, 256> all{};
  for (unsigned c = 0; c < 128; ++c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool digit = c >= '0' && c <= '9';
    const bool blank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    const bool control = c < 0x20;
    unsigned of = 0;
    if (letter) of |= kNameStart;
    if (letter || digit || c == '-' || c == '.') of |= kNameRest;
    if (blank) of |= kBlank;
    if ((!control || c == '\t' || c == '\n') && c != '<' && c != '&' && c != ']') of |= kPlain;
    if (!control && c != '<' && c != '&' && c != '"' && c != '\'') of |= kLiteral;
    all[c] = static_cast<unsigned char>(of);
  }
  return all;
}
constexpr std::array<unsigned char, 256> kClasses = classes();

bool is(char c, Class wanted) {
  return (kClasses[static_cast<unsigned char>(c)] & wanted) != 0;
}

// A character that XML 1.0 allows.
bool isCharacter(uint32_t code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  return code < 0xD800 || (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
}

// The number of a character reference, "#65" or "#x41"; 0 when it is none.
uint32_t numberOf(std::string_view digits) {
  digits.remove_prefix(1);
  const bool hex = !digits.empty() && digits[0] == 'x';
  if (hex) digits.remove_prefix(1);
  if (digits.empty()) return 0;
  uint32_t code = 0;
  for (const char c : digits) {
    const int digit = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : 99;
    if (digit >= (hex ? 16 : 10)) return 0;
    code = code * (hex ? 16 : 10) + static_cast<uint32_t>(digit);
    if (code > 0x10FFFF) return 0;
  }
  return isCharacter(code) ? code : 0;
}

// The character that "&NAME;" stands for, as UTF-8 into `out`; its length, or 0.
size_t referenced(std::string_view name, char *out) {
  if (name.starts_with('#')) {
    const uint32_t code = numberOf(name);
    return code == 0 ? 0 : kit::putUtf8(code, out);
  }
  const char c = name == "lt"     ? '<'
                 : name == "gt"   ? '>'
                 : name == "amp"  ? '&'
                 : name == "quot" ? '"'
                 : name == "apos" ? '\''
                                  : '\0';
  *out = c;
  return c == '\0' ? 0 : 1;
}

// The name in a reference that begins at `at`; empty when it has no end nearby.
std::string_view nameInReference(const char *at, const char *end) {
  static constexpr size_t kLongest = 12;
  const size_t most = std::min<size_t>(kLongest, static_cast<size_t>(end - at));
  const auto *semicolon = static_cast<const char *>(std::memchr(at, ';', most));
  return semicolon == nullptr ? std::string_view()
                              : std::string_view(at + 1, static_cast<size_t>(semicolon - at) - 1);
}

}  // namespace

Scanner::Scanner(const Plan &plan, std::string_view bytes, Room &room, Memory &memory)
    : m_plan(plan),
      m_begin(bytes.data()),
      m_end(bytes.data() + bytes.size()),
      m_at(m_begin),
      m_token(m_begin),
      m_room(room),
      m_memory(memory) {
  m_memory.open.clear();
  m_memory.bindings.clear();
  m_memory.bindings.push_back({{}, {}, 0});
}

bool Scanner::comes(std::string_view text) const {
  return static_cast<size_t>(m_end - m_at) >= text.size() && kit::equalShort(m_at, text.data(), text.size());
}

bool Scanner::skipSpace() {
  const char *from = m_at;
  while (m_at != m_end && is(*m_at, kBlank)) ++m_at;
  return m_at != from;
}

Scanner::Token Scanner::next() {
  m_token = m_at;
  if (m_closes) {
    m_closes = false;
    return leave();
  }
  if (m_memory.open.empty()) return outside();
  while (comes("<!--")) {
    if (!skipComment()) return Token::NotPlain;
    m_token = m_at;
  }
  if (m_at == m_end) return Token::NotPlain;
  return *m_at == '<' ? markup() : content();
}

bool Scanner::comesPlain(const Element &element) const {
  if (m_closes || !comes(element.tag)) return false;
  size_t i = m_memory.bindings.size() - 1;
  while (!m_memory.bindings[i].prefix.empty()) --i;  // the first one is a default namespace
  return m_memory.bindings[i].space == element.space;
}

bool Scanner::opens(const Element &element) {
  if (!comesPlain(element)) return false;
  m_token = m_at;
  m_memory.open.push_back({{m_at + 1, element.local.size()}, m_memory.bindings.size()});
  m_at += element.tag.size();
  return true;
}

bool Scanner::leaf(const Element &element) {
  if (!comesPlain(element)) return false;
  const char *const from = m_at + element.tag.size();
  const char *const to = from + kit::plainTextEnd(from, static_cast<size_t>(m_end - from));
  const std::string &end = element.endTag;
  if (static_cast<size_t>(m_end - to) < end.size() || !kit::equalShort(to, end.data(), end.size()))
    return false;
  m_token = to;
  m_at = to + end.size();
  m_text = {from, static_cast<size_t>(to - from)};
  return true;
}

// In front of the root element, and behind it.
Scanner::Token Scanner::outside() {
  if (!m_started) skipHead();
  skipSpace();
  m_token = m_at;
  if (m_started) return m_at == m_end ? Token::End : Token::NotPlain;
  m_started = true;
  return m_at != m_end && *m_at == '<' ? markup() : Token::NotPlain;
}

// A byte order mark, and an XML declaration of the usual forms.
void Scanner::skipHead() {
  static constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (comes(kMark)) m_at += kMark.size();
  for (const std::string_view head :
       {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", "<?xml version=\"1.0\"?>",
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>", "<?xml version='1.0' encoding='UTF-8'?>",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"}) {
    if (!comes(head)) continue;
    m_at += head.size();
    return;
  }
}

Scanner::Token Scanner::markup() {
  if (m_end - m_at < 2) return Token::NotPlain;
  const char c = m_at[1];
  if (is(c, kNameStart)) return openTag();
  if (c == '/' && !m_memory.open.empty()) return closeTag();
  return !m_memory.open.empty() && comes("<![CDATA[") ? section() : Token::NotPlain;
}

// The place behind a character of a text, or null when it is none.
const char *Scanner::skipCharacter(const char *at) const {
  if (is(*at, kPlain)) return at + 1;
  if (static_cast<unsigned char>(*at) < 0x80) return nullptr;
  const kit::Utf8Char wide = kit::utf8Char(at, static_cast<size_t>(m_end - at));
  return wide.length > 0 && isCharacter(wide.code) ? at + wide.length : nullptr;
}

bool Scanner::skipComment() {
  const char *at = m_at + 4;
  while (m_end - at >= 3) {
    if (at[0] == '-' && at[1] == '-') {
      if (at[2] != '>') return false;
      m_at = at + 3;
      return true;
    }
    const bool markup = *at == '<' || *at == '&' || *at == ']';
    at = markup ? at + 1 : skipCharacter(at);
    if (at == nullptr) break;
  }
  return false;
}

Scanner::Token Scanner::section() {
  const char *from = m_at + 9;
  for (const char *at = from; m_end - at >= 3;) {
    if (at[0] == ']' && at[1] == ']' && at[2] == '>') {
      m_at = at + 3;
      return told(from, at);
    }
    const bool markup = *at == '<' || *at == '&' || *at == ']';
    at = markup ? at + 1 : skipCharacter(at);
    if (at == nullptr) break;
  }
  return Token::NotPlain;
}

Scanner::Token Scanner::told(const char *from, const char *to) {
  m_text = {from, static_cast<size_t>(to - from)};
  m_textIs = Reader::Bytes::Staying;
  return Token::Text;
}

Scanner::Token Scanner::told(std::string_view text) {
  m_text = text;
  m_textIs = Reader::Bytes::Passing;
  return Token::Text;
}

// A piece of text, up to markup, a reference or a line end that must be changed.
Scanner::Token Scanner::content() {
  const char *at = m_at;
  while (at != m_end && *at != '<' && *at != '&' && *at != '\r') {
    if (is(*at, kPlain)) {
      ++at;
    } else if (*at == ']') {
      if (m_end - at >= 3 && at[1] == ']' && at[2] == '>') return Token::NotPlain;
      ++at;
    } else {
      at = skipCharacter(at);
      if (at == nullptr) return Token::NotPlain;
    }
  }
  if (at == m_at) return *at == '&' ? reference() : lineEnd();
  const char *from = m_at;
  m_at = at;
  return told(from, at);
}

// CR LF, or CR alone, is read as LF.
Scanner::Token Scanner::lineEnd() {
  ++m_at;
  if (m_at != m_end && *m_at == '\n') ++m_at;
  return told("\n");
}

Scanner::Token Scanner::reference() {
  const std::string_view name = nameInReference(m_at, m_end);
  const size_t length = referenced(name, m_character);
  if (length == 0) return Token::NotPlain;
  m_at += name.size() + 2;
  return told({m_character, length});
}

bool Scanner::written(Written &name) {
  const char *from = m_at;
  if (m_at == m_end || !is(*m_at, kNameStart)) return false;
  while (++m_at != m_end && is(*m_at, kNameRest)) continue;
  name.prefix = {};
  if (m_at != m_end && *m_at == ':') {
    name.prefix = {from, static_cast<size_t>(m_at - from)};
    if (++m_at == m_end || !is(*m_at, kNameStart)) return false;
    const char *local = m_at;
    while (++m_at != m_end && is(*m_at, kNameRest)) continue;
    name.local = {local, static_cast<size_t>(m_at - local)};
  } else {
    name.local = {from, static_cast<size_t>(m_at - from)};
  }
  name.whole = {from, static_cast<size_t>(m_at - from)};
  return true;
}

Scanner::Token Scanner::openTag() {
  ++m_at;
  Written element;
  if (!written(element)) return Token::NotPlain;
  m_memory.open.push_back({element.whole, m_memory.bindings.size()});
  m_declarations = 0;
  m_room.given.clear();
  m_memory.attributes.clear();
  if (m_at != m_end && *m_at != '>' && !attributeList()) return Token::NotPlain;
  if (m_at != m_end && *m_at == '/') {
    m_closes = true;
    ++m_at;
  }
  if (m_at == m_end || *m_at != '>') return Token::NotPlain;
  ++m_at;
  return resolve(element, m_name) && resolve() && distinct() ? Token::Open : Token::NotPlain;
}

bool Scanner::attributeList() {
  while (skipSpace()) {
    if (m_at == m_end) return false;
    if (*m_at == '>' || *m_at == '/') break;
    if (!attribute()) return false;
  }
  return true;
}

bool Scanner::attribute() {
  Written name;
  if (m_room.given.size() + m_declarations >= m_plan.maxAttributes || !written(name)) return false;
  skipSpace();
  if (m_at == m_end || *m_at != '=') return false;
  ++m_at;
  skipSpace();
  std::string_view text;
  if (!value(text)) return false;
  if (name.whole == "xmlns") return declare({}, text);
  if (name.prefix == "xmlns") return declare(name.local, text);
  m_memory.attributes.push_back(name);
  m_room.given.push_back({{}, text});
  return true;
}

bool Scanner::value(std::string_view &value) {
  if (m_at == m_end || (*m_at != '"' && *m_at != '\'')) return false;
  const char quote = *m_at;
  const char *from = ++m_at;
  bool plain = true;
  while (m_at != m_end && *m_at != quote) {
    if (!is(*m_at, kLiteral)) {
      if (*m_at == '&' || *m_at == '\t' || *m_at == '\n') {
        plain = false;
      } else if (*m_at != '"' && *m_at != '\'') {
        const char *behind = skipCharacter(m_at);
        if (behind == nullptr) return false;
        m_at = behind;
        continue;
      }
    }
    ++m_at;
  }
  if (m_at == m_end) return false;
  value = {from, static_cast<size_t>(m_at - from)};
  ++m_at;
  return plain || decode(value, value);
}

// A value with its references read, and line ends and tabs as blanks.
bool Scanner::decode(std::string_view raw, std::string_view &value) {
  auto *out = static_cast<char *>(m_room.region.allocate(raw.size()));
  if (out == nullptr) throw std::bad_alloc();
  size_t length = 0;
  const char *end = raw.data() + raw.size();
  for (const char *at = raw.data(); at != end;) {
    if (*at != '&') {
      out[length++] = *at == '\t' || *at == '\n' ? ' ' : *at;
      ++at;
      continue;
    }
    const std::string_view name = nameInReference(at, end);
    char character[4];
    const size_t bytes = referenced(name, character);
    if (bytes == 0) return false;
    std::memcpy(out + length, character, bytes);
    length += bytes;
    at += name.size() + 2;
  }
  value = {out, length};
  return true;
}

bool Scanner::declare(std::string_view prefix, std::string_view uri) {
  const bool reserved = prefix == "xml" || prefix == "xmlns" || uri == kXmlUri || uri == kXmlnsUri;
  if (reserved || (!prefix.empty() && uri.empty())) return false;
  if (uri.size() > kLongestUri || m_memory.bindings.size() > kMost) return false;
  for (size_t i = m_memory.open.back().bindings; i < m_memory.bindings.size(); ++i) {
    if (m_memory.bindings[i].prefix == prefix) return false;  // twice in one tag
  }
  for (const Binding &binding : m_memory.bindings) {
    if (binding.uri == uri) uri = binding.uri;
  }
  m_memory.bindings.push_back({prefix, uri, m_plan.spaceOf(uri)});
  ++m_declarations;
  return true;
}

bool Scanner::resolve(const Written &written, Name &name) const {
  if (written.prefix == "xml") {
    name = {kXmlUri, written.local, m_plan.spaceOf(kXmlUri)};
    return true;
  }
  for (size_t i = m_memory.bindings.size(); i-- > 0;) {
    const Binding &binding = m_memory.bindings[i];
    if (binding.prefix != written.prefix) continue;
    name = {binding.uri, written.local, binding.space};
    return true;
  }
  return false;
}

// The names of the attributes. One without prefix is in no namespace.
bool Scanner::resolve() {
  for (size_t i = 0; i < m_memory.attributes.size(); ++i) {
    const Written &written = m_memory.attributes[i];
    Name &name = m_room.given[i].name;
    if (written.prefix.empty()) {
      name = {{}, written.local, 0};
    } else if (!resolve(written, name)) {
      return false;
    }
  }
  return true;
}

// Each attribute comes once. The bindings that are open share one text of a namespace, so where it lies is enough.
bool Scanner::distinct() const {
  const std::vector<Given> &all = m_room.given;
  if (all.size() > kMost) return false;
  for (size_t i = 1; i < all.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (all[i].name.uri.data() == all[j].name.uri.data() && all[i].name.local == all[j].name.local)
        return false;
    }
  }
  return true;
}

Scanner::Token Scanner::closeTag() {
  const std::string_view name = m_memory.open.back().name;
  m_at += 2;
  if (!comes(name)) return Token::NotPlain;
  m_at += name.size();
  skipSpace();
  if (m_at == m_end || *m_at != '>') return Token::NotPlain;
  ++m_at;
  return leave();
}

Scanner::Token Scanner::leave() {
  m_memory.bindings.resize(m_memory.open.back().bindings);
  m_memory.open.pop_back();
  return Token::Close;
}

}  // namespace cvt::xml
