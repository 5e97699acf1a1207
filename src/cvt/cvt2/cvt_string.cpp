// cvt_string.cpp: string lists, the interning dictionary, and small string tools.
#include "cvt_string.h"

#include <iconv.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string_view>

#include "cvt_heap.h"
#include "cvt_log.h"

Dictionary *gptDict = nullptr;

namespace {

constexpr size_t kChunkSlots = std::size(Dictionary{}.psBuf);

const char f_sBase64Code[65] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
char f_sEmpty[1] = "";  // what the entries that a split leaves over point to

Dictionary *NewChunk() {
  return static_cast<Dictionary *>(cvtMemMalloc(static_cast<int>(sizeof(Dictionary))));
}

// A private index beside the dictionary's chunks: the answers of a walk over all interned strings, and the
// slot where that walk would end, without walking.
class DictIndex {
 public:
  // Makes the index that of the dictionary ptDict. One that is not the one indexed last is read anew.
  void follow(Dictionary *ptDict) {
    if (ptDict == m_ptDict) return;
    clear();
    for (Dictionary *pt = ptDict; pt != nullptr; pt = m_nUsed < kChunkSlots ? nullptr : pt->ptNext) {
      m_ptLast = pt;
      for (m_nUsed = 0; m_nUsed < kChunkSlots && pt->psBuf[m_nUsed] != nullptr; ++m_nUsed) {
        char *const ps = pt->psBuf[m_nUsed];
        m_strings.try_emplace(ps, ps);
      }
    }
    m_ptDict = ptDict;
  }

  char *find(std::string_view text) const {
    const auto it = m_strings.find(text);
    return it == m_strings.end() ? nullptr : it->second;
  }

  // Makes sure of a free slot. Chunk first, string second: the order in which the pool is asked for them.
  void makeRoom() {
    if (m_nUsed < kChunkSlots) return;
    m_ptLast->ptNext = NewChunk();
    m_ptLast = m_ptLast->ptNext;
    m_nUsed = 0;
  }

  // Puts a new string into the free slot.
  void add(char *ps) {
    m_strings.emplace(ps, ps);
    m_ptLast->psBuf[m_nUsed] = ps;
    ++m_nUsed;
  }

  // To be called whenever a dictionary begins or ends: the next one may lie at the same address.
  void clear() {
    m_ptDict = nullptr;
    m_strings.clear();
  }

 private:
  Dictionary *m_ptDict = nullptr;  // first chunk of the dictionary indexed; null: none
  Dictionary *m_ptLast = nullptr;  // the chunk with the first free slot, or the last one
  size_t m_nUsed = 0;              // used slots of that chunk
  cvt::HashMap<std::string_view, char *> m_strings;
};

DictIndex f_dict;

// A copy of text in pool memory, which is zero-filled and so ends the copy; null when the pool gave none.
char *Copied(void *ptMemory, std::string_view text) {
  if (ptMemory != nullptr) std::memcpy(ptMemory, text.data(), text.size());
  return static_cast<char *>(ptMemory);
}

// The pool counts in int. A string beyond that asks for 0 bytes, which the pool does not give.
int CopySize(std::string_view text) {
  return text.size() < INT_MAX ? static_cast<int>(text.size()) + 1 : 0;
}

StringList *locStrListGetLast(StringList *ptList) {
  if (ptList == nullptr) return nullptr;
  while (ptList->ptNext != nullptr) ptList = ptList->ptNext;
  return ptList;
}

}  // namespace

// --- String lists ------------------------------------------------------------------------------------------

StringList *cvtStrAddStringList(StringList *ptStringList, char *psString, void *ptInfo) {
  CVT_NOT_NULL(psString, nullptr);
  CVT_NOT_NULL(ptInfo, nullptr);
  auto *const ptAdd = static_cast<StringList *>(cvtMemMalloc(static_cast<int>(sizeof(StringList))));
  return locStrListAdd(ptStringList, ptAdd, cvtStrDup(psString), ptInfo);
}

StringList *cvtStrAddStringListMem(StringList *ptStringList, char *psString, void *ptInfo,
                                   MemPort ptMemNode) {
  CVT_NOT_NULL(ptMemNode, nullptr);
  auto *const ptAdd = static_cast<StringList *>(cvtMalloc(static_cast<int>(sizeof(StringList)), ptMemNode));
  return locStrListAdd(ptStringList, ptAdd, cvtStrDupMem(psString, ptMemNode), ptInfo);
}

StringList *cvtStrAddStringListOrder(StringList *ptRoot, char *psAddName, void *ptAddInfo) {
  CVT_NOT_NULL(psAddName, nullptr);
  CVT_NOT_NULL(ptAddInfo, nullptr);
  auto *const ptAdd = static_cast<StringList *>(cvtMemMalloc(static_cast<int>(sizeof(StringList))));
  return locStrListAddOrder(ptRoot, ptAdd, cvtStrDup(psAddName), ptAddInfo);
}

