// sqlite_session.cpp: the embedded back end, over SQLite.
#include <sqlite3.h>

#include <chrono>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "decimal.h"
#include "session.h"
#include "statement_text.h"

namespace dbs {
namespace {

struct Finalize {
  void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

// The connection, and the time by which the statement that runs must be done.
class Database {
 public:
  Database(const std::string &file, const Limits &limits);

  // The time of a statement begins.
  void startClock();
  // Exactly one statement, without parameters. Starts the clock.
  Statement compile(const char *sql);
  // True: a row is there.
  bool step(sqlite3_stmt *statement);

 private:
  using Clock = std::chrono::steady_clock;
  struct Close {
    void operator()(sqlite3 *db) const { sqlite3_close_v2(db); }
  };

  void open(const std::string &file);
  void harden();
  void expectEnd(const char *sql, const char *rest);
  [[noreturn]] void fail(int code);
  static int isLate(void *self);

  Limits m_limits;
  std::unique_ptr<sqlite3, Close> m_db;
  Clock::time_point m_deadline = Clock::time_point::max();
};

Database::Database(const std::string &file, const Limits &limits) : m_limits(limits) {
  open(file);
  harden();
  sqlite3_busy_timeout(m_db.get(), limits.busyMs);
  constexpr int kInstructions = 1000;  // between two looks at the clock
  if (limits.timeoutMs > 0) sqlite3_progress_handler(m_db.get(), kInstructions, isLate, this);
  // Only a first reading shows whether the file is a database at all.
  step(compile("PRAGMA schema_version").get());
}

void Database::open(const std::string &file) {
  sqlite3 *db = nullptr;
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI | SQLITE_OPEN_EXRESCODE;
  const int code = sqlite3_open_v2(file.c_str(), &db, kFlags, nullptr);
  m_db.reset(db);  // an object is there also after a failure
  if (code != SQLITE_OK) fail(code);
}

// A statement may hold data of a message, a file may come from elsewhere: neither gets at more than tables.
void Database::harden() {
  struct Setting {
    int option;
    int value;
  };
  constexpr Setting kSettings[] = {
      {SQLITE_DBCONFIG_DEFENSIVE, 1},              // no damage to the file by SQL
      {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},         // no side effects from a schema
      {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},  // no foreign code: SQLite's default, but not every build's
      {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0},  // no addresses of functions
      {SQLITE_DBCONFIG_DQS_DML, 0},                // "x" is a name, never a text, as on every server
      {SQLITE_DBCONFIG_DQS_DDL, 0},
      {SQLITE_DBCONFIG_ENABLE_FKEY, 1},  // foreign keys hold, as on every server
  };
  for (const Setting &setting : kSettings) {
    const int code = sqlite3_db_config(m_db.get(), setting.option, setting.value, nullptr);
    if (code != SQLITE_OK) fail(code);
  }
  sqlite3_limit(m_db.get(), SQLITE_LIMIT_ATTACHED, 0);  // no other files
}

int Database::isLate(void *self) {
  return Clock::now() > static_cast<Database *>(self)->m_deadline ? 1 : 0;
}

void Database::startClock() {
  if (m_limits.timeoutMs > 0) m_deadline = Clock::now() + std::chrono::milliseconds(m_limits.timeoutMs);
}

Statement Database::compile(const char *sql) {
  startClock();  // reading the schema counts
  sqlite3_stmt *raw = nullptr;
  const char *rest = nullptr;
  const int code = sqlite3_prepare_v2(m_db.get(), sql, -1, &raw, &rest);
  Statement statement(raw);
  if (code != SQLITE_OK) fail(code);
  if (statement == nullptr) failEmpty();
  expectEnd(sql, rest);
  if (sqlite3_bind_parameter_count(statement.get()) > 0) {
    const char *const name = sqlite3_bind_parameter_name(statement.get(), 1);
    throw Error("the statement has a parameter marker, " + std::string(name == nullptr ? "?" : name) +
                "; write the value itself");
  }
  return statement;
}

// Behind a statement there is room for blanks, comments and ";".
void Database::expectEnd(const char *sql, const char *rest) {
  while (*rest != '\0') {
    const char *const behind = rest;
    sqlite3_stmt *raw = nullptr;
    const int code = sqlite3_prepare_v2(m_db.get(), behind, -1, &raw, &rest);
    const Statement another(raw);
    if (code != SQLITE_OK || another != nullptr) failSeveral(static_cast<size_t>(behind - sql));
  }
}

bool Database::step(sqlite3_stmt *statement) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) fail(code);
  return code == SQLITE_ROW;
}

void Database::fail(int code) {
  std::string text = m_db == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(m_db.get());
  const int at = m_db == nullptr ? -1 : sqlite3_error_offset(m_db.get());
  if (at >= 0) text += ", at byte " + std::to_string(at) + " of the statement";
  constexpr int kPrimary = 0xff;
  if ((code & kPrimary) == SQLITE_INTERRUPT) {
    text = "the statement was stopped after " + std::to_string(m_limits.timeoutMs) +
           " ms; VEL_DBS_TIMEOUT_MS sets how long a statement may run";
  } else if ((code & kPrimary) == SQLITE_BUSY) {
    text += "; VEL_DBS_BUSY_MS sets how long to wait for another process's lock, now " +
            std::to_string(m_limits.busyMs) + " ms";
  }
  throw Error(text, code);
}

class SqliteCursor : public Cursor {
 public:
  SqliteCursor(Database &db, Statement statement) : m_db(db), m_statement(std::move(statement)) {}

