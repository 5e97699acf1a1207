#include "connection.h"

#include <cstdlib>
#include <utility>

#include "environment.h"
#include "velutil.h"

// Level 1: a connection was lost; 5: one was made.
#define DBS_LOG(nLevel, ...) \
  logInfo(nLevel, "$vel_dbs", __FILE_NAME__, __LINE__, static_cast<const char *>(__func__), __VA_ARGS__)

namespace dbs {
namespace {

constexpr std::string_view kSqlite = "sqlite:";
constexpr std::string_view kOdbc = "odbc:";

std::unique_ptr<Session> sessionFor(const std::string &url, const Limits &limits) {
  if (url.starts_with(kSqlite)) return openSqlite(url.substr(kSqlite.size()), limits);
  if (url.starts_with(kOdbc)) return openOdbc(url.substr(kOdbc.size()), limits);
  // What stands behind may hold a password.
  throw Error(
      "the database's URL: expected sqlite:FILE, sqlite::memory:, odbc:DSN=... or odbc:DRIVER=..., found [" +
      url.substr(0, url.find_first_of(":=;/")) + "...]");
}

}  // namespace

void Connection::connect(const std::string &url) {
  disconnect();
  m_url = url;
  openSession();
}

void Connection::disconnect() {
  release();
  m_url.clear();
}

void Connection::openSession() {
  const Limits limits = limitsFromEnvironment();
  m_session = sessionFor(m_url, limits);
  m_queries.setSize(static_cast<size_t>(limits.statements));
  DBS_LOG(5, "connected to %s", m_session->name().c_str());
}

Session &Connection::session() {
  if (m_session == nullptr) {
    if (m_url.empty()) m_url = urlFromEnvironment();
    openSession();
  }
  return *m_session;
}

void Connection::release() {
  m_query = nullptr;
  m_state = State::closed;
  m_queries.clear();
  m_session.reset();
}

template <class Call>
void Connection::ask(Call call) {
  try {
    call();
  } catch (const ConnectionLost &e) {
    DBS_LOG(1, "connection to %s lost, the next statement makes it again: %s", m_session->name().c_str(),
            e.what());
    release();
    throw;
  }
}

template <class Call>
void Connection::askQuery(Call call) {
  try {
    ask(call);
  } catch (...) {
    close();
    m_queries.remove(std::exchange(m_query, nullptr));
    throw;
  }
}

void Connection::execute(const char *sql) {
  Session &at = session();
  ask([&] { at.execute(sql); });
}

void Connection::prepare(const char *sql) {
  close();
  m_query = nullptr;
  Session &at = session();
  m_query = m_queries.find(sql);
  if (m_query == nullptr) ask([&] { m_query = m_queries.add(sql, at.prepare(sql)); });
}

void Connection::open() {
  if (m_query == nullptr) throw Error("no query is prepared; dbsPrepare comes first");
  if (m_state != State::closed) throw Error("the cursor is open; dbsClose comes first");
  askQuery([&] { m_query->open(); });
  m_state = State::open;
}

void Connection::expectOpen() const {
  if (m_state == State::closed) throw Error("no cursor is open; dbsPrepare and dbsOpen come first");
}

void Connection::expectColumns() const {
  if (columnCount() == 0) throw Error("the statement returns no columns; expected a query");
}

bool Connection::fetch() {
  expectOpen();
  if (m_state == State::atEnd) return false;
  bool row = false;
  askQuery([&] { row = m_query->fetch(); });
  m_state = row ? State::onRow : State::atEnd;
  return row;
}

int Connection::columnCount() const {
  expectOpen();
  return m_query->columnCount();
}

std::string_view Connection::column(int position) {
  if (m_state != State::onRow) throw Error("no row is there; dbsFetch comes first and must return 0");
  const int count = columnCount();
  if (position < 0 || position >= count) {
    throw Error("column " + std::to_string(position) + ": expected a position from 0 to " +
                std::to_string(count - 1));
  }
  return m_query->column(position);
}

void Connection::close() noexcept {
  if (m_query != nullptr) m_query->close();
  m_state = State::closed;
}

}  // namespace dbs
