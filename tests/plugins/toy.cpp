// toy.cpp: a format for tests, small enough to see through.
//
//   message = fields                       the message ends with its last field; what follows is left alone
//   fields  = [ item *( "," item ) ]
//   item    = value | "[" *( fields ";" ) "]"        a field, or a loop with one "fields ;" a repetition
//   value   = any bytes but  , ; [ ] and line feed
//
// Order(Id, Group(Name, City), Items(Code, Qty)) is written  7,ACME,Rome,[A,1;B,2;]
//
// Definition files have the root element "toy". The step "toyName" names a message after its first value.
#include <cstring>
#include <string>
#include <string_view>

#include "cvt_identify.h"
#include "velutil.h"

namespace {

constexpr std::string_view kDelimiters = ",;[]\n";

// A repetition being read or written, for the field path in errors: innermost first.
struct Place {
  const Place *outer;
  Message *loop;
  int repetition;
};

std::string pathOf(const Place *place) {
  if (place == nullptr) return "";
  return pathOf(place->outer) + place->loop->psNodeName + "[" + std::to_string(place->repetition) + "].";
}

// What the reader and the writer share: the buffer, the position in it, and errors that say where.
struct Cursor {
  Msg *msg;
  char *buf;
  int now;
  int len;

  bool fail(const Place *place, Message *node, const std::string &sExpected,
            const std::string &sFound) const {
    logInfo(1, "$toy", "toy.cpp", __LINE__, "fail", "Msg[%s] Field[%s%s] Offset[%d]: expected %s, found %s.",
            msg->psMsgName, pathOf(place).c_str(), node->psNodeName, now, sExpected.c_str(), sFound.c_str());
    return false;
  }
};

bool isLoop(Message *node) {
  return node->ptStructAttr->nType == CVT_STRUCT_LOOP;
}

// Calls item(position, node, loop?) for each node of an index that stands in the bytes, until one fails.
// Groups do not stand there; a loop's body does, but is left to the loop, which has an index of its own for
// it.
//   owner  the loop whose body this is: a loop without children is its own body, a plain value
template <class Item>
bool eachItem(Message **pptIdx, Message *owner, Item item) {
  int nPos = 0;
  for (Message *node = cvtIdxNode(pptIdx, 0); node != nullptr; node = cvtIdxNode(pptIdx, ++nPos)) {
    const bool bChildren = node->ptStructAttr->ptChildNode != nullptr;
    const bool bLoop = isLoop(node) && node != owner;
    if (bChildren && !bLoop) continue;
    if (!item(nPos, node, bLoop)) return false;
    if (bChildren) nPos += cvtLoopGetFieldNum(node);
  }
  return true;
}

class Reader : Cursor {
 public:
  Reader(Msg *ptMsg, char *psBuf, int nNow, int nLen, MemPort ptNode)
      : Cursor{ptMsg, psBuf, nNow, nLen}, m_pool(ptNode) {}

  bool fields(const Place *place, Message **pptIdx, Message *owner, ValueList *list) {
    bool bFirst = true;
    return eachItem(pptIdx, owner, [&](int nPos, Message *node, bool bLoop) {
      if (!bFirst && !take(place, node, ',')) return false;
      bFirst = false;
      return bLoop ? loop(place, nPos, node, list) : value(nPos, list);
    });
  }

  int position() const { return now; }

 private:
  bool at(char c) const { return now < len && buf[now] == c; }

  bool take(const Place *place, Message *node, char c) {
    if (!at(c)) {
      return fail(place, node, std::string("'") + c + "'",
                  now < len ? std::string("'") + buf[now] + "'" : "the end of the buffer");
    }
    ++now;
    return true;
  }

  bool loop(const Place *outer, int nPos, Message *node, ValueList *list) {
    if (!take(outer, node, '[')) return false;
    for (Place place{outer, node, 0}; !at(']'); ++place.repetition) {
      ValueList *body = cvtNewLoopValueList(list, nPos, cvtLoopGetFieldNum(node));
      if (body == nullptr || !fields(&place, cvtLoopGetIdx(node), node, body)) return false;
      if (!take(&place, node, ';')) return false;
    }
    ++now;
    return true;
  }

