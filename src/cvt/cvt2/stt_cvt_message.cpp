// stt_cvt_message.cpp: the definition tree: its bound records, the creation of nodes, and the node index.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "cvt_definition.h"
#include "cvt_heap.h"
#include "cvt_log.h"
#include "cvt_message.h"
#include "stt_bind.h"

namespace {

// --- Traversal: a node, its child subtree, its other subtree, its next sibling -----------------------------

using IterHead = cvt::Vector<Message *>;  // most recently pushed: the last

void IterMessagePush(IterHead &tIter, Message *ptMessage) {
  tIter.push_back(ptMessage);
}

Message *IterMessagePop(IterHead &tIter) {
  if (tIter.empty()) return nullptr;
  Message *const ptMessage = tIter.back();
  tIter.pop_back();
  return ptMessage;
}

IterHead GetMsgIter(Message *ptMessage) {
  return {ptMessage};
}

// The child is pushed last, so its subtree comes first. ptLoopNode is never followed.
Message *GetNextMessage(IterHead &tIter) {
  Message *const ptMessage = IterMessagePop(tIter);
  if (ptMessage == nullptr || ptMessage->ptStructAttr == nullptr) return ptMessage;
  const StructAttr *const ptAttr = ptMessage->ptStructAttr;
  if (ptAttr->ptNextNode != nullptr) IterMessagePush(tIter, ptAttr->ptNextNode);
  if (ptAttr->ptOtherNode != nullptr) IterMessagePush(tIter, ptAttr->ptOtherNode);
  if (ptAttr->ptChildNode != nullptr) IterMessagePush(tIter, ptAttr->ptChildNode);
  return ptMessage;
}

// References that are used twice double a definition; a few dozen of them one above the other would fill any
// memory.
constexpr int kMostNodes = 1 << 18;

int GetMessageNum(Message *ptMessage) {
  CVT_NOT_NULL(ptMessage, -1);
  int nNum = 0;
  for (IterHead tIter = GetMsgIter(ptMessage); GetNextMessage(tIter) != nullptr; ++nNum) {
    if (nNum < kMostNodes) continue;
    CVT_ERR("Message[%s] and what follows has more than [%d] nodes: refer to fewer definitions",
            ptMessage->psNodeName, kMostNodes);
    return -1;
  }
  if (nNum > gnMaxValueNum) gnMaxValueNum = nNum;
  return nNum;
}

// --- Numbering ---------------------------------------------------------------------------------------------

// A node keeps its first number: one shared with another definition, or numbered by its loop already. Groups
// get 0 or, over a child that is numbered already, position + 1; plug-ins rely on both.
void SetMessageIndex(Message *ptMessage, int nIndex) {
  if (ptMessage->nIndex != -1) return;
  const StructAttr *const ptAttr = ptMessage->ptStructAttr;
  if (ptAttr->ptChildNode == nullptr || ptAttr->nType == CVT_STRUCT_LOOP) {
    ptMessage->nIndex = nIndex;
  } else {
    ptMessage->nIndex = ptAttr->ptChildNode->nIndex == -1 ? 0 : nIndex + 1;
  }
}

void putNode(Message **pptIdx, int nPos, Message *ptNode) {
  __builtin_memcpy(reinterpret_cast<char *>(pptIdx) + static_cast<size_t>(nPos) * sizeof ptNode, &ptNode,
                   sizeof ptNode);
}

struct Numbering;
using LoopsMet = cvt::Met<Numbering, Message>;

bool needsLoopIndex(const Message *ptMessage) {
  return ptMessage->ptStructAttr->nType == CVT_STRUCT_LOOP && LoopsMet::first(ptMessage);
}

bool hasStruct(const Message *ptMessage, int nPos) {
  if (ptMessage->ptStructAttr != nullptr) return true;
  CVT_ERR("[ptMessage->ptStructAttr] is NULL");
  CVT_ERR(
      "Create Message index err: Message[%s] index[%d] has no StructAttr: give it a <StructAttr "
      "__ID=\"ptStructAttr\"/>",
      ptMessage->psNodeName, nPos);
  return false;
}

// --- Positions by name -------------------------------------------------------------------------------------

// Names are equal without regard to the case of ASCII letters, whatever the process's locale.
char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

cvt::HashMap<Message **, cvt::NodeNames> f_names;  // of the indexes of loaded definitions

int walkForName(Message **pptIdx, const char *psName) {
  for (int i = 0; Message *const ptNode = cvtIdxNode(pptIdx, i); ++i) {
    if (ptNode->psNodeName != nullptr && cvt::NameEqual{}(ptNode->psNodeName, psName)) return i;
  }
  return -1;
}

}  // namespace

size_t cvt::NameHash::operator()(std::string_view s) const {
  size_t nHash = 14695981039346656037U;  // FNV-1a
  for (const char c : s) nHash = (nHash ^ static_cast<unsigned char>(lower(c))) * 1099511628211U;
  return nHash;
}

