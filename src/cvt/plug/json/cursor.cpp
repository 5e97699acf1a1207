#include "cursor.h"

#include <algorithm>

#include "kit/fault.h"

namespace cvt::json {

namespace {

constexpr const char *kSyntax = "See what JSON allows there";

bool isLiteral(std::string_view token) {
  return token == "true" || token == "false" || token == "null";
}

}  // namespace

std::string describe(std::string_view token) {
  if (token.empty()) return "the end";
  const char first = token.front();
  if (first == '{') return "an object";
  if (first == '[') return "an array";
  if (isOperator(first)) return std::string(1, first);
  if (isLiteral(token)) return std::string(token);
  if (isNumber(token)) return "number " + kit::quoted(token.data(), token.size());
  if (first == '"' && token.size() > 1 && token.back() == '"') {
    return "text " + kit::quoted(token.data() + 1, token.size() - 2);
  }
  return kit::quoted(token.data(), std::min<size_t>(token.size(), 24));
}

// Whether the end of an object or array stands where a comma promised more.
bool Cursor::commaBefore() const {
  return (peek() == ']' || peek() == '}') && m_at > m_begin && m_text[m_at[-1]] == ',';
}

void Cursor::refuse(const std::string &expected, const std::string &advice) const {
  if (!atEnd()) {
    throw kit::Fault(offset(), expected, describe(token()),
                     commaBefore() ? "Remove the comma before it" : advice);
  }
  if (m_damage.expected == nullptr) {
    throw kit::Fault(offset(), expected, "the end of the text", "The message is cut off");
  }
  const bool cut = m_damage.at == m_size;
  throw kit::Fault(m_base + m_damage.at, m_damage.expected,
                   cut ? "the end" : kit::quoted(m_text + m_damage.at, 1), m_damage.advice);
}

void Cursor::refuseOpen(char bracket, const char *advice) const {
  if (peek() != bracket) refuse(bracket == '{' ? "an object" : "an array", advice);
  throw kit::Fault(offset(), "at most " + std::to_string(m_maxDepth) + " open objects and arrays", "one more",
                   "Raise nMaxDepth of JsonMsg");
}

void Cursor::refuseClose(char bracket) const {
  refuse(bracket == '}' ? ", or } behind the member" : ", or ] behind the value", kSyntax);
}

std::string_view Cursor::string(const char *expected, const char *advice) {
  const std::string_view token = this->token();
  if (token.size() < 2 || token.front() != '"' || token.back() != '"') refuse(expected, advice);
  ++m_at;
  return token.substr(1, token.size() - 2);
}

std::string_view Cursor::name() {
  const std::string_view name = string("the name of a member", "Write it in double quotes");
  if (!take(':')) refuse(": behind the name of the member", kSyntax);
  return name;
}

void Cursor::checkString(std::string_view string) const {
  if (!hasEscape(string)) return;
  const Unescaped done = checkEscapes(string);
  if (done.expected != nullptr) badEscape(string, done);
}

size_t Cursor::decode(std::string_view string, char *out) const {
  const Unescaped done = unescape(string, out);
  if (done.expected != nullptr) badEscape(string, done);
  return done.length;
}

void Cursor::badEscape(std::string_view string, const Unescaped &bad) const {
  const std::string_view rest = string.substr(bad.at);
  throw kit::Fault(m_base + static_cast<size_t>(rest.data() - m_text), bad.expected,
                   kit::quoted(rest.data(), std::min<size_t>(rest.size(), 12)), bad.advice);
}

std::string_view Cursor::value() {
  const char *from = m_text + *m_at;
  switch (peek()) {
    case '{':
      members();
      break;
    case '[':
      elements();
      break;
    case '"':
      checkString(string("a value"));
      break;
    default:
      if (!isLiteral(token()) && !isNumber(token())) {
        refuse("a value",
               "Write an object, an array, a text in double quotes, a number, true, false or null");
      }
      ++m_at;
  }
  size_t end = *m_at;
  while (isBlank(m_text[end - 1])) --end;
  return {from, static_cast<size_t>(m_text + end - from)};
}

void Cursor::open(char bracket) {
  if (!takeOpen(bracket)) refuseOpen(bracket, "");
}

void Cursor::members() {
  open('{');
  if (peek() != '}') {
    do {
      checkString(name());
      value();
    } while (take(','));
  }
  close('}');
}

void Cursor::elements() {
  open('[');
  if (peek() != ']') {
    do value();
    while (take(','));
  }
  close(']');
}

std::string_view Cursor::member(std::string_view name) {
  checkString(name);
  const std::string_view text = value();
  const char *from = name.data() - 1;
  return {from, static_cast<size_t>(text.data() + text.size() - from)};
}

void Cursor::end(const char *advice) {
  if (!atEnd() || m_damage.expected != nullptr) refuse("the end of the text", advice);
}

}  // namespace cvt::json
