// sql_literals.cpp: the functions sqlQuote and sqlNumber. Whatever goes in, one literal comes out, and SQLite
// reads the text that went in; or it is refused.
#include <sqlite3.h>

#include <algorithm>
#include <optional>

#include "std/topics.h"
#include "support/library.h"
#include "support/target.h"

namespace {

std::optional<std::string> call(size_t function, const std::string &bytes) {
  MemNode *const memory = cvtMemNewNode();
  Value argument{};
  argument.psValue = const_cast<char *>(bytes.data());
  argument.nLen = static_cast<int>(bytes.size());
  Value *arguments[] = {&argument};
  Value result{};
  std::optional<std::string> text;
  if (cvt::functions::kSql.entries[function](&result, 1, arguments, memory) == 0) {
    text = std::string(result.psValue, static_cast<size_t>(result.nLen));
  }
  cvtMemDelNode(memory);
  return text;
}

// The one column of "SELECT 1 -LITERAL", or of "SELECT LITERAL", as text.
std::string select(const std::string &sql) {
  static sqlite3 *const database = [] {
    sqlite3 *opened = nullptr;
    sqlite3_open(":memory:", &opened);
    return opened;
  }();
  sqlite3_stmt *statement = nullptr;
  const char *tail = nullptr;
  sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, &tail);
  fuzz::require(statement != nullptr && *tail == '\0', "one statement is read from " + sql);
  fuzz::require(sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_count(statement) == 1,
                "there is one value in " + sql);
  const auto *const bytes = static_cast<const char *>(sqlite3_column_blob(statement, 0));
  std::string value(bytes == nullptr ? "" : bytes, static_cast<size_t>(sqlite3_column_bytes(statement, 0)));
  sqlite3_finalize(statement);
  return value;
}

void quote(const std::string &bytes) {
  const auto literal = call(0, bytes);
  fuzz::require(literal.has_value() == (bytes.find('\0') == bytes.npos), "only a zero byte is refused");
  if (literal) fuzz::require(select("SELECT " + *literal) == bytes, "the literal is the text " + bytes);
}

// Blanks and a sign in front, digits, perhaps decimals and an exponent, blanks behind.
bool isNumber(std::string_view text) {
  const auto skip = [&text](std::string_view set, size_t least, size_t most) {
    const size_t length = std::min({text.find_first_not_of(set), text.size(), most});
    text.remove_prefix(length);
    return length >= least;
  };
  constexpr std::string_view kDigits = "0123456789";
  skip(" ", 0, text.npos);
  skip("+-", 0, 1);
  if (!skip(kDigits, 1, text.npos)) return false;
  if (text.starts_with('.') && (!skip(".", 1, 1) || !skip(kDigits, 1, text.npos))) return false;
  if (text.starts_with('e') || text.starts_with('E')) {
    skip("eE", 1, 1);
    skip("+-", 0, 1);
    if (!skip(kDigits, 1, text.npos)) return false;
  }
  skip(" ", 0, text.npos);
  return text.empty();
}

void number(const std::string &bytes) {
  const auto literal = call(1, bytes);
  fuzz::require(literal.has_value() == isNumber(bytes), "numbers are taken, nothing else is: " + bytes);
  if (!literal) return;
  fuzz::require(isNumber(*literal), "the literal is a number: " + *literal);
  select("SELECT 1 -" + *literal);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string bytes(fuzz::text(data, size));
  quote(bytes);
  number(bytes);
  return 0;
}