StringList *cvtStrAddStringListOrderMem(StringList *ptRoot, char *psAddName, void *ptAddInfo,
                                        MemPort ptMemNode) {
  CVT_NOT_NULL(ptMemNode, nullptr);
  auto *const ptAdd = static_cast<StringList *>(cvtMalloc(static_cast<int>(sizeof(StringList)), ptMemNode));
  return locStrListAddOrder(ptRoot, ptAdd, cvtStrDupMem(psAddName, ptMemNode), ptAddInfo);
}

StringList *locStrListAdd(StringList *ptRoot, StringList *ptAdd, char *psString, void *ptInfo) {
  CVT_NOT_NULL(psString, nullptr);
  CVT_NOT_NULL(ptInfo, nullptr);
  CVT_NOT_NULL(ptAdd, nullptr);
  ptAdd->psString = psString;
  ptAdd->ptInfo = ptInfo;
  ptAdd->ptNext = ptRoot;
  return ptAdd;
}

StringList *locStrListAddOrder(StringList *ptRoot, StringList *ptAdd, char *psAddName, void *ptAddInfo) {
  CVT_NOT_NULL(psAddName, nullptr);
  CVT_NOT_NULL(ptAddInfo, nullptr);
  CVT_NOT_NULL(ptAdd, nullptr);
  char *const psCopy = strdup(psAddName);  // outlives the pool's memory on purpose; nobody frees it
  CVT_NOT_NULL(psCopy, nullptr);
  ptAdd->psString = psCopy;
  ptAdd->ptInfo = ptAddInfo;
  ptAdd->ptNext = nullptr;
  if (ptRoot == nullptr) return ptAdd;
  locStrListGetLast(ptRoot)->ptNext = ptAdd;
  return ptRoot;
}

void *cvtStrFindStringList(StringList *ptStringList, char *psString) {
  if (psString == nullptr) return nullptr;
  for (StringList *pt = ptStringList; pt != nullptr; pt = pt->ptNext) {
    if (std::strcmp(pt->psString, psString) == 0) return pt->ptInfo;
  }
  return nullptr;
}

void *cvtStrListNext(StringList **pptIter) {
  if (pptIter == nullptr) return nullptr;
  CVT_NOT_NULL(*pptIter, nullptr);
  void *const ptInfo = (*pptIter)->ptInfo;
  *pptIter = (*pptIter)->ptNext;
  return ptInfo;
}

int cvtStrLogStringList(StringList *ptStringList, char *psString) {
  for (StringList *pt = ptStringList; pt != nullptr; pt = pt->ptNext) {
    CVT_TRACE("[%s] - [%s]", pt->psString, psString);
  }
  return 0;
}

int cvtStrListAddList(StringList *ptSrc, StringList *ptDst) {
  CVT_NOT_NULL(ptSrc, -1);
  CVT_NOT_NULL(ptDst, -1);
  locStrListGetLast(ptSrc)->ptNext = ptDst;
  return 0;
}

// --- Dictionary --------------------------------------------------------------------------------------------

int cvtInitDict(void) {
  f_dict.clear();
  gptDict = NewChunk();
  return 0;
}

int cvtEndDict(void) {
  f_dict.clear();
  gptDict = nullptr;
  return 0;
}

char *cvtStrDup(char *psStr) {
  CVT_NOT_NULL(psStr, nullptr);
  if (gptDict == nullptr) cvtInitDict();
  f_dict.follow(gptDict);
  if (char *const psKnown = f_dict.find(psStr)) return psKnown;
  f_dict.makeRoom();
  char *const psNew = Copied(cvtMemMalloc(CopySize(psStr)), psStr);
  CVT_NOT_NULL(psNew, nullptr);
  f_dict.add(psNew);
  return psNew;
}

char *cvtStrDupMem(char *psStr, MemPort ptMemNode) {
  CVT_NOT_NULL(psStr, nullptr);
  return Copied(cvtMalloc(CopySize(psStr), ptMemNode), psStr);
}

// --- Base64 ------------------------------------------------------------------------------------------------

namespace {

unsigned Sextet(char c) {
  static const auto values = [] {
    std::array<unsigned char, 256> table{};  // "=" and characters outside the alphabet count as 0
    for (unsigned char n = 0; n < 64; ++n) table[static_cast<unsigned char>(f_sBase64Code[n])] = n;
    return table;
  }();
  return values[static_cast<unsigned char>(c)];
}

// Decodes a group of four characters; returns the number of bytes it stands for.
int encFromBase64(const char *sGroup, char *sBytes) {
  const unsigned nBits =
      Sextet(sGroup[0]) << 18 | Sextet(sGroup[1]) << 12 | Sextet(sGroup[2]) << 6 | Sextet(sGroup[3]);
  sBytes[0] = static_cast<char>(nBits >> 16 & 0xff);
  sBytes[1] = static_cast<char>(nBits >> 8 & 0xff);
  sBytes[2] = static_cast<char>(nBits & 0xff);
  return 3 - (sGroup[2] == '=') - (sGroup[3] == '=');
}

}  // namespace

