/* api_test.c: a host in plain C. It calls every function that the library exports, the way its header tells,
 * and looks at what comes back; api_complete.sh proves that none is left out. The library may be written in
 * whatever language, but this file is what compiles against it.
 *
 *   api_test CONFIGURATION
 */
#define _XOPEN_SOURCE 700 /* mkdtemp */
#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "_version.h"
#include "layout.h"
#include "plug_mgr.h"
#include "velutil.h"

static int f_nChecks = 0;
static int f_nFailed = 0;

static void check(int bHolds, const char *psText, int nLine) {
  ++f_nChecks;
  if (bHolds) return;
  ++f_nFailed;
  fprintf(stderr, "api_test.c:%d: does not hold: %s\n", nLine, psText);
}
#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static int isText(const char *psFound, const char *psExpected) {
  return psFound != NULL && strcmp(psFound, psExpected) == 0;
}

/* The host's own log: it counts the errors. */
static int f_nErrors = 0;

__attribute__((visibility("default"))) int logInfo(int nLevel, const char *psModule, const char *psFile,
                                                   int nLine, const char *psFunction, const char *psFormat,
                                                   ...) {
  va_list args;
  if (nLevel > 1) return 0;
  ++f_nErrors;
  if (getenv("API_TEST_LOG") == NULL) return 0;
  printf("%s %s:%d %s: ", psModule, psFile, nLine, psFunction);
  va_start(args, psFormat);
  vprintf(psFormat, args);
  va_end(args);
  printf("\n");
  return 0;
}

/* A name in a directory: f_sConfig, the configuration, or f_sWork, made by this program and removed at its
 * end. */
static char *f_sConfig = NULL;
static char f_sWork[] = "/tmp/api_test.XXXXXX";

static char *in(const char *psDirectory, const char *psName) {
  static char f_sPath[4096];
  snprintf(f_sPath, sizeof f_sPath, "%s/%s", psDirectory, psName);
  return f_sPath;
}

/* --- Memory pool ---------------------------------------------------------------------------------------- */

static void testPool(void) {
  MemNode *const ptNode = cvtMemNewNode();
  const char *const ps = cvtMalloc(16, ptNode);
  CHECK(ptNode->nId == 1 && ptNode->cUsed == '1');
  CHECK(gptMemRoot->ptMemNodeList == ptNode);
  CHECK(ps != NULL && ps[0] == 0 && ps[15] == 0);
  CHECK(cvtMalloc(16, NULL) == NULL && cvtMalloc(0, ptNode) == NULL);
  CHECK(cvtMemPrintNode(ptNode) == 0);
  CHECK(cvtMemDelNode(ptNode) == 0 && ptNode->cUsed == '0');
  CHECK(cvtMemNewNode() == ptNode);
  CHECK(cvtMemMalloc(16) != NULL && gptGlobalNode->nId == 0);
  CHECK(cvtMemReset() == 0);
  CHECK(cvtMemCleanUp() == 0);
}

/* Interned strings live in the pool, so the dictionary goes first. */
static void releasePool(void) {
  CHECK(cvtEndDict() == 0 && gptDict == NULL);
  CHECK(cvtMemCleanUp() == 0);
}

/* --- Strings -------------------------------------------------------------------------------------------- */

static void testLists(void) {
  int anInfo[6];
  StringList tPut;
  StringList tLast;
  StringList *ptIter = NULL;
  MemNode *const ptNode = cvtMemNewNode();
  StringList *ptList = cvtStrAddStringList(NULL, "a", &anInfo[0]);
  StringList *ptOther = cvtStrAddStringListOrder(NULL, "e", &anInfo[4]);
  memset(&tPut, 0, sizeof tPut);
  memset(&tLast, 0, sizeof tLast);
  ptList = cvtStrAddStringListMem(ptList, "b", &anInfo[1], ptNode);
  ptList = cvtStrAddStringListOrderMem(ptList, "c", &anInfo[2], ptNode);
  ptList = locStrListAdd(ptList, &tPut, "d", &anInfo[3]);
  CHECK(ptList == &tPut && isText(ptList->ptNext->psString, "b"));
  CHECK(locStrListAddOrder(ptOther, &tLast, "f", &anInfo[5]) == ptOther && ptOther->ptNext == &tLast);
  CHECK(cvtStrListAddList(ptList, ptOther) == 0);
  CHECK(cvtStrFindStringList(ptList, "c") == &anInfo[2] && cvtStrFindStringList(ptList, "f") == &anInfo[5]);
  CHECK(cvtStrFindStringList(ptList, "g") == NULL);
  ptIter = ptList;
  CHECK(cvtStrListNext(&ptIter) == &anInfo[3] && cvtStrListNext(&ptIter) == &anInfo[1]);
  CHECK(cvtStrLogStringList(ptList, "list") == 0);
  free(tLast.psString);
  releasePool();
}

static void testDictionary(void) {
  char sText[] = "text";
  MemNode *const ptNode = cvtMemNewNode();
  CHECK(cvtInitDict() == 0);
  CHECK(cvtStrDup(sText) == cvtStrDup("text") && cvtStrDup(sText) != sText && gptDict != NULL);
  CHECK(isText(cvtStrDupMem(sText, ptNode), "text") && cvtStrDupMem(sText, ptNode) != cvtStrDup(sText));
  releasePool();
}

