#include "statement_text.h"

#include <algorithm>

#include "session.h"

namespace dbs {
namespace {

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool startsWord(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool continuesWord(char c) {
  return startsWord(c) || (c >= '0' && c <= '9') || c == '$';
}

class Scanner {
 public:
  explicit Scanner(std::string_view sql) : m_sql(sql) {}

  void run() {
    bool found = false;
    bool ended = false;
    while (m_at < m_sql.size()) {
      if (skipBlank()) continue;
      if (here() == ';') {
        if (!found) failEmpty();
        ended = true;
        ++m_at;
        continue;
      }
      if (ended) failSeveral(m_at);
      found = true;
      skipToken();
    }
    if (!found) failEmpty();
  }

 private:
  char here() const { return m_sql[m_at]; }
  bool hereIs(std::string_view text) const { return m_sql.substr(m_at).starts_with(text); }

  // White space and comments.
  bool skipBlank() {
    if (isSpace(here())) {
      ++m_at;
    } else if (hereIs("--")) {
      m_at = std::min(m_sql.find_first_of("\r\n", m_at), m_sql.size());
    } else if (hereIs("/*")) {
      skipComment();
    } else {
      return false;
    }
    return true;
  }

  void skipComment() {
    const size_t start = m_at;
    const size_t end = m_sql.find("*/", start + 2);
    if (end == std::string_view::npos) failOpen("comment", start, "*/");
    if (m_sql.substr(0, end).find("/*", start + 2) != std::string_view::npos) {
      throw Error("the comment at byte " + std::to_string(start) +
                  " holds another \"/*\", which databases read in different ways; write it without");
    }
    m_at = end + 2;
  }

  void skipToken() {
    if (here() == '\'') {
      skipQuoted("text", false);
    } else if (here() == '"') {
      skipQuoted("quoted name", false);
    } else if (startsWord(here())) {
      skipWord();
    } else if (here() != '$' || !skipDollarText()) {
      ++m_at;
    }
  }

  void skipWord() {
    const size_t start = m_at;
    while (m_at < m_sql.size() && continuesWord(here())) ++m_at;
    const std::string_view word = m_sql.substr(start, m_at - start);
    if ((word == "E" || word == "e") && hereIs("'")) skipQuoted("text", true);
  }

  // A doubled quote stands for one.
  void skipQuoted(const char *what, bool backslashEscapes) {
    const size_t start = m_at;
    const char quote = here();
    for (++m_at; m_at < m_sql.size(); ++m_at) {
      if (backslashEscapes && here() == '\\') {
        ++m_at;
      } else if (here() == quote) {
        ++m_at;
        if (m_at == m_sql.size() || here() != quote) return;
      }
    }
    failOpen(what, start, std::string(1, quote));
  }

  // $$...$$, $tag$...$tag$; false when the dollar begins none.
  bool skipDollarText() {
    size_t end = m_at + 1;
    if (end < m_sql.size() && startsWord(m_sql[end])) {
      while (end < m_sql.size() && continuesWord(m_sql[end]) && m_sql[end] != '$') ++end;
    }
    if (end >= m_sql.size() || m_sql[end] != '$') return false;
    const std::string_view delimiter = m_sql.substr(m_at, end + 1 - m_at);
    const size_t close = m_sql.find(delimiter, end + 1);
    if (close == std::string_view::npos) failOpen("text", m_at, delimiter);
    m_at = close + delimiter.size();
    return true;
  }

  [[noreturn]] static void failOpen(const char *what, size_t start, std::string_view closing) {
    throw Error("the " + std::string(what) + " that begins at byte " + std::to_string(start) +
                " of the statement is not closed; expected " + std::string(closing) + " before its end");
  }

  std::string_view m_sql;
  size_t m_at = 0;
};

}  // namespace

void failEmpty() {
  throw Error("the statement is empty; expected one SQL statement");
}

void failSeveral(size_t byte) {
  throw Error("expected one statement, found more text behind its end, at byte " + std::to_string(byte) +
              "; run statements one by one, and quote data that is joined into them");
}

void expectOneStatement(std::string_view sql) {
  Scanner(sql).run();
}

}  // namespace dbs
