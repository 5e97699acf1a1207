// session.h: what a back end provides: a connection and its prepared queries.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace dbs {

// A call failed. The code is the database's own, -1 when the database was not asked.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string &text, int code = -1) : std::runtime_error(text), m_code(code) {}
  int code() const { return m_code; }

 private:
  int m_code;
};

// The same, and the connection is gone with it.
class ConnectionLost : public Error {
 public:
  using Error::Error;
};

// A prepared query. It must not outlive its session.
class Cursor {
 public:
  virtual ~Cursor() = default;

  // Runs the query.
  virtual void open() = 0;
  // After open(): on to the next row; false when none is left, and then it is not called again.
  virtual bool fetch() = 0;
  // After open().
  virtual int columnCount() const = 0;
  // A column of the fetched row; NULL is empty. Valid until the next call of any function here.
  virtual std::string_view column(int position) = 0;
  // Open or not.
  virtual void close() noexcept = 0;
};

class Session {
 public:
  virtual ~Session() = default;

  virtual std::unique_ptr<Cursor> prepare(const char *sql) = 0;
  // Runs a statement to its end; its rows are dropped.
  virtual void execute(const char *sql) = 0;
  // What it is connected to, for the log: without passwords.
  virtual std::string name() const = 0;
};

struct Limits {
  int timeoutMs;   // that a statement may run; 0: no limit
  int busyMs;      // that SQLite waits for another process's lock
  int statements;  // that are kept prepared
};

// `place` is what stands behind "sqlite:" and "odbc:". Both throw Error.
std::unique_ptr<Session> openSqlite(const std::string &place, const Limits &limits);
std::unique_ptr<Session> openOdbc(const std::string &place, const Limits &limits);

}  // namespace dbs
