// database.h: statements for the current connection of vel_dbs, in one call each. A failure is a failure of
// the test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config_tree.h"
#include "vel_dbs.h"

namespace test {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

inline std::string lastError() {
  return std::to_string(dbsSqlCode()) + ": " + dbsErrStr();
}

// The error of a call that fails; a call that succeeds is a failure of the test.
inline std::string errorOf(int nResult) {
  EXPECT_EQ(nResult, -1);
  return nResult == -1 ? dbsErrStr() : "no error";
}

inline void run(const std::string &sql) {
  ASSERT_EQ(dbsExecute(cs(sql.c_str())), 0) << sql << "\n" << lastError();
}

// The fetched row.
inline Row fetchedRow() {
  Row row;
  for (int i = 0; i < dbsColumnCount(); ++i) {
    int nLen = -1;
    const char *const ps = dbsGetField(i, &nLen);
    EXPECT_NE(ps, nullptr) << lastError();
    if (ps != nullptr) row.emplace_back(ps, static_cast<size_t>(nLen));
  }
  return row;
}

inline int prepareAndOpen(const std::string &sql) {
  const int nResult = dbsPrepare(cs(sql.c_str()));
  return nResult != 0 ? nResult : dbsOpen();
}

// All rows of a query.
inline Rows query(const std::string &sql) {
  Rows rows;
  EXPECT_EQ(prepareAndOpen(sql), 0) << sql << "\n" << lastError();
  EXPECT_EQ(dbsColumnBuffer(), 0) << sql << "\n" << lastError();
  int nResult = 0;
  while ((nResult = dbsFetch()) == 0) rows.push_back(fetchedRow());
  EXPECT_EQ(nResult, -3001) << sql << "\n" << lastError();
  EXPECT_EQ(dbsClose(), 0);
  return rows;
}

// The only column of the only row.
inline std::string single(const std::string &sql) {
  const Rows rows = query(sql);
  EXPECT_TRUE(rows.size() == 1 && rows[0].size() == 1) << sql;
  return rows.size() == 1 && rows[0].size() == 1 ? rows[0][0] : "no single value";
}

}  // namespace test
