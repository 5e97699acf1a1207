/* stt.h: binding of plain records to XML elements, and the XML access layer below it.
 *
 * A record of type T is one element T. String, Int, Long, Char, Float and Double fields are attributes named
 * after the field. A Struct field is a child element named after its record type, with the attribute "__ID"
 * equal to the field name. A Next field (list link) is the element's very next sibling of the same name, with
 * "__ID" equal to the field name. A Void field is a child of any registered type with "__ID" equal to the
 * field name. Anything absent reads as null or 0.
 *
 * Failures: field readers and writers return no status; a failing one sets nGRet to -1. A record's functions
 * set nGRet to 0 before each field and test it afterwards. One thread at a time.
 */
#ifndef STT_H
#define STT_H

#include "cvt_def.h"

CVT_C_BEGIN

extern int nGRet; /* -1 after a failed field operation */

/* Builds the records of a file: file name, type name, first child of the root element (may be null). The two
 * strings are valid during the call only. */
typedef void *(*FncSttParse)(char *psFileName, char *psType, void *ptNode);

/* Builds the record of type psStructType from an element; null for a type it does not know. */
typedef void *(*sttFncParseVoid)(void *ptXmlNode, char *psStructType);

/* Writes a record of type psStructType into the element ptNode; non-null when it knew the type. */
typedef void *(*sttFncGenVoid)(void *ptSruct, void *ptNode, char *psNodeName, char *psStructType);

/* One dispatcher pair. */
typedef struct FuncList {
  sttFncParseVoid fpParse;
  sttFncGenVoid fpGen;
  struct FuncList *ptNext;
} FuncList;

/* One registered file type; newest first. */
typedef struct SttInfo {
  char *psTypeName;           /* root element name of files of this type; own heap copy */
  FncSttParse fParseFunction; /* builds the file's records */
  FuncList *ptVoidFunction;   /* dispatchers used while such a file is read; newest first, duplicates kept */
  struct SttInfo *ptNext;
} SttInfo;

/* The type of one record, for writing Void fields; newest first. */
typedef struct TypeList {
  void *p;
  char *psType; /* borrowed */
  struct TypeList *ptNext;
} TypeList;

extern SttInfo *gptSttInfo;
extern TypeList *gptTypeList;

/* --- Registry and dispatch ------------------------------------------------------------------------------- */

/* Registers a file type. A type that is registered already keeps its first function.
 * Returns 0, or -1 on a null name (logged). */
int sttAddSttInfo(char *psType, FncSttParse fParseFunction);

/* Puts a dispatcher pair in front of a registered type's chain. Returns 0; -1 (logged) on a null argument or
 * an unknown type. */
int sttAddVoidFunctionToSttInfo(char *psType, sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid);

/* Adds a pair at the end of the current global chain unless its parse function stands there. Returns 0. */
int sttAddFuncVoid(sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid);

/* Releases and empties the current global chain. Returns 0. */
int sttResetFunctVoid(void);

/* Run the current chain: the first non-null result wins, then the base type "String" is tried. Null with
 * "Type[%s] Not Define" (logged; nGRet is left alone) when nobody knows the type. */
void *sttParseVoid(void *ptXmlNode, char *psStructType);
void *sttGenVoid(void *ptSruct, void *ptNode, char *psNodeName, char *psStructType);

/* Remembers that the record at pPoint has the type psStructType (kept by pointer). Returns 0, -1 when an
 * argument is null. */
int sttSetVoidType(void *pPoint, char *psStructType);

/* The newest type remembered for that address, or null. */
char *sttGetVoidType(void *pPoint);

/* Reads a file whose root element names its registered type; returns what the type's function built, or null
 * (logged). */
void *sttParseBySttInfo(char *psFile);

/* Releases the registry and the global chain; the type list stays. Returns 0. */
int sttEnd(void);

/* --- Files ----------------------------------------------------------------------------------------------- */