  void open() override;
  bool fetch() override;
  int columnCount() const override { return sqlite3_column_count(m_statement.get()); }
  std::string_view column(int position) override;
  void close() noexcept override { sqlite3_reset(m_statement.get()); }

 private:
  Database &m_db;
  Statement m_statement;
  bool m_row = false;    // the statement stands on a row
  bool m_ahead = false;  // which fetch() has not delivered yet
  std::vector<std::optional<size_t>> m_scales;
  std::string m_text;
};

// The first row is read here: a query that cannot run fails when it is opened, as on a server.
void SqliteCursor::open() {
  m_db.startClock();
  m_row = m_ahead = m_db.step(m_statement.get());
  m_scales.clear();
  for (int i = 0; i < columnCount(); ++i) {
    m_scales.push_back(declaredScale(sqlite3_column_decltype(m_statement.get(), i)));
  }
}

bool SqliteCursor::fetch() {
  if (std::exchange(m_ahead, false)) return true;
  if (!m_row) return false;  // another step would run the query anew
  m_db.startClock();
  m_row = m_db.step(m_statement.get());
  return m_row;
}

std::string_view SqliteCursor::column(int position) {
  sqlite3_stmt *const statement = m_statement.get();
  const int type = sqlite3_column_type(statement, position);
  const void *const bytes = type == SQLITE_BLOB ? sqlite3_column_blob(statement, position)
                                                : sqlite3_column_text(statement, position);
  const auto length = static_cast<size_t>(sqlite3_column_bytes(statement, position));
  if (bytes == nullptr) {
    if (type != SQLITE_NULL && type != SQLITE_BLOB) throw std::bad_alloc();
    return "";
  }
  const std::string_view text(static_cast<const char *>(bytes), length);
  const std::optional<size_t> scale = m_scales[static_cast<size_t>(position)];
  if (!scale || (type != SQLITE_INTEGER && type != SQLITE_FLOAT)) return text;
  const std::optional<std::string> scaled = withScale(text, *scale);
  if (!scaled) return text;
  m_text = *scaled;
  return m_text;
}

class SqliteSession : public Session {
 public:
  SqliteSession(const std::string &file, const Limits &limits)
      : m_name("sqlite:" + file), m_db(file, limits) {}

  std::unique_ptr<Cursor> prepare(const char *sql) override {
    return std::make_unique<SqliteCursor>(m_db, m_db.compile(sql));
  }
  void execute(const char *sql) override {
    const Statement statement = m_db.compile(sql);
    while (m_db.step(statement.get())) continue;
  }
  std::string name() const override { return m_name; }

 private:
  std::string m_name;
  Database m_db;
};

}  // namespace

std::unique_ptr<Session> openSqlite(const std::string &place, const Limits &limits) {
  if (place.empty()) throw Error("expected sqlite:FILE or sqlite::memory:, found sqlite: alone");
  try {
    return std::make_unique<SqliteSession>(place, limits);
  } catch (const Error &e) {
    throw Error("cannot open sqlite:" + place + ": " + e.what(), e.code());
  }
}

}  // namespace dbs
