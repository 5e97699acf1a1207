#include "odbc_handle.h"

#include <algorithm>
#include <iterator>

namespace dbs {
namespace {

// Drivers break their texts into lines; here they go into log lines.
std::string oneLine(const std::string &text) {
  std::string line;
  for (const char c : text) {
    const bool blank = static_cast<unsigned char>(c) <= ' ';
    if (!blank) {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

}  // namespace

OdbcDiagnostic odbcDiagnostic(SQLSMALLINT type, SQLHANDLE handle) {
  SQLCHAR state[SQL_SQLSTATE_SIZE + 1] = "";
  SQLCHAR text[SQL_MAX_MESSAGE_LENGTH * 4] = "";
  SQLINTEGER code = -1;
  SQLSMALLINT length = 0;
  if (!SQL_SUCCEEDED(SQLGetDiagRec(type, handle, 1, state, &code, text, sizeof text, &length))) {
    return {"", -1, "the driver gives no reason"};
  }
  const std::string name(reinterpret_cast<const char *>(state));
  return {name, code, "[" + name + "] " + oneLine(reinterpret_cast<const char *>(text))};
}

}  // namespace dbs