/* Reads a file whose root element is psRootTag; its first child is the main record.
 *   pfParse  a parse function, void *(void *element, char *psType)
 * Returns the record, or null (logged) on failure or when nGRet is -1 after pfParse; nGRet is not cleared
 * before the call. */
void *sttParseXmlFile(char *psFileName, char *psRootTag, char *psType, void *pfParse);

/* Writes a record to a file under the root element psTagName, indented, as UTF-8.
 *   pfGen  a write function, void *(void *record, void *element, char *psTagName, char *psType)
 * Returns 0, or -1 (logged). */
int sttGenXmlFile(char *psFileName, void *ptStruct, char *psTagName, char *psType, void *pfGen);

/* --- Field readers and writers: (element, field name) ---------------------------------------------------- */

char sttParseXmlChar(void *ptXmlNode, char *psName);
void sttGenerateXmlChar(void *ptXmlNode, char caChar, char *psName);
char *sttParseXmlString(void *ptXmlNode, char *psName); /* release with sttFreeXmlString */
void sttGenerateXmlString(void *ptXmlNode, char *psString, char *psName);
void sttFreeXmlString(char *psString);
int sttParseXmlInt(void *ptXmlNode, char *psName);
void sttGenerateXmlInt(void *ptXmlNode, int nInt, char *psName);
long sttParseXmlLong(void *ptXmlNode, char *psName);
void sttGenerateXmlLong(void *ptXmlNode, long lLong, char *psName);
float sttParseXmlFloat(void *ptXmlNode, char *psName); /* 0.0 when present, see stt.cpp */
void sttGenerateXmlFloat(void *ptXmlNode, float fFloat, char *psName);
float sttParseXmlDouble(void *ptXmlNode, char *psName); /* 0.0 when present, see stt.cpp */
void sttGenerateXmlDouble(void *ptXmlNode, double dDouble, char *psName);

/*   fFunc of a reader  void *(void *element, char *psType)
 *   fFunc of a writer  void *(void *record, void *element, char *psName, char *psType)
 * Null records are not written. A null element, name or type reads as null, and is a failure for a writer; a null
 * fFunc that is needed is one for both (logged). */
void *sttParseXmlStruct(void *ptXmlNode, char *psType, char *psName, void *fFunc);
void sttGenerateXmlStruct(void *ptXmlNode, void *ptStruct, char *psName, char *psTypeName, void *fFunc);
void *sttParseXmlNext(void *ptXmlNode, char *psType, char *psName, void *fFunc);
void sttGenerateXmlNext(void *ptXmlNode, void *ptStruct, char *psName, char *psTypeName, void *fFunc);
void *sttParseXmlVoid(void *ptXmlNode, char *psName);
void sttGenerateXmlVoid(void *ptXmlNode, void *ptVoid, char *psName);

/* --- Bound records ---------------------------------------------------------------------------------------
 * Declares the four functions of the bound record type T; the further arguments are its field values, in
 * declared order.
 *   sttNewT       a new record of the global pool node, filled; null when sttMakeT fails
 *   sttMakeT      fills p (strings are interned); null when p is null or a derived field fails
 *   sttGenXmlT    writes the fields into the element; returns it, or null on a null argument or a failure
 *   sttParseXmlT  reads a record; null for a null element (not logged) or, with nGRet -1, on a failure */
#define STT_BOUND(T, ...)                                               \
  struct T *sttNew##T(__VA_ARGS__);                                     \
  struct T *sttMake##T(struct T *p, __VA_ARGS__);                       \
  void *sttGenXml##T(struct T *p, void *ptXmlNode, char *psStructType); \
  struct T *sttParseXml##T(void *ptXmlNode, char *psStructType)

/* Declares a module's dispatcher pair: the record of the named type, null (not logged) for any other name. */
#define STT_BOUND_MODULE(module)                                   \
  void *sttParseVoid##module(void *ptXmlNode, char *psStructType); \
  void *sttGenVoid##module(void *ptSruct, void *ptNode, char *psNodeName, char *psStructType)