static void testText(void) {
  char sOut[16] = {0};
  char sBack[16] = {0};
  char sUp[] = "abC-d";
  char sNumber[] = "1234";
  char sLine[] = "x,y;z,rest";
  char *apsField[3] = {NULL};
  char sNow[15] = {0};
  int nLen = sizeof sOut;
  int nBack = sizeof sBack;
  CHECK(cvtStrDecodeBase64("Y3Z0Mg==", 8, sOut, &nLen) == 0 && nLen == 4 && memcmp(sOut, "cvt2", 4) == 0);
  nLen = sizeof sOut;
  CHECK(cvtStrCodeConvert("ISO-8859-1", "UTF-8", "\xe9", 1, sOut, &nLen) == 0);
  CHECK(nLen == 2 && memcmp(sOut, "\xc3\xa9", 2) == 0);
  nLen = sizeof sOut;
  CHECK(cvtStrU2G("\xe4\xb8\xad", 3, sOut, &nLen) == 0 && nLen == 2 && memcmp(sOut, "\xd6\xd0", 2) == 0);
  CHECK(cvtStrG2U(sOut, nLen, sBack, &nBack) == 0 && nBack == 3 && memcmp(sBack, "\xe4\xb8\xad", 3) == 0);
  CHECK(cvtStrToUp(sUp, 4) == 0 && isText(sUp, "ABC-d"));
  CHECK(cvtStrAntoi(sNumber, 2) == 12 && isText(sNumber, "1234"));
  CHECK(cvtStrNSplit(apsField, sLine, ",;", 3) == 3 && isText(apsField[1], "y") &&
        isText(apsField[2], "z,rest"));
  cvtGetCurrentDateTime(sNow);
  CHECK(strlen(sNow) == 14 && strspn(sNow, "0123456789") == 14);
}

/* --- XML layer ------------------------------------------------------------------------------------------ */

static void *order(char *psId) {
  char sId[16];
  void *const ptDoc = xmlInit();
  void *const ptRoot = xmlMadeNode("order");
  snprintf(sId, sizeof sId, "%s", psId);
  xmlPutRootNode(ptDoc, ptRoot);
  xmlPutNodeValue(ptRoot, "id", sId, (int)strlen(sId));
  return ptDoc;
}

static void testXmlBuilding(void) {
  char sValue[] = "value";
  char sBuf[512];
  int nLen = 10;
  void *const ptDoc = xmlInit();
  void *const ptRoot = xmlMadeNode("root");
  void *const ptNs = xmlMadeNameSpaceShortCut(ptRoot, "p", "urn:p", 0);
  void *const ptChild = xmlMadeNsNode(ptNs, "child");
  void *const ptDefault = xmlMadeNode("default");
  CHECK(xmlPutRootNode(ptDoc, ptRoot) == 0 && xmlGetHeadNode(ptDoc) == ptRoot);
  CHECK(xmlPutChileNode(ptRoot, ptChild) == 0 && xmlPutChileNode(ptRoot, ptDefault) == 0);
  CHECK(xmlMadeNameSpace(ptDefault, "urn:d") != NULL);
  xmlNodeAddNameSapce(ptRoot, ptNs);
  CHECK(xmlPutNodeValue(ptRoot, "plain", sValue, 3) != NULL && isText(sValue, "value"));
  CHECK(xmlPutNsNodeValue(ptRoot, ptNs, "named", sValue, 5) != NULL);
  CHECK(xmlPutNodeAttr(ptChild, "a", "1234", 2) != NULL &&
        xmlPutNsNodeAttr(ptChild, ptNs, "b", "5", 1) != NULL);
  CHECK(xmlGenerate(ptDoc, sBuf, &nLen) == -1 && nLen == 10);
  nLen = sizeof sBuf;
  CHECK(xmlGenerate(ptDoc, sBuf, &nLen) == 0);
  sBuf[nLen] = 0;
  CHECK(strstr(sBuf, "<p:root xmlns:p=\"urn:p\"><p:child a=\"12\" p:b=\"5\"/><default xmlns=\"urn:d\"/>") !=
        NULL);
  CHECK(strstr(sBuf, "<p:plain>val</p:plain><p:named>value</p:named></p:root>") != NULL);
  CHECK(xmlDocFree(ptDoc) == 0);
  CHECK(xmlNodeFree(xmlMadeNode("alone")) == 0);
}

static void testXmlReading(void) {
  char sText[] = "<a>\n <b x='1'>two</b><c/></a>";
  char *psValue = NULL;
  void *const ptDoc = xmlParse(sText, (int)strlen(sText));
  void *const ptTight = xmlParse2(sText, (int)strlen(sText));
  void *const ptRoot = xmlGetHeadNode(ptTight);
  void *const ptB = xmlGetChileNode(ptRoot);
  CHECK(isText(xmlGetNodeName(xmlGetChileNode(xmlGetHeadNode(ptDoc))), "text"));
  CHECK(isText(xmlGetNodeName(ptB), "b") && xmlGetFatherNode(ptB) == ptRoot);
  CHECK(xmlGetNextNode(ptB) == xmlGetLastChildNode(ptRoot) && xmlGetPrevNode(xmlGetNextNode(ptB)) == ptB);
  psValue = xmlGetNodeVaule(ptB);
  CHECK(isText(psValue, "two"));
  xmlFreeString(psValue);
  psValue = xmlGetNodeAttr(ptB, "x");
  CHECK(isText(psValue, "1") && xmlGetNodeAttr(ptB, "y") == NULL);
  xmlFreeString(psValue);
  xmlDocFree(ptDoc);
  xmlDocFree(ptTight);
  CHECK(xmlParse("<a", 2) == NULL);
}

