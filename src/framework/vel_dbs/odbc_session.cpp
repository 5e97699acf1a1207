// odbc_session.cpp: the back end for server databases, over ODBC.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "odbc_handle.h"
#include "session.h"
#include "statement_text.h"

namespace dbs {
namespace {

SQLCHAR *odbcText(const char *text) {
  return reinterpret_cast<SQLCHAR *>(const_cast<char *>(text));
}
// ODBC passes numbers in the place of pointers.
SQLPOINTER odbcNumber(intptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);
}

// Whether a connection string's key says where the database is; any other may be a secret.
bool isPlace(std::string key) {
  std::transform(key.begin(), key.end(), key.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? c | 0x20 : c; });
  for (const char *known : {"dsn", "filedsn", "driver", "server", "servername", "port", "database", "uid"}) {
    if (key == known) return true;
  }
  return false;
}

// What of a connection string may be shown: "DSN=shop" of "DSN=shop;PWD=secret".
std::string placeOf(const std::string &connectionString) {
  std::string shown;
  for (size_t at = 0; at < connectionString.size();) {
    const size_t equals = connectionString.find('=', at);
    if (equals == std::string::npos) break;
    const bool braces = connectionString.compare(equals, 2, "={") == 0;
    const size_t value = braces ? connectionString.find('}', equals) : equals;
    const size_t end = std::min(connectionString.find(';', value), connectionString.size());
    if (isPlace(connectionString.substr(at, equals - at))) {
      if (!shown.empty()) shown += ';';
      shown.append(connectionString, at, end - at);
    }
    at = end + 1;
  }
  return shown;
}

// A connected connection.
class Link {
 public:
  Link(const std::string &place, const Limits &limits);
  ~Link() { SQLDisconnect(m_connection.get()); }
  Link(const Link &) = delete;
  Link &operator=(const Link &) = delete;

  OdbcStatement statement() const;
  // Throws when a call for a statement has failed.
  void check(SQLRETURN result, const OdbcStatement &statement) const;

 private:
  bool isDead() const;
  bool isLost(const std::string &state) const;

  OdbcEnvironment m_environment;
  OdbcConnection m_connection;
  int m_timeoutMs;
};

OdbcEnvironment makeEnvironment() {
  OdbcEnvironment environment(nullptr);
  SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, odbcNumber(SQL_OV_ODBC3), 0);
  return environment;
}

// ODBC counts in seconds.
intptr_t seconds(int ms) {
  return (intptr_t{ms} + 999) / 1000;
}

Link::Link(const std::string &place, const Limits &limits)
    : m_environment(makeEnvironment()), m_connection(m_environment.get()), m_timeoutMs(limits.timeoutMs) {
  SQLSetConnectAttr(m_connection.get(), SQL_ATTR_LOGIN_TIMEOUT, odbcNumber(seconds(m_timeoutMs)), 0);
  const SQLRETURN result = SQLDriverConnect(m_connection.get(), nullptr, odbcText(place.c_str()), SQL_NTS,
                                            nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
  if (SQL_SUCCEEDED(result)) return;
  const OdbcDiagnostic why = odbcDiagnostic(SQL_HANDLE_DBC, m_connection.get());
  throw Error(why.text, why.code);
}

OdbcStatement Link::statement() const {
  OdbcStatement statement(m_connection.get());
  // Texts go to the server as they are: {...} in them is data. A driver may know neither attribute.
  SQLSetStmtAttr(statement.get(), SQL_ATTR_NOSCAN, odbcNumber(SQL_NOSCAN_ON), 0);
  SQLSetStmtAttr(statement.get(), SQL_ATTR_QUERY_TIMEOUT, odbcNumber(seconds(m_timeoutMs)), 0);
  return statement;
}

bool Link::isDead() const {
  SQLINTEGER dead = SQL_CD_FALSE;
  return SQL_SUCCEEDED(SQLGetConnectAttr(m_connection.get(), SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr)) &&
         dead == SQL_CD_TRUE;
}

// Connection exceptions, PostgreSQL's last words, and the general error of a driver that has not noticed yet.
bool mayTellLoss(const std::string &state) {
  return state.starts_with("08") || state.starts_with("57P") || state == "HY000";
}

// Whether the connection went with a call that failed. One that can still look for a table is there.
bool Link::isLost(const std::string &state) const {
  if (isDead()) return true;
  if (!mayTellLoss(state)) return false;
  const OdbcStatement probe = statement();
  return !SQL_SUCCEEDED(SQLTables(probe.get(), nullptr, 0, nullptr, 0, odbcText("?"), SQL_NTS, nullptr, 0));
}

void Link::check(SQLRETURN result, const OdbcStatement &statement) const {
  if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) return;
  const OdbcDiagnostic why = odbcDiagnostic(SQL_HANDLE_STMT, statement.get());
  if (isLost(why.state)) {
    throw ConnectionLost(
        why.text +
            "; the connection is lost, whether the statement took effect is unknown, it is not repeated",
        why.code);
  }
  if (why.state == "57014" || why.state == "HYT00") {
    throw Error(why.text + "; VEL_DBS_TIMEOUT_MS sets how long a statement may run, now " +
                    std::to_string(m_timeoutMs) + " ms",
                why.code);
  }
  throw Error(why.text, why.code);
}

