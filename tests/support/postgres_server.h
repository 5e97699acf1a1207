// postgres_server.h: a PostgreSQL server of the test's own, on a socket in a temporary directory. It is gone
// with the object, and with the process, however that ends.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "config_tree.h"

namespace test {

class PostgresServer {
 public:
  // Why no server can be had on this machine; empty when it can.
  static std::string missing();

  // Makes an empty database and starts. Throws when a step fails, with the server's own words.
  PostgresServer();
  ~PostgresServer();
  PostgresServer(const PostgresServer &) = delete;
  PostgresServer &operator=(const PostgresServer &) = delete;

  void start();
  // Ends the server as a signal does: SIGKILL, SIGQUIT (drops its clients), SIGINT (the same, in order).
  // Returns when none of its processes is left; throws when one stays.
  void end(int nSignal);
  bool running() const { return m_pid > 0; }
  pid_t pid() const { return m_pid; }

  // For dbsConnect.
  std::string url() const;
  // For other clients: the folder of the socket, in place of a host's name. User cvt2, database postgres.
  std::string host() const { return m_tree.path(); }

 private:
  pid_t spawn(const std::vector<std::string> &command) const;
  bool ready() const;
  std::string log() const;

  ConfigTree m_tree;
  pid_t m_pid = 0;
};

}  // namespace test