static void testXmlFiles(void) {
  static void *ptSchema = NULL; /* nothing of the library releases it */
  void *const ptValid = order("7");
  void *const ptWrong = order("seven");
  void *ptRead = NULL;
  ptSchema = xmlGetSchemaObj(in(f_sConfig, "order.xsd"));
  CHECK(xmlGetSchemaObj("") == NULL && ptSchema != NULL);
  CHECK(xmlCheckSchema(ptSchema, ptValid) == 0 && xmlCheckSchema(ptSchema, ptWrong) > 0);
  CHECK(xmlFileGenerate(in(f_sWork, "order.xml"), ptValid) > 0);
  ptRead = xmlFileParse(in(f_sWork, "order.xml"));
  CHECK(ptRead != NULL && isText(xmlGetNodeName(xmlGetHeadNode(ptRead)), "order"));
  xmlDocFree(ptRead);
  xmlDocFree(ptValid);
  xmlDocFree(ptWrong);
  unlink(in(f_sWork, "order.xml"));
}

static void testXmlEncodings(void) {
  char sBuf[256];
  char sText[] = "<?xml version='1.0' encoding='api-test'?><a>\xe9</a>";
  int nLen = sizeof sBuf;
  void *ptDoc = xmlInitEncoding("ISO-8859-1");
  xmlPutRootNode(ptDoc, xmlMadeNode("a"));
  CHECK(xmlGenerate(ptDoc, sBuf, &nLen) == 0 && strstr(sBuf, "encoding=\"ISO-8859-1\"") != NULL);
  xmlDocFree(ptDoc);
  CHECK(xmlParse(sText, (int)strlen(sText)) == NULL);
  xmlEncodeAlias("ISO-8859-1", "api-test");
  ptDoc = xmlParse(sText, (int)strlen(sText));
  CHECK(ptDoc != NULL);
  xmlDocFree(ptDoc);
}

/* --- Record binding ------------------------------------------------------------------------------------- */

static void testFields(void) {
  void *const ptNode = xmlMadeNode("any");
  char *psRead = NULL;
  sttGenerateXmlChar(ptNode, 'c', "char");
  sttGenerateXmlString(ptNode, "text", "string");
  sttGenerateXmlInt(ptNode, -5, "int");
  sttGenerateXmlLong(ptNode, 5000000000L, "long");
  sttGenerateXmlFloat(ptNode, 1.5F, "float");
  sttGenerateXmlDouble(ptNode, 2.5, "double");
  CHECK(sttParseXmlChar(ptNode, "char") == 'c');
  CHECK(sttParseXmlInt(ptNode, "int") == -5 && sttParseXmlLong(ptNode, "long") == 5000000000L);
  CHECK(sttParseXmlFloat(ptNode, "float") == 0.0F && sttParseXmlDouble(ptNode, "double") == 0.0F);
  psRead = sttParseXmlString(ptNode, "float");
  CHECK(isText(psRead, "1.500000"));
  sttFreeXmlString(psRead);
  psRead = sttParseXmlString(ptNode, "string");
  CHECK(isText(psRead, "text") && sttParseXmlString(ptNode, "absent") == NULL);
  sttFreeXmlString(psRead);
  xmlNodeFree(ptNode);
}

static void testPointers(void) {
  void *const ptFather = xmlMadeNode("father");
  void *const ptNode = xmlMadeNode("CvtArgs");
  CvtArgs *const ptArgs = sttNewCvtArgs("path");
  CvtArgs *ptRead = NULL;
  xmlPutChileNode(ptFather, ptNode);
  sttGenerateXmlStruct(ptNode, ptArgs, "ptStruct", "CvtArgs", (void *)sttGenXmlCvtArgs);
  ptRead = sttParseXmlStruct(ptNode, "CvtArgs", "ptStruct", (void *)sttParseXmlCvtArgs);
  CHECK(ptRead != NULL && isText(ptRead->psCvtPath, "path"));
  sttGenerateXmlNext(ptNode, ptArgs, "ptNext", "CvtArgs", (void *)sttGenXmlCvtArgs);
  ptRead = sttParseXmlNext(ptNode, "CvtArgs", "ptNext", (void *)sttParseXmlCvtArgs);
  CHECK(ptRead != NULL && isText(ptRead->psCvtPath, "path"));
  CHECK(sttAddFuncVoid(sttParseVoidcvt_convert, sttGenVoidcvt_convert) == 0);
  CHECK(sttSetVoidType(ptArgs, "CvtArgs") == 0 && isText(sttGetVoidType(ptArgs), "CvtArgs"));
  CHECK(gptTypeList != NULL && gptTypeList->p == ptArgs);
  sttGenerateXmlVoid(ptNode, ptArgs, "pInfo");
  ptRead = sttParseXmlVoid(ptNode, "pInfo");
  CHECK(ptRead != NULL && isText(ptRead->psCvtPath, "path"));
  CHECK(sttGenVoid(ptArgs, ptNode, "pInfo", "CvtArgs") == ptNode && sttParseVoid(ptNode, "CvtArgs") != NULL);
  CHECK(nGRet == 0);
  CHECK(sttResetFunctVoid() == 0 && sttParseVoid(ptNode, "CvtArgs") == NULL);
  xmlNodeFree(ptFather);
}