// Server and driver may describe a column of bytes by any of these.
bool isBinary(SQLLEN type) {
  return type == SQL_BINARY || type == SQL_VARBINARY || type == SQL_LONGVARBINARY;
}

class OdbcCursor : public Cursor {
 public:
  OdbcCursor(const Link &link, const char *sql) : m_link(link), m_statement(link.statement()) {
    m_link.check(SQLPrepare(m_statement.get(), odbcText(sql), SQL_NTS), m_statement);
  }

  void open() override;
  bool fetch() override;
  int columnCount() const override { return static_cast<int>(m_columns.size()); }
  std::string_view column(int position) override { return m_columns[static_cast<size_t>(position)].value; }
  void close() noexcept override;

 private:
  struct Column {
    bool binary;
    std::string value;
  };

  void describe();
  void read(SQLUSMALLINT number, Column &column);

  const Link &m_link;
  OdbcStatement m_statement;
  std::vector<Column> m_columns;
};

void OdbcCursor::open() {
  m_link.check(SQLExecute(m_statement.get()), m_statement);
  describe();
}

void OdbcCursor::describe() {
  SQLSMALLINT count = 0;
  m_link.check(SQLNumResultCols(m_statement.get(), &count), m_statement);
  m_columns.clear();
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    SQLLEN type = SQL_UNKNOWN_TYPE;
    m_link.check(SQLColAttribute(m_statement.get(), static_cast<SQLUSMALLINT>(number), SQL_DESC_CONCISE_TYPE,
                                 nullptr, 0, nullptr, &type),
                 m_statement);
    m_columns.push_back({isBinary(type), {}});
  }
}

// The whole row is read at once: drivers deliver columns in their order only, and each but once.
bool OdbcCursor::fetch() {
  if (m_columns.empty()) return false;  // the statement was no query
  const SQLRETURN result = SQLFetch(m_statement.get());
  m_link.check(result, m_statement);
  if (result == SQL_NO_DATA) return false;
  SQLUSMALLINT number = 0;
  for (Column &column : m_columns) read(++number, column);
  return true;
}

// A value comes in pieces of the room that there is. In text the room's last byte is a terminator, or it
// stands before that where a character would have been split; what the driver did not write stays kUnwritten.
void OdbcCursor::read(SQLUSMALLINT number, Column &column) {
  constexpr char kUnwritten = '\xff';
  const size_t terminator = column.binary ? 0 : 1;
  std::string &value = column.value;
  size_t size = 0;
  for (size_t room = 1024;;) {
    value.resize(size);
    value.resize(size + room, kUnwritten);
    SQLLEN left = 0;
    const SQLRETURN result = SQLGetData(m_statement.get(), number, column.binary ? SQL_C_BINARY : SQL_C_CHAR,
                                        value.data() + size, static_cast<SQLLEN>(room), &left);
    m_link.check(result, m_statement);
    if (result == SQL_NO_DATA || left == SQL_NULL_DATA) break;
    const bool known = left >= 0;
    const auto rest = static_cast<size_t>(known ? left : 0);
    if (known && rest + terminator <= room) {
      size += rest;
      break;
    }
    const size_t end = column.binary ? value.size() : value.rfind('\0');
    if (end == std::string::npos || end < size)
      throw Error("the driver cut a text without a zero byte behind it");
    room = known ? rest - (end - size) + terminator : room * 2;
    size = end;
  }
  value.resize(size);
}

void OdbcCursor::close() noexcept {
  SQLFreeStmt(m_statement.get(), SQL_CLOSE);
  m_columns.clear();
}

class OdbcSession : public Session {
 public:
  OdbcSession(const std::string &place, const Limits &limits)
      : m_name("odbc:" + placeOf(place)), m_link(place, limits) {}

  std::unique_ptr<Cursor> prepare(const char *sql) override {
    expectOneStatement(sql);
    return std::make_unique<OdbcCursor>(m_link, sql);
  }
  void execute(const char *sql) override;
  std::string name() const override { return m_name; }

 private:
  std::string m_name;
  Link m_link;
};

void OdbcSession::execute(const char *sql) {
  expectOneStatement(sql);
  const OdbcStatement statement = m_link.statement();
  SQLRETURN result = SQLExecDirect(statement.get(), odbcText(sql), SQL_NTS);
  m_link.check(result, statement);
  // A procedure may deliver several results, and an error behind any of them.
  do {
    result = SQLMoreResults(statement.get());
    m_link.check(result, statement);
  } while (result != SQL_NO_DATA);
}

}  // namespace

std::unique_ptr<Session> openOdbc(const std::string &place, const Limits &limits) {
  try {
    return std::make_unique<OdbcSession>(place, limits);
  } catch (const Error &e) {
    throw Error("cannot connect to odbc:" + placeOf(place) + ": " + e.what(), e.code());
  }
}

}  // namespace dbs