bool cvt::NameEqual::operator()(std::string_view a, std::string_view b) const {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

cvt::NodeNames::NodeNames(Message **pptIdx) {
  for (int i = 0; Message *const ptNode = cvtIdxNode(pptIdx, i); ++i) {
    const char *const psName = ptNode->psNodeName;
    if (psName != nullptr) m_positions.emplace(psName, i);  // the first of a name wins
  }
}

int cvt::NodeNames::find(Message **pptIdx, const char *psName) const {
  const auto it = m_positions.find(psName);
  if (it == m_positions.end()) return -1;
  const Message *const ptNode = cvtIdxNode(pptIdx, it->second);
  return ptNode != nullptr && ptNode->psNodeName == it->first.data() ? it->second : -1;
}

void cvt::rememberNames(Message **pptIdx) {
  if (pptIdx == nullptr) return;
  f_names.insert_or_assign(pptIdx, NodeNames(pptIdx));
  // Loops in loops stand in this index, too.
  for (int i = 0; Message *const ptNode = cvtIdxNode(pptIdx, i); ++i) {
    const StructAttr *const ptAttr = ptNode->ptStructAttr;
    if (ptAttr == nullptr || ptAttr->nType != CVT_STRUCT_LOOP || ptAttr->pInfo == nullptr) continue;
    Message **const pptBody = static_cast<LoopType *>(ptAttr->pInfo)->pptMessageIdx;
    if (pptBody != nullptr && !f_names.contains(pptBody)) f_names.emplace(pptBody, NodeNames(pptBody));
  }
}

void cvt::forgetNames() {
  f_names.clear();
}

Message **cvtCreateMessageIdx(Message *ptMessage, int *pnNum) {
  CVT_NOT_NULL(ptMessage, nullptr);
  CVT_NOT_NULL(pnNum, nullptr);
  const int nNum = GetMessageNum(ptMessage);
  if (nNum < 0) return nullptr;
  *pnNum = nNum;
  auto **const pptIdx =
      static_cast<Message **>(cvtMemMalloc((nNum + 1) * static_cast<int>(sizeof(Message *))));
  int i = 0;
  const LoopsMet met;
  IterHead tIter = GetMsgIter(ptMessage);
  while ((ptMessage = GetNextMessage(tIter)) != nullptr) {
    if (i > nNum) {
      CVT_ERR("Create Message index err: Message[%s] index[%d] biger then max[%d]!!", ptMessage->psNodeName,
              i, nNum);
      return nullptr;
    }
    if (!hasStruct(ptMessage, i)) return nullptr;
    SetMessageIndex(ptMessage, i);
    putNode(pptIdx, i++, ptMessage);
    if (needsLoopIndex(ptMessage) && cvtLoopCreateIndex(ptMessage) != 0) {
      CVT_ERR("Create Message index err: Message[%s] create Loop index err!!", ptMessage->psNodeName);
      return nullptr;
    }
  }
  return pptIdx;
}

int cvtGetNodeIdx(Message **pIdx, char *psName) {
  CVT_NOT_NULL(pIdx, -1);
  CVT_NOT_NULL(psName, -1);
  const auto known = f_names.find(pIdx);
  const int nPos = known == f_names.end() ? -1 : known->second.find(pIdx, psName);
  return nPos >= 0 ? nPos : walkForName(pIdx, psName);
}

int cvtGenMessageInfo(Msg *ptMsg) {
  CVT_NOT_NULL(ptMsg, -1);
  int nFieldNum = ptMsg->nFieldNum;
  ptMsg->pptMessageIdx = cvtCreateMessageIdx(ptMsg->ptHead, &nFieldNum);
  ptMsg->nFieldNum = nFieldNum;
  if (ptMsg->pptMessageIdx == nullptr) {
    CVT_ERR("Create Message[%s] Idx err!!", ptMsg->psMsgName);
    return -1;
  }
  return 0;
}

// --- Nodes and references ----------------------------------------------------------------------------------

namespace {

// Loads the definition from the directory being read. Null when that fails.
Msg *loadReferenced(const char *psFunction, char *psName) {
  char *const psCurrentPath = gptFmtGlobalInfo == nullptr ? nullptr : gptFmtGlobalInfo->psCurrentPath;
  if (psCurrentPath == nullptr) {
    CVT_ERR_OF(psFunction, "CurrentPath is NULL!!");
    return nullptr;
  }
  char sFile[2048];
  snprintf(sFile, sizeof sFile, "%s.xml", psName);
  if (cvtIniParseFileXml(gptFmtGlobalInfo->psBasePath, psCurrentPath, sFile, cvt::FmtMsgInit) != 0) {
    CVT_ERR_OF(psFunction, "Message Parse [%s] From[%s/%s] err!!", psName, psCurrentPath, sFile);
    return nullptr;
  }
  Msg *const ptMsg = cvtGetMsg(psName);
  if (ptMsg == nullptr) CVT_ERR_OF(psFunction, "Message Get [%s][%s/%s] err!!", psName, psCurrentPath, sFile);
  return ptMsg;
}

}  // namespace

Message *cvtNewMessageByType(char *psNodeName, int nType, FormatAttr *ptFormAttr, StructAttr *ptStructAttr) {
  if (nType >= 0) return sttNewMessage(psNodeName, nType, ptFormAttr, ptStructAttr);
  if (psNodeName == nullptr) {
    CVT_ERR("[psNodeName] is NULL");
    nGRet = -1;
    return nullptr;
  }
  Msg *ptMsg = cvtGetMsg(psNodeName);
  if (ptMsg == nullptr) ptMsg = loadReferenced(__func__, psNodeName);
  if (ptMsg == nullptr) {
    nGRet = -1;
    return nullptr;
  }
  // The nodes are shared. What the reference itself carries, its next sibling too, is dropped: the tree goes
  // on with the referenced head's own siblings.
  return ptMsg->ptHead;
}

void *cvtSttInitMessage(char *psFileName, char *psType, void *ptRootNode) {
  Msg *const ptMsg = sttParseXmlMsg(ptRootNode, const_cast<char *>("Msg"));
  if (ptMsg == nullptr) {
    CVT_ERR("Init Xml struct : Load file[%s] err!!", psFileName);
    return nullptr;
  }
  if (cvtGenMessageInfo(ptMsg) != 0) {
    CVT_ERR("Init Xml struct[%s] : cvtGenMessageInfo err!!", ptMsg->psMsgName);
    return nullptr;
  }
  if (cvt::initFormat(psType, ptMsg) != 0) {
    CVT_ERR("Format [%s] Init Err!!", psType);
    return nullptr;
  }
  cvt::rememberNames(ptMsg->pptMessageIdx);
  return ptMsg;
}

// --- Bound records -----------------------------------------------------------------------------------------

namespace {

// A constant. A length below that of the text cuts it. One above it stays, too: zero bytes follow the text then, not
// whatever lies behind it.
Value *newConstant(char *psValue, int nLen) {
  Value *const pt = sttNewValue(psValue, nLen);
  const size_t nBytes = psValue == nullptr ? 0 : std::strlen(psValue);
  if (pt == nullptr || psValue == nullptr || nLen <= 0 || static_cast<size_t>(nLen) <= nBytes) return pt;
  CVT_ERR("Value psValue[%s] has [%zu] bytes, not [%d]: write nLen=\"%zu\"", psValue, nBytes, nLen, nBytes);
  auto *const psRoom = static_cast<char *>(cvtMemMalloc(nLen));
  std::copy_n(psValue, nBytes, psRoom);
  pt->psValue = psRoom;
  return pt;
}

// What the other kinds keep in pInfo is a record of their format.
bool repeats(int nType) {
  return nType == CVT_STRUCT_LOOP || nType == CVT_STRUCT_COUNTED;
}

}  // namespace

// clang-format off
#define STT_TABLE_Value(F) \
  F(STRING, psValue)       \
  F(INT,    nLen)
STT_BIND_WITH(Value, newConstant)

#define STT_TABLE_FormatAttr(F) \
  F(STRING, psFormatName)       \
  F(VOID,   pInfo)
STT_BIND(FormatAttr)

#define STT_TABLE_StructAttr(F)      \
  F(INT,    nType)                   \
  F(VOID_OF, pInfo, repeats(nType) ? "LoopType" : nullptr) \
  F(STRUCT, ptOtherNode, Message)    \
  F(STRUCT, ptChildNode, Message)    \
  F(STRUCT, ptLoopNode,  Message)    \
  F(NEXT,   ptNextNode,  Message)
STT_BIND(StructAttr)

// A node is created through cvtNewMessageByType: a negative nType turns the element into a reference.
#define STT_TABLE_Message(F)         \
  F(STRING,  psNodeName)             \
  F(INT,     nType)                  \
  F(STRUCT,  ptFormAttr,   FormatAttr) \
  F(LAST,    ptStructAttr, StructAttr) \
  F(DERIVED, nIndex, -1)
STT_BIND_WITH(Message, cvtNewMessageByType)

#define STT_TABLE_Msg(F)          \
  F(STRING, psMsgName)            \
  F(STRING, psMsgDesc)            \
  F(STRING, psType)               \
  F(STRUCT, ptHead, Message)      \
  F(VOID,   pInfo)                \
  F(VOID_FOR, pIdInfo, "IdCvtInfo") \
  F(DERIVED, nFieldNum, -1)       \
  F(DERIVED, nValueNum, -1)       \
  F(DERIVED_NULL, fGen)           \
  F(DERIVED_NULL, fParse)         \
  F(DERIVED_NULL, fGetValue)      \
  F(DERIVED_NULL, fSetValue)      \
  F(DERIVED_NULL, pptMessageIdx)
STT_BIND(Msg)

STT_BIND_MODULE(cvt_message, STT_TYPE(Value), STT_TYPE(FormatAttr), STT_TYPE(StructAttr), STT_TYPE(Message),
                STT_TYPE(Msg))
// clang-format on