static void *parseFirst(char *psFileName, char *psType, void *ptNode) {
  CHECK(strstr(psFileName, "args.xml") != NULL && isText(psType, "apiFile"));
  return sttParseVoid(ptNode, xmlGetNodeName(ptNode));
}

static void testFiles(void) {
  CvtArgs *const ptArgs = sttNewCvtArgs("path");
  char *const psFile = in(f_sWork, "args.xml");
  const CvtArgs *ptRead = NULL;
  CHECK(sttGenXmlFile(psFile, ptArgs, "apiFile", "CvtArgs", (void *)sttGenVoidcvt_convert) == 0);
  ptRead = sttParseXmlFile(psFile, "apiFile", "CvtArgs", (void *)sttParseXmlCvtArgs);
  CHECK(ptRead != NULL && isText(ptRead->psCvtPath, "path"));
  CHECK(sttParseXmlFile(psFile, "other", "CvtArgs", (void *)sttParseXmlCvtArgs) == NULL);
  CHECK(sttAddSttInfo("apiFile", parseFirst) == 0 && isText(gptSttInfo->psTypeName, "apiFile"));
  CHECK(sttAddVoidFunctionToSttInfo("apiFile", sttParseVoidcvt_convert, sttGenVoidcvt_convert) == 0);
  ptRead = sttParseBySttInfo(psFile);
  CHECK(ptRead != NULL && isText(ptRead->psCvtPath, "path"));
  CHECK(sttEnd() == 0 && gptSttInfo == NULL && sttParseBySttInfo(psFile) == NULL);
  unlink(psFile);
  releasePool();
}

/* --- A format, a step and a function of the host's own -------------------------------------------------- */

/* A field is one byte; a loop has one field, and its count stands before it. */
typedef int Move(Value *ptSlot, ValueListInfo *ptInfo, char *psBuf, int *pnNowLen, int nLen);

static int take(Value *ptSlot, ValueListInfo *ptInfo, char *psBuf, int *pnNowLen, int nLen) {
  if (*pnNowLen >= nLen) return -1;
  return cvtDumpValue(ptSlot, psBuf + (*pnNowLen)++, 1, ptInfo->ptMemNode);
}

static int put(Value *ptSlot, ValueListInfo *ptInfo, char *psBuf, int *pnNowLen, int nLen) {
  if (ptInfo->ptValueList == NULL || ptSlot->nLen != 1 || *pnNowLen >= nLen) return -1;
  psBuf[(*pnNowLen)++] = ptSlot->psValue[0];
  return 0;
}

static int moveLoop(Move *move, ValueListInfo *ptInfo, int nPos, Message *ptNode, char *psBuf, int *pn,
                    int nLen) {
  const int nTimes = cvtLoopGetLoopNum(ptInfo, ptNode);
  for (int n = 0; n < nTimes; ++n) {
    ValueList *ptBody = NULL;
    if (move == take) {
      ptBody = cvtNewLoopValueList(ptInfo->ptValueList, nPos, cvtLoopGetFieldNum(ptNode));
    } else {
      ptBody = cvtGetLoopValueList(ptInfo->ptValueList, nPos, n);
    }
    if (move(cvtGetListValue(ptBody, 0), ptInfo, psBuf, pn, nLen) != 0) return -1;
  }
  return 0;
}

static int moveAll(Move *move, ValueListInfo *ptInfo, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  int nRet = 0;
  for (int i = 0; i < ptMsg->nFieldNum && nRet == 0; ++i) {
    Message *const ptNode = cvtIdxNode(ptMsg->pptMessageIdx, i);
    if (ptNode->ptStructAttr->nType == CVT_STRUCT_LOOP) {
      nRet = moveLoop(move, ptInfo, i, ptNode, psBuf, pnNowLen, nLen);
      i += cvtLoopGetFieldNum(ptNode);
    } else {
      nRet = move(cvtGetListValue(ptInfo->ptValueList, i), ptInfo, psBuf, pnNowLen, nLen);
    }
  }
  return nRet;
}

static int parse(void *ptInfo, ValueListInfo *ptValues, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  return ptInfo == NULL ? moveAll(take, ptValues, ptMsg, psBuf, pnNowLen, nLen) : -1;
}

static int generate(void *ptInfo, ValueListInfo *ptValues, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  return ptInfo == NULL ? moveAll(put, ptValues, ptMsg, psBuf, pnNowLen, nLen) : -1;
}

static int initDefinition(Msg *ptMsg) {
  ptMsg->fParse = parse;
  ptMsg->fGen = generate;
  ptMsg->nValueNum = ptMsg->nFieldNum;
  return cvtLoopSetLoopNumIndex(ptMsg->pptMessageIdx);
}

static int nameOrder(InnerMessage *ptMsg, InnerMessage *ptVoid, void *ptArgs) {
  if (ptVoid != NULL || ptArgs != NULL) return -1;
  strcpy(ptMsg->sMsgName, "Order");
  return 0;
}

static int upper(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptMemNode) {
  if (nArgs != 1 || pptArgs[0] == NULL) return -1;
  if (cvtDumpValue(ptResult, pptArgs[0]->psValue, pptArgs[0]->nLen, ptMemNode) != 0) return -1;
  return cvtStrToUp(ptResult->psValue, ptResult->nLen);
}

