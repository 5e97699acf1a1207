// cvt_convert_sql.cpp: the rule that runs one statement on the database.
#include <cstring>

#include "cvt_convert_parts.h"
#include "cvt_sql_text.h"
#include "vel_dbs.h"

namespace cvt::convert {

namespace {

int CvtOraExecSql(char *psSql) {
  if (dbsExecute(psSql) == 0) return 0;
  CVT_ERR("CvtOraExecSql[%s] err!! sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
  return -1;
}

// Copies the columns of the fetched row into the slots, as far as both reach.
int TakeColumns(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptFieldList,
                MemPort ptMemNode) {
  const int nCount = dbsColumnCount();
  CVT_TRACE("Cvt Field Num[%d]", nCount);
  Arg *ptArgs = ptFieldList;
  for (int i = 0; i < nCount && ptArgs != nullptr; ++i, ptArgs = ptArgs->ptNext) {
    Value *ptValue = nullptr;
    CVT_NOT_NULL(ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode), -1);
    int nLen = 0;
    const char *const psColumn = dbsGetField(i, &nLen);
    if (psColumn == nullptr || nLen < 0) {
      CVT_ERR("CvtOraInq dbsGetField[%d] err!! sqlcode[%d:%s]", i, dbsSqlCode(), dbsErrStr());
      return -1;
    }
    auto *const psCopy = static_cast<char *>(cvtMalloc(nLen, ptMemNode));  // null for no bytes
    if (psCopy == nullptr && nLen > 0) return -1;                          // no pool node: already logged
    if (psCopy != nullptr) std::memcpy(psCopy, psColumn, static_cast<size_t>(nLen));
    ptValue->psValue = psCopy;
    ptValue->nLen = nLen;
    CVT_TRACE("  Field[%d][%.*s]", i, ptValue->nLen, ptValue->psValue);
  }
  return 0;
}

// Runs a query; its first row fills the slots. No row is not a failure: the slots keep what they hold.
int CvtOraInq(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, char *psSql, Arg *ptFieldList,
              MemPort ptMemNode) {
  constexpr int kNoData = -3001;
  CVT_TRACE("Cvt Sql[%s]", psSql);
  if (dbsPrepare(psSql) != 0) {
    CVT_ERR("CvtOraInq dbsPrepare err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  if (dbsOpen() != 0) {
    CVT_ERR("CvtOraInq dbsOpens err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  struct OpenCursor {
    ~OpenCursor() { dbsClose(); }
  } const cursor;
  const bool bBound = dbsColumnBuffer() == 0;
  const int nRet = bBound ? dbsFetch() : -1;
  if (nRet == kNoData) {
    CVT_ERR("Warning: sql[%s] not find data!!", psSql);
    return 0;
  }
  if (nRet != 0) {  // a row that cannot be fetched is reported like columns that cannot be bound
    CVT_ERR("CvtOraInq dbsColumnBuffer err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  return TakeColumns(ptSrcValueList, ptDstValueList, ptFieldList, ptMemNode);
}

}  // namespace

int CvtSql(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Sql *ptLoop, MemPort ptMemNode) {
  CVT_NOT_NULL(ptLoop, -1);
  SqlText sql;
  int i = 0;
  // The pieces are joined with nothing between them: quotes, blanks and commas are part of the pieces.
  for (Arg *ptArgs = ptLoop->ptSqlList; ptArgs != nullptr; ptArgs = ptArgs->ptNext) {
    const Value *ptValue = nullptr;
    CVT_NOT_NULL(ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode), -1);
    ++i;
    if (ptValue->nLen < 0 || (ptValue->nLen > 0 && ptValue->psValue == nullptr)) {
      CVT_ERR("Sql piece [%d] has no text: name a field that is no loop, or a constant with psValue", i);
      return -1;
    }
    sql.append(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
  }
  if (ptLoop->ptFieldList == nullptr) return CvtOraExecSql(sql.text());
  return CvtOraInq(ptSrcValueList, ptDstValueList, sql.text(), ptLoop->ptFieldList, ptMemNode);
}

}  // namespace cvt::convert
