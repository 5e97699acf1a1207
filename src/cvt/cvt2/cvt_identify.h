/* cvt_identify.h: format pipelines, their standard steps, and the choice of a converter. */
#ifndef CVT_IDENTIFY_H
#define CVT_IDENTIFY_H

#include "cvt_convert.h"

CVT_C_BEGIN

/* The message handle. It lies at the start of its own pool node, so it is aligned. */
typedef struct InnerMessage {
  int nMsgId;          /* 0 */
  char sMsgName[61];   /* message type name, at most 60 characters */
  char sMsgFormat[21]; /* format id the handle was created with, at most 20 characters */
  char *psBuf;         /* input buffer (borrowed), or output buffer of the caller */
  int nNowLen;         /* bytes consumed or produced so far */
  int nLen;            /* length of the input, or capacity of the output */
  Msg *ptMsgInfo;      /* the definition, null until known */
  ValueListInfo tValueListInfo;
  void *ptInfo; /* free pointer for the pipeline steps */
} InnerMessage;

/* A pipeline step: first message, second message, the step's argument record. 0 = success.
 * A parse chain gets (message, null), a generate chain (source, destination). */
typedef int (*FncIdFunction)(InnerMessage *ptFirst, InnerMessage *ptSecond, void *ptArg);

typedef struct CVT_RECORD IdFunc {
  char *psFunctName;
  FncIdFunction fIdFunction;
  void *ptArg;
  struct IdFunc *ptNext;
} IdFunc;

/* One pipeline. */
typedef struct CVT_RECORD FormatInfo {
  char *psFormatId;
  IdFunc *ptParseFunc;
  IdFunc *ptGenFunc;
  struct FormatInfo *ptNext;
} FormatInfo;

/* The "Id" section. */
typedef struct CVT_RECORD CvtIdArgs {
  char *psIdPath;     /* directory of pipeline files */
  char *psIdInfoPath; /* directory of identification files */
} CvtIdArgs;

/* One (target format, converter) pair; the empty format id marks the default. */
typedef struct CVT_RECORD IdCvtInfo {
  char *psFormatId;
  char *psCvtName;
  Converter *ptConverter;
  struct IdCvtInfo *ptNext;
} IdCvtInfo;

/* The pairs of one source message. */
typedef struct CVT_RECORD IdMsgInfo {
  char *psMsgName;
  IdCvtInfo *ptIdCvtInfo;
  struct IdMsgInfo *ptNext;
} IdMsgInfo;

/* Arguments of the buffer steps. */
typedef struct CVT_RECORD XmlNameArgs {
  char *psNodeName;
  char *psFront;
  char *psBack;
} XmlNameArgs;

typedef struct CVT_RECORD IpcNameArgs {
  int nOffset;
  int nLen;
  char *psFront;
  char *psBack;
} IpcNameArgs;

typedef struct CVT_RECORD MoveBufferArgs {
  int nSrcOffset;
  int nSrcLen;
  int nDstOffset;
  int nDstAddFlag;
  char *psFront;
  char *psBack;
} MoveBufferArgs;

typedef struct CVT_RECORD SetOffsetArgs {
  char caMsgType;
  char caGap[3];
  int nOffset;
  int nSetType;
} SetOffsetArgs;

/* The loaded pipelines. A host may put entries in front of them, behind them or a list in their place; a format id
 * that it changes in a loaded entry is not seen. The same holds of the pairs that hang on a definition. */
extern FormatInfo *gptFormatInfo;

/* Initialiser and end of the "Id" section. cvtIdInit returns the CvtIdArgs record, or null (logged).
 * cvtIdEnd forgets pipelines and registered steps and returns 0. */
void *cvtIdInit(void *ptNode, char *psType);
int cvtIdEnd(void);

/* Registers a step for pipeline files read from now on; a built-in step of that name goes first. Returns 0
 * always. A null name or function empties the registry (logged). */
int cvtIdAddFunction(char *psFuncName, FncIdFunction fCvtFunction);

/* Run the parse or generate chain of a format. Return 0, or -1 (logged) on an unknown format or at the first
 * failing step. */
int fucParse(char *psFormatId, InnerMessage *ptInMsg, InnerMessage *ptVoid);
int fucGenerate(char *psFormatId, InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg);

/* Step: binds the message to the definition of its name and gives it an empty value list.
 *   ptArgs  null, or the IdFunc of a fall-back step for unknown names; it sets name and definition itself
 * Returns 0, -1 (logged). */
int pubNew(InnerMessage *ptInMsg, InnerMessage *ptVoid, void *ptArgs);

/* Step: pubNew, then the format parses the buffer. Returns 0, -1, or the format's own code (logged). */
int pubParse(InnerMessage *ptInMsg, InnerMessage *ptVoid, void *ptArgs);

/* Step: the format writes the second message into its buffer. Returns 0, -1, or the format's own code. */
int pubGenerate(InnerMessage *ptVoid, InnerMessage *ptInMsg, void *ptArgs);

/* Step: converts the first message into the second by the converter that cvtGetConvert chooses. Returns 0, -1
 * (logged). */
int pubConvert(InnerMessage *ptSrtMsg, InnerMessage *ptDstMsg, void *ptArgs);

/* Steps: buffer steps. Their argument is the record named behind it; texts that are absent there become empty. Offsets
 * and lengths are trusted. Return 0, or -1 (logged) without argument or without a message that they need. */

/* IpcNameArgs: names the first message by a slice of its buffer, which a zero byte ends early. */
int GetIpcName(InnerMessage *ptSrcMsg, InnerMessage *ptNULL, void *ptArgs);

/* XmlNameArgs: names the first message by what stands between the first ">" behind a text and the next "<". The buffer
 * must end with a zero byte. -1 (logged) also when there is no such place. */
int GetXmlNode(InnerMessage *ptSrcMsg, InnerMessage *ptNULL, void *ptArgs);

/* IpcNameArgs: writes a slice of the first message's name into the second's buffer. The position moves by the whole
 * text, also where the capacity cut it. */
int SetMsgNameToBuf(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs);

/* MoveBufferArgs: copies a slice of the first message's buffer into the second's. */
int SetBufToBuf(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs);

/* SetOffsetArgs: moves the position of one of the messages. */
int SetToOffset(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs);

/* The converter for the source's definition and the destination's format id: the first pair that names the
 * format, else the last pair with an empty format id; null (logged). */
Converter *cvtGetConvert(InnerMessage *ptInSrcMsg, InnerMessage *ptInDstMsg);

STT_BOUND(XmlNameArgs, char *psNodeName, char *psFront, char *psBack);
STT_BOUND(IpcNameArgs, int nOffset, int nLen, char *psFront, char *psBack);
STT_BOUND(MoveBufferArgs, int nSrcOffset, int nSrcLen, int nDstOffset, int nDstAddFlag, char *psFront,
          char *psBack);
STT_BOUND(SetOffsetArgs, char caMsgType, int nOffset, int nSetType);
STT_BOUND(IdFunc, char *psFunctName, void *ptArg, IdFunc *ptNext);
STT_BOUND(FormatInfo, char *psFormatId, IdFunc *ptParseFunc, IdFunc *ptGenFunc, FormatInfo *ptNext);
STT_BOUND(IdCvtInfo, char *psFormatId, char *psCvtName, IdCvtInfo *ptNext);
STT_BOUND(IdMsgInfo, char *psMsgName, IdCvtInfo *ptIdCvtInfo, IdMsgInfo *ptNext);
STT_BOUND(CvtIdArgs, char *psIdPath, char *psIdInfoPath);
STT_BOUND_MODULE(cvt_identify);

CVT_C_END

#endif
