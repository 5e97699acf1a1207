// odbc_handle.h: ODBC's handles and diagnostics.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>
#include <utility>

#include "session.h"

namespace dbs {

// An environment, connection or statement; freed with the object.
template <SQLSMALLINT kType>
class OdbcHandle {
 public:
  explicit OdbcHandle(SQLHANDLE parent) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(kType, parent, &m_handle))) {
      throw Error("ODBC: no handle of type " + std::to_string(kType) + " can be had");
    }
  }
  OdbcHandle(OdbcHandle &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
  OdbcHandle &operator=(OdbcHandle &&) = delete;
  ~OdbcHandle() {
    if (m_handle != nullptr) SQLFreeHandle(kType, m_handle);
  }
  SQLHANDLE get() const { return m_handle; }

 private:
  SQLHANDLE m_handle = nullptr;
};

using OdbcEnvironment = OdbcHandle<SQL_HANDLE_ENV>;
using OdbcConnection = OdbcHandle<SQL_HANDLE_DBC>;
using OdbcStatement = OdbcHandle<SQL_HANDLE_STMT>;

struct OdbcDiagnostic {
  std::string state;  // the SQLSTATE, five characters
  int code = -1;      // the driver's native error
  std::string text;   // one line, in front of it the SQLSTATE in brackets
};

// The first diagnostic of a handle whose last call failed.
OdbcDiagnostic odbcDiagnostic(SQLSMALLINT type, SQLHANDLE handle);

}  // namespace dbs