static int start(void) {
  CHECK(cvtFmtAddPlug("abi", sttParseVoidcvt_message, sttGenVoidcvt_message, initDefinition) == 0);
  CHECK(cvtIdAddFunction("abiName", nameOrder) == 0);
  CHECK(cvtConvertAddFunction("abiUpper", upper) == 0);
  return cvtInit(f_sConfig);
}

/* --- Start, sections, loading --------------------------------------------------------------------------- */

static int f_nFiles = 0;

static int countFile(char *psFileName) {
  ++f_nFiles;
  return strstr(psFileName, ".xml") == NULL;
}

static void testStart(void) {
  CHECK(cvtIsDebug() == 0 && isText(cvtGetBasePath(), ""));
  f_nErrors = 0;
  CHECK(start() == 0 && f_nErrors == 0);
  CHECK(isText(gpsRootPath, f_sConfig) && strstr(gpsRootFile, "/All/root.xml") != NULL && gtLastLoadTime > 0);
  CHECK(gptAllInfo->nReload == 1 && cvtIsDebug() == 1 && isText(cvtGetBasePath(), "here"));
  CHECK(cvtInitReload() == 0);
  CHECK(cvtIniParseDirXml(NULL, "Message", countFile) == 0 && f_nFiles == 2);
  CHECK(cvtIniParseFileXml(NULL, "All", "root.xml", countFile) == 0 && f_nFiles == 3);
}

static void *element(char *psText) {
  void *const ptDoc = xmlParse2(psText, (int)strlen(psText));
  CHECK(ptDoc != NULL);
  return ptDoc;
}

static void testSections(void) {
  void *const ptDoc = element(
      "<All><Plug psBasePlugPath=''/><Message gnMaxValue='9'/><Convert psCvtPath='None'/><Id "
      "psIdPath='None'/></All>");
  void *const ptPlug = xmlGetChileNode(xmlGetHeadNode(ptDoc));
  void *const ptMessage = xmlGetNextNode(ptPlug);
  void *const ptConvert = xmlGetNextNode(ptMessage);
  CHECK(cvtPlugInit(ptPlug, "Plug") == gptPlugInfo && gptPlugInfo != NULL && isText(gpsBasePlugPath, ""));
  CHECK(cvtPlugEnd() == 0 && gptPlugInfo == NULL);
  CHECK(cvtFmtInit(ptMessage, "Message") == gptFmtGlobalInfo &&
        gptFmtGlobalInfo->ptCvtFmtArgs->gnMaxValue == 9);
  CHECK(cvtFmtEnd() == 0 && gptFmtGlobalInfo == NULL);
  CHECK(cvtCvtInit(ptConvert, "Convert") == gptCvtGlobalInfo && gptCvtGlobalInfo->ptCvtList == NULL);
  CHECK(cvtCvtEnd() == 0 && gptCvtGlobalInfo == NULL);
  CHECK(cvtIdInit(xmlGetNextNode(ptConvert), "Id") != NULL && gptFormatInfo == NULL);
  CHECK(cvtIdEnd() == 0);
  xmlDocFree(ptDoc);
}

/* --- Definitions, loops, values ------------------------------------------------------------------------- */

static void testDefinitions(void) {
  int nNum = 0;
  int nError = 0;
  void *const ptDoc = element(
      "<abi><Msg psMsgName='One'><Message __ID='ptHead' psNodeName='A'>"
      "<StructAttr __ID='ptStructAttr'/></Message></Msg></abi>");
  Msg *const ptRead = cvtSttInitMessage("One.xml", "abi", xmlGetChileNode(xmlGetHeadNode(ptDoc)));
  StructAttr *const ptStruct = sttNewStructAttr(0, NULL, NULL, NULL, NULL, NULL);
  Message *const ptNode = cvtNewMessageByType("A", 0, NULL, ptStruct);
  Message **const pptIdx = cvtCreateMessageIdx(ptNode, &nNum);
  Msg *const ptMade = sttNewMsg("Two", NULL, NULL, ptNode, NULL, NULL);
  CHECK(ptRead != NULL && ptRead->nFieldNum == 1 && ptRead->fGen == generate);
  CHECK(cvtNewMessageByType("Order", -1, NULL, NULL) == cvtGetMsg("Order")->ptHead);
  CHECK(nNum == 1 && cvtIdxNode(pptIdx, 0) == ptNode && cvtIdxNode(pptIdx, 1) == NULL);
  CHECK(cvtGetNodeIdx(pptIdx, "a") == 0 && cvtGetNodeIdx(pptIdx, "b") == -1);
  CHECK(cvtGenMessageInfo(ptMade) == 0 && ptMade->nFieldNum == 1 && nError == 0);
  CHECK(gnMaxValueNum == 12);
  xmlDocFree(ptDoc);
}

static void testValueLists(void) {
  MemNode *const ptNode = cvtMemNewNode();
  ValueList *const ptList = cvtGetValueList(2);
  ValueList *ptBody = NULL;
  CHECK(ptList->nNow == 2 && ptList->nMax == gnMaxValueNum);
  CHECK(cvtDumpValue(cvtGetListValue(ptList, 0), "abc", 2, ptNode) == 0 &&
        isText(ptList->ptValue[0].psValue, "ab"));
  CHECK(cvtGetListValue(ptList, 2) == NULL);
  CHECK(cvtGetLoopValueListNum(ptList, 1) == 0);
  ptBody = cvtNewLoopValueList(ptList, 1, 1);
  CHECK(cvtGetLoopValueListNum(ptList, 1) == 1 && cvtGetLoopValueList(ptList, 1, 0) == ptBody);
  CHECK(cvtFreeValue(ptList) == 0 && gptFreeValue == ptList && gptLoopValue != NULL);
  cvtMemDelNode(ptNode);
}

