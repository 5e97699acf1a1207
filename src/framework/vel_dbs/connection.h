// connection.h: the process's connection and its current query; what stands between the C functions and a
// back end.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "session.h"
#include "statement_cache.h"

namespace dbs {

// Every function that can fail throws Error. A query that fails while it runs is forgotten; so is everything
// when the connection is lost, and the next statement connects again.
class Connection {
 public:
  void connect(const std::string &url);
  void disconnect();

  void execute(const char *sql);
  void prepare(const char *sql);
  void open();
  void expectColumns() const;
  bool fetch();
  int columnCount() const;
  std::string_view column(int position);
  void close() noexcept;

 private:
  enum class State { closed, open, onRow, atEnd };

  Session &session();
  void openSession();
  void release();
  void expectOpen() const;
  // Calls the back end; lets everything go when the connection is lost.
  template <class Call>
  void ask(Call call);
  // The same for the query that runs: one that fails is let go.
  template <class Call>
  void askQuery(Call call);

  std::string m_url;  // empty: not told yet
  std::unique_ptr<Session> m_session;
  StatementCache m_queries;  // goes before the session
  Cursor *m_query = nullptr;
  State m_state = State::closed;
};

}  // namespace dbs
