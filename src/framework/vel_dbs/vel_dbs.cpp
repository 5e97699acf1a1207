// vel_dbs.cpp: a stand-in for the framework's database access: the C functions, over one Connection.
#include "vel_dbs.h"

#include <climits>
#include <exception>
#include <string>

#include "connection.h"

namespace {

constexpr int kFailed = -1;
constexpr int kNoData = -3001;

class LastError {
 public:
  void set(int code, const char *text) noexcept {
    m_code = code;
    try {
      m_text = text;
    } catch (...) {
      m_text = "out of memory";  // short enough to need none
    }
  }
  int code() const { return m_code; }
  char *text() { return m_text.data(); }

 private:
  int m_code = 0;
  std::string m_text;
};

// An object that is never destroyed, without the heap: what says that the heap is exhausted must not need it.
template <class T>
union Lasting {
  Lasting() : object() {}
  ~Lasting() {}  // NOLINT(modernize-use-equals-default): a defaulted one would be deleted
  Lasting(const Lasting &) = delete;
  Lasting &operator=(const Lasting &) = delete;
  T object;
};

// Destructors that run at the end of the process may still look something up, and a driver may have gone by
// then.
LastError &lastError() {
  static Lasting<LastError> once;
  return once.object;
}
dbs::Connection &connection() {
  static Lasting<dbs::Connection> once;
  return once.object;
}

// No exception leaves: it becomes the last error.
template <class Result, class Call>
Result guarded(Result failed, Call call) noexcept {
  try {
    return call();
  } catch (const dbs::Error &e) {
    lastError().set(e.code(), e.what());
  } catch (const std::exception &e) {
    lastError().set(kFailed, e.what());
  } catch (...) {
    lastError().set(kFailed, "unknown exception");
  }
  return failed;
}

template <class Call>
int succeeds(Call call) noexcept {
  return guarded(kFailed, [&call] {
    call();
    return 0;
  });
}

void expectText(const char *ps, const char *psName) {
  if (ps == nullptr) throw dbs::Error("[" + std::string(psName) + "] is NULL");
}

}  // namespace

int dbsConnect(char *psUrl) {
  return succeeds([psUrl] {
    expectText(psUrl, "psUrl");
    connection().connect(psUrl);
  });
}

int dbsDisconnect(void) {
  return succeeds([] { connection().disconnect(); });
}

int dbsExecute(char *psSql) {
  return succeeds([psSql] {
    expectText(psSql, "psSql");
    connection().execute(psSql);
  });
}

int dbsPrepare(char *psSql) {
  return succeeds([psSql] {
    expectText(psSql, "psSql");
    connection().prepare(psSql);
  });
}

int dbsOpen(void) {
  return succeeds([] { connection().open(); });
}

int dbsColumnBuffer(void) {
  return succeeds([] { connection().expectColumns(); });
}

int dbsFetch(void) {
  return guarded(kFailed, [] { return connection().fetch() ? 0 : kNoData; });
}

int dbsColumnCount(void) {
  return guarded(kFailed, [] { return connection().columnCount(); });
}

char *dbsGetField(int nColumn, int *pnLen) {
  if (pnLen != nullptr) *pnLen = 0;
  return guarded(static_cast<char *>(nullptr), [nColumn, pnLen] {
    expectText(reinterpret_cast<const char *>(pnLen), "pnLen");
    const std::string_view bytes = connection().column(nColumn);
    if (bytes.size() > INT_MAX) {
      throw dbs::Error("column " + std::to_string(nColumn) + " has " + std::to_string(bytes.size()) +
                       " bytes; at most " + std::to_string(INT_MAX) + " can be delivered");
    }
    *pnLen = static_cast<int>(bytes.size());
    return const_cast<char *>(bytes.data());
  });
}

int dbsClose(void) {
  return succeeds([] { connection().close(); });
}

int dbsSqlCode(void) {
  return lastError().code();
}

char *dbsErrStr(void) {
  return lastError().text();
}