static void testLoops(void) {
  Msg *const ptMsg = cvtGetMsg("Order");
  Message *const ptLoop = cvtIdxNode(ptMsg->pptMessageIdx, 2);
  ValueListInfo tInfo;
  memset(&tInfo, 0, sizeof tInfo);
  tInfo.ptMemNode = cvtMemNewNode();
  tInfo.ptValueList = cvtGetValueList(ptMsg->nValueNum);
  CHECK(cvtLoopCreateIndex(ptLoop) == 0 && cvtLoopGetFieldNum(ptLoop) == 1);
  CHECK(isText(cvtIdxNode(cvtLoopGetIdx(ptLoop), 0)->psNodeName, "Code") && cvtLoopGetStruct(ptLoop) == NULL);
  CHECK(cvtSetLoopCurrentTime(ptLoop, 3) == 0 && cvtGetLoopCurrentTime(ptLoop) == 3);
  CHECK(cvtLoopSetLoopNumIndex(ptMsg->pptMessageIdx) == 0);
  CHECK(cvtDumpValue(cvtLoopGetLoopNumValue(&tInfo, ptLoop), "12", 2, tInfo.ptMemNode) == 0);
  CHECK(cvtLoopGetLoopNum(&tInfo, ptLoop) == 12);
  cvtFreeValue(tInfo.ptValueList);
  cvtMemDelNode(tInfo.ptMemNode);
}

/* --- Messages ------------------------------------------------------------------------------------------- */

static int isField(InnerMessage *ptMsg, char *psName, const char *psExpected) {
  int nError = -1;
  const Value *const ptValue = cvtGetNameValue(ptMsg, psName, &nError);
  return ptValue != NULL && nError == 0 && ptValue->nLen == (int)strlen(psExpected) &&
         memcmp(ptValue->psValue, psExpected, (size_t)ptValue->nLen) == 0;
}

static void testMessages(void) {
  char sBuf[] = "72ABn";
  char sOut[16] = {0};
  int nLen = sizeof sOut;
  int nError = -1;
  InnerMessage *ptOut = NULL;
  InnerMessage *const ptMsg = cvtParseMessasge("01", sBuf, 5, &nError);
  CHECK(ptMsg != NULL && nError == 0 && gnMsgNum == 1 && isText(ptMsg->sMsgName, "Order"));
  CHECK(isField(ptMsg, "Id", "7") && isField(ptMsg, "note", "n"));
  CHECK(cvtGetLoopTime(ptMsg, "Items") == 2 && cvtSetLoopTime(ptMsg, "Items", 1) == 0);
  CHECK(isField(ptMsg, "Items.Code", "B"));
  ptOut = cvtGenerateMessasge(ptMsg, "01", sOut, &nLen, &nError);
  CHECK(ptOut != NULL && nError == 0 && nLen == 5 && memcmp(sOut, "72ABN", 5) == 0);
  CHECK(cvtFreeMessage(ptOut) == 0 && cvtFreeMessage(ptMsg) == 0 && gnMsgNum == 0);
  CHECK(cvtConvertMessage("Order", "02", sBuf, 5, "01", sOut, &nLen) == 0);
}

static void testNewMessage(void) {
  char sOut[16] = {0};
  int nLen = sizeof sOut;
  int nError = -1;
  InnerMessage *const ptMsg = cvtNewMessage("Order", "02", &nError);
  CHECK(cvtSetNameValue(ptMsg, "Id", "8", 1) == 0 && cvtSetNameValue(ptMsg, "Count", "1", 1) == 0);
  CHECK(cvtAddLoopTime(ptMsg, "Items") == 0 && cvtSetNameValue(ptMsg, "Items.Code", "X", 1) == 0);
  CHECK(cvtSetNameValue(ptMsg, "Note", "y", 1) == 0 && cvtSetNameValue(ptMsg, "None", "y", 1) == -11);
  CHECK(cvtGenMessage(ptMsg, sOut, &nLen) == 0 && nLen == 4 && memcmp(sOut, "81Xy", 4) == 0);
  CHECK(cvtFreeMessage(ptMsg) == 0);
}

