// sql_statement.cpp: the check that a text is one SQL statement. What passes as standard SQL holds no second
// statement for SQLite either.
#include <sqlite3.h>

#include "session.h"
#include "statement_text.h"
#include "support/target.h"

namespace {

bool isOne(const std::string &sql) {
  try {
    dbs::expectOneStatement(sql);
    return true;
  } catch (const dbs::Error &error) {
    fuzz::require(*error.what() != '\0', "the refusal says why");
    return false;
  }
}

// What SQLite finds behind the first statement: it must be nothing that it could run.
void expectNothingBehind(const std::string &sql) {
  static sqlite3 *const database = [] {
    sqlite3 *opened = nullptr;
    sqlite3_open(":memory:", &opened);
    return opened;
  }();
  sqlite3_stmt *statement = nullptr;
  const char *tail = nullptr;
  const int code = sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, &tail);
  const bool prepared = code == SQLITE_OK && statement != nullptr;
  sqlite3_finalize(statement);
  if (!prepared) return;
  sqlite3_stmt *second = nullptr;
  sqlite3_prepare_v2(database, tail, -1, &second, nullptr);
  const bool more = second != nullptr;
  sqlite3_finalize(second);
  fuzz::require(!more, "one statement is one for SQLite: " + sql);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string sql(fuzz::text(data, size));
  if (!isOne(sql)) return 0;
  // What only PostgreSQL reads as a text may well hold a statement for SQLite, which is asked itself.
  if (!fuzz::holdsAny(sql, {"$", "E'", "e'", std::string_view("\0", 1)})) expectNothingBehind(sql);
  return 0;
}