/* --- XML access layer --------------------------------------------------------------------------------------
 * Documents, nodes, namespaces and schemas are libxml2's, passed as void *. Nothing here logs; null arguments
 * are not checked. Navigation returns nodes of every kind. */

void *xmlInit(void);                     /* new document 1.0, encoding UTF-8; free with xmlDocFree */
void *xmlInitEncoding(char *psEncoding); /* new document 1.0 of that encoding */
void *xmlMadeNode(char *psNodeName);     /* new unattached element; free with xmlNodeFree or attach it */
void *xmlMadeNsNode(void *ptXmlNs, char *psNodeName);

/* Declares the default namespace psNameSpace on the node and puts the node into it; null when refused. */
void *xmlMadeNameSpace(void *ptXmlNode, char *psNameSpace);

/* Declares a prefixed namespace on the node; the node is put into it only when nFlag is exactly 1. */
void *xmlMadeNameSpaceShortCut(void *ptXmlNode, char *psShortCut, char *psNameSpace, int nFlag);
void xmlNodeAddNameSapce(void *ptNode, void *ptNameSpace);
int xmlPutRootNode(void *ptXmlDoc, void *ptXmlNode);         /* 0 */
int xmlPutChileNode(void *ptXmlFatherNode, void *ptXmlNode); /* appends as last child; 0 */

/* Append a child element whose text is the first nLen bytes of psVaule. The byte psVaule[nLen] is written
 * during the call and put back: it must be writable. Return the element; null for a negative length. */
void *xmlPutNsNodeValue(void *ptXmlFatherNode, void *ptXmlNs, char *psName, char *psVaule, int nLen);
void *xmlPutNodeValue(void *ptXmlFatherNode, char *psName, char *psVaule, int nLen);

/* Set an attribute to the first nAttrLen bytes of the value, or to all of it when it is shorter. The value is not
 * written to. Return the attribute; null for a negative length and for a node that takes no attribute. */
void *xmlPutNodeAttr(void *ptXmlNode, char *psAttrName, char *psAttrVaule, int nAttrLen);
void *xmlPutNsNodeAttr(void *ptXmlNode, void *ptXmlNs, char *psAttrName, char *psAttrVaule, int nAttrLen);

/* Serialises the document into psBuf.
 *   pnLen  in: capacity in bytes; out: length
 * Returns 0, or -1 with *pnLen unchanged when the buffer is too small. No terminator is written. */
int xmlGenerate(void *ptXmlDoc, char *psBuf, int *pnLen);
int xmlFileGenerate(char *psFileName, void *ptXmlDoc); /* indented; bytes written or a negative value */
int xmlDocFree(void *ptXmlDoc);                        /* 0 */
int xmlNodeFree(void *ptXmlNode);                      /* frees the subtree without unlinking it; 0 */
void *xmlParse(char *psBuf, int nLen);                 /* a document or null */
void *xmlParse2(char *psBuf, int nLen);                /* the same without blank nodes */
void *xmlFileParse(char *psFileName);                  /* the same from a file */
void *xmlGetHeadNode(void *ptXmlDoc);
void *xmlGetChileNode(void *ptXmlNode);
void *xmlGetFatherNode(void *ptXmlNode);
void *xmlGetLastChildNode(void *ptXmlNode);
void *xmlGetPrevNode(void *ptXmlNode);
void *xmlGetNextNode(void *ptXmlNode);
char *xmlGetNodeVaule(void *ptXmlNode); /* text of the first child unless that is an element; xmlFreeString */
char *xmlGetNodeName(void *ptXmlNode);  /* borrowed */
char *xmlGetNodeAttr(void *ptXmlNode, char *psAttrName); /* null if absent; xmlFreeString */
void *xmlGetSchemaObj(char *psUrl);                      /* null on an empty URL or a broken schema */
int xmlCheckSchema(void *ptSchema, void *ptXmlDoc);      /* 0 valid, positive: error code, -1 internal */
void xmlFreeString(char *psString);
void xmlEncodeAlias(char *psEncoding, char *psAlias); /* process-wide */

CVT_C_END

#endif