/* The chains, the steps and the converter without the functions that usually call them. */
static void testPipelines(void) {
  char sBuf[] = "71Az";
  char sOut[16] = {0};
  int nLen = sizeof sOut;
  int nError = 0;
  InnerMessage *const ptMsg = cvtInitMessasge("Order", "02", sBuf, 4, &nError);
  InnerMessage *const ptDst = cvtNewMessage("Invoice", "01", &nError);
  Converter *const ptBill = cvtGetConvert(ptMsg, ptDst);
  CHECK(gptFormatInfo != NULL && isText(gptFormatInfo->psFormatId, "01"));
  CHECK(ptBill != NULL && ptBill == cvtGetCvt("bill") && isText(cvtGetDst(ptBill), "Invoice"));
  CHECK(cvtConvert(ptMsg->tValueListInfo.ptValueList, ptDst->tValueListInfo.ptValueList, ptBill,
                   ptDst->tValueListInfo.ptMemNode) == 0);
  CHECK(isField(ptDst, "Number", "7") && isField(ptDst, "Text", "Z"));
  cvtFreeValue(ptDst->tValueListInfo.ptValueList);
  CHECK(pubConvert(ptMsg, ptDst, NULL) == 0 && isField(ptDst, "Text", "Z"));
  ptDst->psBuf = sOut;
  ptDst->nLen = nLen;
  CHECK(pubGenerate(NULL, ptDst, NULL) == 0 && ptDst->nNowLen == 4 && memcmp(sOut, "71AZ", 4) == 0);
  ptDst->nNowLen = 0;
  CHECK(fucGenerate("02", NULL, ptDst) == 0 && ptDst->nNowLen == 4);
  cvtFreeMessage(ptDst);
  cvtFreeValue(ptMsg->tValueListInfo.ptValueList);
  ptMsg->nNowLen = 0;
  CHECK(pubNew(ptMsg, NULL, NULL) == 0 && cvtFreeValue(ptMsg->tValueListInfo.ptValueList) == 0);
  CHECK(pubParse(ptMsg, NULL, NULL) == 0 && ptMsg->nNowLen == 4);
  cvtFreeValue(ptMsg->tValueListInfo.ptValueList);
  ptMsg->nNowLen = 0;
  CHECK(fucParse("02", ptMsg, NULL) == 0 && isField(ptMsg, "Id", "7"));
  cvtFreeMessage(ptMsg);
}

/* What a step of the host's own may call. */
static void testBufferSteps(void) {
  char sBuf[] = "0007<n>Order</n>";
  char sOut[16] = {0};
  InnerMessage tSrc;
  InnerMessage tDst;
  memset(&tSrc, 0, sizeof tSrc);
  memset(&tDst, 0, sizeof tDst);
  tSrc.psBuf = sBuf;
  tSrc.nLen = (int)strlen(sBuf);
  tDst.psBuf = sOut;
  tDst.nLen = sizeof sOut;
  CHECK(GetIpcName(&tSrc, NULL, sttNewIpcNameArgs(2, 2, "M", NULL)) == 0 && isText(tSrc.sMsgName, "M07"));
  CHECK(GetXmlNode(&tSrc, NULL, sttNewXmlNameArgs("<n", NULL, "s")) == 0 && isText(tSrc.sMsgName, "Orders"));
  CHECK(SetMsgNameToBuf(&tSrc, &tDst, sttNewIpcNameArgs(0, 5, NULL, "|")) == 0 && tDst.nNowLen == 6);
  CHECK(SetBufToBuf(&tSrc, &tDst, sttNewMoveBufferArgs(2, 2, 6, 0, NULL, NULL)) == 0 && tDst.nNowLen == 8);
  CHECK(isText(sOut, "Order|07"));
  CHECK(SetToOffset(&tSrc, &tDst, sttNewSetOffsetArgs('d', 3, 0)) == 0 && tDst.nNowLen == 3);
}

static void testLoopArguments(void) {
  Message **const pptIdx = cvtGetMsg("Order")->pptMessageIdx;
  Arg *const ptWhole = sttNewArg(CVT_TYPE_MSG, NULL, NULL);
  Node tNode;
  memset(&tNode, 0, sizeof tNode);
  tNode.nIdx = 2;
  CHECK(GetLoopMessageIndex(ptWhole, pptIdx) == pptIdx);
  CHECK(GetLoopMessageIndex(sttNewArg(CVT_TYPE_SRC, &tNode, NULL), pptIdx) ==
        cvtLoopGetIdx(cvtIdxNode(pptIdx, 2)));
}

/* --- Bound records: made, written, read, and once more through the module's dispatchers ----------------- */