  bool value(int nPos, ValueList *list) {
    const std::string_view rest(buf + now, static_cast<size_t>(len - now));
    const int nSize = static_cast<int>(rest.substr(0, rest.find_first_of(kDelimiters)).size());
    Value *slot = cvtGetListValue(list, nPos);
    if (slot == nullptr || cvtDumpValue(slot, buf + now, nSize, m_pool) != 0) return false;
    now += nSize;
    return true;
  }

  MemPort m_pool;
};

class Writer : Cursor {
 public:
  Writer(Msg *ptMsg, char *psBuf, int nNow, int nLen) : Cursor{ptMsg, psBuf, nNow, nLen} {}

  bool fields(const Place *place, Message **pptIdx, Message *owner, ValueList *list) {
    bool bFirst = true;
    return eachItem(pptIdx, owner, [&](int nPos, Message *node, bool bLoop) {
      if (!bFirst && !put(place, node, ",")) return false;
      bFirst = false;
      return bLoop ? loop(place, nPos, node, list) : value(place, nPos, node, list);
    });
  }

  int position() const { return now; }

 private:
  bool put(const Place *place, Message *node, std::string_view bytes) {
    if (bytes.size() > static_cast<size_t>(len - now)) {
      return fail(place, node, "room for " + std::to_string(bytes.size()) + " bytes",
                  std::to_string(len - now) + " bytes left in the buffer");
    }
    if (!bytes.empty()) std::memcpy(buf + now, bytes.data(), bytes.size());
    now += static_cast<int>(bytes.size());
    return true;
  }

  bool loop(const Place *outer, int nPos, Message *node, ValueList *list) {
    const int nCount = cvtGetLoopValueListNum(list, nPos);
    if (nCount < 0 || !put(outer, node, "[")) return false;
    for (Place place{outer, node, 0}; place.repetition < nCount; ++place.repetition) {
      ValueList *body = cvtGetLoopValueList(list, nPos, place.repetition);
      if (body == nullptr || !fields(&place, cvtLoopGetIdx(node), node, body)) return false;
      if (!put(&place, node, ";")) return false;
    }
    return put(outer, node, "]");
  }

  bool value(const Place *place, int nPos, Message *node, ValueList *list) {
    const Value *slot = cvtGetListValue(list, nPos);
    if (slot == nullptr) return false;
    if (slot->nLen <= 0) return true;
    const std::string_view bytes(slot->psValue, static_cast<size_t>(slot->nLen));
    if (bytes.find_first_of(kDelimiters) == bytes.npos) return put(place, node, bytes);
    return fail(place, node, "a value without , ; [ ] and line feed",
                std::string(1, '"').append(bytes).append(1, '"'));
  }
};

int parse(void *, ValueListInfo *ptInfo, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  Reader reader(ptMsg, psBuf, *pnNowLen, nLen, ptInfo->ptMemNode);
  if (!reader.fields(nullptr, ptMsg->pptMessageIdx, nullptr, ptInfo->ptValueList)) return -1;
  *pnNowLen = reader.position();
  return 0;
}

int generate(void *, ValueListInfo *ptInfo, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  Writer writer(ptMsg, psBuf, *pnNowLen, nLen);
  if (!writer.fields(nullptr, ptMsg->pptMessageIdx, nullptr, ptInfo->ptValueList)) return -1;
  *pnNowLen = writer.position();
  return 0;
}

int initDefinition(Msg *ptMsg) {
  ptMsg->fParse = parse;
  ptMsg->fGen = generate;
  ptMsg->nValueNum = ptMsg->nFieldNum;
  return 0;
}

int nameMessage(InnerMessage *ptMsg, InnerMessage *, void *) {
  const std::string_view buffer(ptMsg->psBuf, static_cast<size_t>(ptMsg->nLen));
  const std::string_view name = buffer.substr(0, buffer.find_first_of(kDelimiters));
  if (name.size() >= sizeof ptMsg->sMsgName) return -1;
  name.copy(ptMsg->sMsgName, name.size());
  ptMsg->sMsgName[name.size()] = '\0';
  return 0;
}

// The format has no records of its own.
void *parseRecord(void *, char *) {
  return nullptr;
}
void *genRecord(void *, void *, char *, char *) {
  return nullptr;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int toyInit(void *) {
  char sFormat[] = "toy";
  char sStep[] = "toyName";
  if (cvtFmtAddPlug(sFormat, parseRecord, genRecord, initDefinition) != 0) return -1;
  return cvtIdAddFunction(sStep, nameMessage);
}