// The last group is read whole, also where nInBufLen cuts it; what it would write beyond the capacity is an
// error.
int cvtStrDecodeBase64(char *sInBuf, int nInBufLen, char *sOutBuf, int *pnOutBufLen) {
  if (sInBuf == nullptr || sOutBuf == nullptr || pnOutBufLen == nullptr) return -1;
  const int nCapacity = *pnOutBufLen;
  if (nCapacity < nInBufLen / 4 * 3) return -1;
  sOutBuf[0] = 0;
  *pnOutBufLen = 0;
  for (long i = 0; i < nInBufLen; i += 4) {
    while (i < nInBufLen && (sInBuf[i] == '\n' || sInBuf[i] == '\r')) ++i;
    if (i >= nInBufLen) break;
    char sBytes[3];
    const int nBytes = encFromBase64(sInBuf + i, sBytes);
    if (nBytes > nCapacity - *pnOutBufLen) return -1;
    std::memcpy(sOutBuf + *pnOutBufLen, sBytes, static_cast<size_t>(nBytes));
    *pnOutBufLen += nBytes;
  }
  return 0;
}

// --- Character sets ----------------------------------------------------------------------------------------

namespace {

class Converter {
 public:
  Converter(const char *psFrom, const char *psTo) : m_cd(iconv_open(psTo, psFrom)) {}
  ~Converter() {
    if (isOpen()) iconv_close(m_cd);
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;

  bool isOpen() const { return m_cd != reinterpret_cast<iconv_t>(-1); }

  // Converts everything in one call; returns whether it could, and then takes what it wrote from *pnLeft.
  bool convert(char *psIn, size_t nIn, char *psOut, size_t *pnLeft) const {
    return iconv(m_cd, &psIn, &nIn, &psOut, pnLeft) != static_cast<size_t>(-1);
  }

 private:
  iconv_t m_cd;
};

}  // namespace

int cvtStrCodeConvert(char *psFromCharset, char *psToCharset, char *psInBuf, int nInLen, char *psOutBuf,
                      int *pnOutLen) {
  if (psFromCharset == nullptr || psToCharset == nullptr || psInBuf == nullptr || psOutBuf == nullptr ||
      pnOutLen == nullptr || nInLen < 0 || *pnOutLen < 0) {
    return -1;
  }
  const Converter converter(psFromCharset, psToCharset);
  auto nLeft = static_cast<size_t>(*pnOutLen);
  if (!converter.isOpen() || !converter.convert(psInBuf, static_cast<size_t>(nInLen), psOutBuf, &nLeft)) {
    return -1;
  }
  *pnOutLen -= static_cast<int>(nLeft);
  return 0;
}

int cvtStrU2G(char *psInBuf, int nInLen, char *psOutBuf, int *pnOutLen) {
  char sFrom[] = "UTF-8";
  char sTo[] = "GB18030";
  return cvtStrCodeConvert(sFrom, sTo, psInBuf, nInLen, psOutBuf, pnOutLen);
}

int cvtStrG2U(char *psInBuf, int nInLen, char *psOutBuf, int *pnOutLen) {
  char sFrom[] = "GB18030";
  char sTo[] = "UTF-8";
  return cvtStrCodeConvert(sFrom, sTo, psInBuf, nInLen, psOutBuf, pnOutLen);
}

// --- Small tools -------------------------------------------------------------------------------------------

int cvtStrToUp(char *psBuf, int nLen) {
  if (psBuf == nullptr) return 0;
  for (int i = 0; i < nLen; ++i) {
    if (psBuf[i] >= 'a' && psBuf[i] <= 'z') psBuf[i] = static_cast<char>(psBuf[i] - 32);
  }
  return 0;
}

int cvtStrAntoi(char *psBuf, int nLen) {
  if (psBuf == nullptr || nLen <= 0) return 0;
  const char cSaved = psBuf[nLen];
  psBuf[nLen] = 0;
  const int nValue = std::atoi(psBuf);
  psBuf[nLen] = cSaved;
  return nValue;
}

int cvtStrNSplit(char **ppsStr, char *psLine, char *psSplitChar, int nNum) {
  if (psLine == nullptr || ppsStr == nullptr || psSplitChar == nullptr) return -1;
  ppsStr[0] = psLine;
  int nCount = 1;
  while (nCount < nNum) {
    char *const psSeparator = std::strpbrk(ppsStr[nCount - 1], psSplitChar);
    if (psSeparator == nullptr) break;
    *psSeparator = 0;
    ppsStr[nCount++] = psSeparator + 1;
  }
  for (int i = nCount; i < nNum; ++i) ppsStr[i] = f_sEmpty;
  return nCount;
}

void cvtGetCurrentDateTime(char *psCurrentTime) {
  CVT_NOT_NULL(psCurrentTime, );
  tzset();
  const time_t nNow = std::time(nullptr);
  tm now{};
  localtime_r(&nNow, &now);
  std::strftime(psCurrentTime, 15, "%Y%m%d%H%M%S", &now);
}