#define RECORD_READ(T, module, same, ...)                             \
  do {                                                                \
    T tMade;                                                          \
    T *const ptNew = sttNew##T(__VA_ARGS__);                          \
    void *const ptNode = xmlMadeNode(#T);                             \
    const T *ptRead = NULL;                                           \
    memset(&tMade, 0, sizeof tMade);                                  \
    CHECK(sttMake##T(&tMade, __VA_ARGS__) == &tMade);                 \
    CHECK(ptNew != NULL && memcmp(ptNew, &tMade, sizeof tMade) == 0); \
    CHECK(sttGenXml##T(ptNew, ptNode, #T) == ptNode);                 \
    ptRead = sttParseXml##T(ptNode, #T);                              \
    CHECK(ptRead != NULL && (same));                                  \
    CHECK(sttGenVoid##module(ptNew, ptNode, #T, #T) == ptNode);       \
    CHECK(sttParseVoid##module(ptNode, #T) != NULL);                  \
    CHECK(nGRet == 0);                                                \
    xmlNodeFree(ptNode);                                              \
  } while (0)

/* Strings are interned, so equal records are equal byte by byte. */
#define RECORD(T, module, ...) RECORD_READ(T, module, memcmp(ptRead, ptNew, sizeof(T)) == 0, __VA_ARGS__)

static void testDefinitionRecords(void) {
  RECORD(Value, cvt_message, "text", 4);
  RECORD(FormatAttr, cvt_message, "abi", NULL);
  RECORD(StructAttr, cvt_message, 7, NULL, NULL, NULL, NULL, NULL);
  RECORD(Message, cvt_message, "node", 3, NULL, NULL);
  RECORD(Msg, cvt_message, "name", "description", "type", NULL, NULL, NULL);
  RECORD(PathList, _cvt_message, "path", NULL);
  RECORD(CvtFmtArgs, _cvt_message, 12, 999, NULL);
  RECORD(LoopType, cvt_struct_loop, "Count", NULL);
}

static void testConverterRecords(void) {
  Arg *const ptArg = sttNewArg(CVT_TYPE_MSG, NULL, NULL);
  /* What the names of a loop's rules are looked up in. */
  gptCvtGlobalInfo->pptSrcIdx = cvtGetMsg("Order")->pptMessageIdx;
  gptCvtGlobalInfo->pptDstIdx = cvtGetMsg("Invoice")->pptMessageIdx;
  RECORD(Arg, cvt_convert, CVT_TYPE_MSG, NULL, NULL);
  RECORD(Converter, cvt_convert, "name", "Order", "Invoice", NULL);
  RECORD(Judge, cvt_convert, NULL, NULL, NULL);
  RECORD(Case, cvt_convert, NULL, NULL, NULL);
  RECORD(Copy, cvt_convert, NULL, NULL);
  RECORD_READ(Loop, cvt_convert, ptRead->ptSrcArgs->nType == CVT_TYPE_MSG, ptArg, ptArg, NULL);
  RECORD(LoopGetNum, cvt_convert, NULL);
  RECORD(Sql, cvt_convert, NULL, NULL);
  RECORD_READ(Function, cvt_convert, ptRead->fCvtFunc == upper, "abiUpper", NULL);
  RECORD(Node, cvt_convert, 2, "any");
  RECORD(CvtArgs, cvt_convert, "path");
  RECORD(MappingList, cvt_convert, NULL, NULL, NULL);
  RECORD(Mapping, cvt_convert, NULL, NULL);
}

static void testPipelineRecords(void) {
  RECORD(XmlNameArgs, cvt_identify, "node", "front", "back");
  RECORD(IpcNameArgs, cvt_identify, 1, 2, "front", "back");
  RECORD(MoveBufferArgs, cvt_identify, 1, 2, 3, 4, "front", "back");
  RECORD(SetOffsetArgs, cvt_identify, 'S', 1, 2);
  RECORD_READ(IdFunc, cvt_identify, ptRead->fIdFunction == nameOrder, "abiName", NULL, NULL);
  RECORD(FormatInfo, cvt_identify, "03", NULL, NULL, NULL);
  RECORD_READ(IdCvtInfo, cvt_identify, ptRead->ptConverter == cvtGetCvt("bill"), "", "bill", NULL);
  RECORD(IdMsgInfo, cvt_identify, "Order", NULL, NULL);
  RECORD(CvtIdArgs, cvt_identify, "path", "info");
}

static void testStartRecords(void) {
  RECORD(AllInfo, cvt_init, "base", 1, 2, NULL, NULL, NULL, NULL);
  RECORD(PlugInfo, cvt_plug, "path", NULL);
  /* Read, it opens its library and calls its initialiser: any function that takes an element and answers 0.
   */
  RECORD_READ(Plug, cvt_plug, ptRead->ptInfo != NULL && dlclose(ptRead->ptInfo) == 0, "any", "libcvt2.so",
              "cvtConvertMessage", NULL, NULL);
}

/* --- Plug-in manager, version --------------------------------------------------------------------------- */

static void testInterface(void) {
  static const cvtInterface f_tExpected = {
      cvtInit,         cvtEnd,          cvtInitMessasge, cvtGenerateMessasge, cvtParseMessasge,
      cvtGetNameValue, cvtSetNameValue, cvtNewMessage,   cvtGenMessage,       cvtFreeMessage,
      cvtSetLoopTime,  cvtGetLoopTime,  cvtAddLoopTime};
  T_PLUG_MGR_PLUG_VAR tPlugVar;
  memset(&tPlugVar, 0, sizeof tPlugVar);
  CHECK(cvtPlugLoad(&tPlugVar) == 0 && tPlugVar.pfnEventHdl != NULL);
  CHECK(tPlugVar.pfnEventHdl(0, 1, NULL, NULL) == 0);
  CHECK(memcmp(plugGetPlug("CVT_INTERFACE", "cvt2"), &f_tExpected, sizeof f_tExpected) == 0);
}

static void testVersion(void) {
  CHECK(strncmp(_cvt2_Get_Ver(), "^__VERSION_ID__^=", 17) == 0 && strlen(_cvt2_Get_Ver()) < 256);
}

int main(int argc, char **argv) {
  if (argc != 2 || mkdtemp(f_sWork) == NULL) return 2;
  f_sConfig = argv[1];
  testPool();
  testLists();
  testDictionary();
  testText();
  testXmlBuilding();
  testXmlReading();
  testXmlFiles();
  testXmlEncodings();
  testFields();
  testPointers();
  testFiles();
  testStart();
  testDefinitions();
  testValueLists();
  testLoops();
  testMessages();
  testNewMessage();
  testPipelines();
  testBufferSteps();
  testLoopArguments();
  testDefinitionRecords();
  testConverterRecords();
  testPipelineRecords();
  testStartRecords();
  testInterface();
  testVersion();
  CHECK(cvtEnd() == 0 && gptAllInfo == NULL);
  testSections();
  CHECK(cvtEnd() == 0);
  rmdir(f_sWork);
  printf("%d checks, %d failed\n", f_nChecks, f_nFailed);
  return f_nFailed == 0 ? 0 : 1;
}
