// cvt_xml.cpp: the XML access layer over libxml2.
//
// Reports failures through return values only and never logs; libxml2's own messages do not reach the standard
// error stream either.
#include "cvt_xml.h"

#include <fcntl.h>
#include <libxml/encoding.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "cvt_xml_blanks.h"
#include "stt.h"

namespace {

xmlNodePtr node(void *p) {
  return static_cast<xmlNodePtr>(p);
}
xmlDocPtr document(void *p) {
  return static_cast<xmlDocPtr>(p);
}
xmlNsPtr nameSpace(void *p) {
  return static_cast<xmlNsPtr>(p);
}
const xmlChar *text(const char *ps) {
  return reinterpret_cast<const xmlChar *>(ps);
}
char *plain(const xmlChar *ps) {
  return reinterpret_cast<char *>(const_cast<xmlChar *>(ps));
}

struct XmlFree {
  void operator()(xmlChar *ps) const { xmlFree(ps); }
};
using XmlText = std::unique_ptr<xmlChar, XmlFree>;

// Puts the first of several messages, on one line, into a string.
void keepFirst(cvt::String &sReason, const xmlError &error) {
  if (!sReason.empty()) return;
  if (error.line > 0) sReason.append("line ").append(std::to_string(error.line).c_str()).append(": ");
  sReason += error.message == nullptr ? "out of memory" : error.message;
  if (sReason.back() == '\n') sReason.pop_back();
  std::replace(sReason.begin(), sReason.end(), '\n', ' ');
}

// Keeps libxml2's messages off the standard error stream, and from a host's own handler, while it lives.
class Quiet {
 public:
  // psReason, if given, gets the first message.
  explicit Quiet(cvt::String *psReason = nullptr) : m_psReason(psReason) {
    xmlSetStructuredErrorFunc(this, take);
  }
  ~Quiet() { xmlSetStructuredErrorFunc(m_context, m_handler); }
  Quiet(const Quiet &) = delete;
  Quiet &operator=(const Quiet &) = delete;

  // Whether the heap had nothing left on the way.
  bool noHeap() const { return m_bNoHeap; }

  // What libxml2 has made meanwhile. Without heap it may lack parts: then it is dropped, and the answer is null.
  template <class T, class Drop>
  T *whole(T *pt, Drop drop) const {
    if (!m_bNoHeap) return pt;
    if (pt != nullptr) drop(pt);
    return nullptr;
  }

 private:
  static void take(void *context, xmlErrorPtr error) {
    Quiet &self = *static_cast<Quiet *>(context);
    if (error->code == XML_ERR_NO_MEMORY) self.m_bNoHeap = true;
    if (self.m_psReason != nullptr) keepFirst(*self.m_psReason, *error);
  }

  const xmlStructuredErrorFunc m_handler = xmlStructuredError;
  void *const m_context = xmlStructuredErrorContext;
  cvt::String *const m_psReason;
  bool m_bNoHeap = false;
};

// Gives a host that uses libxml2 itself its last error back.
class LastError {
 public:
  LastError() {
    if (xmlGetLastError() != nullptr) xmlCopyError(xmlGetLastError(), &m_saved);
  }
  ~LastError() {
    xmlResetLastError();
    if (m_saved.code != XML_ERR_OK) xmlCopyError(&m_saved, &xmlLastError);
    xmlResetError(&m_saved);
  }
  LastError(const LastError &) = delete;
  LastError &operator=(const LastError &) = delete;

 private:
  xmlError m_saved{};
};

struct ContextFree {
  void operator()(xmlParserCtxtPtr pt) const { xmlFreeParserCtxt(pt); }
};
using Context = std::unique_ptr<xmlParserCtxt, ContextFree>;

// What libxml2 would take long over, or much memory for, and no configuration needs. Its tables of attributes (five
// entries each) and namespaces (two entries each) grow in steps, so these are the least that is refused.
constexpr int kMostAttributeEntries = 5 * 476;
constexpr int kMostNamespaceEntries = 2 * 320;
constexpr size_t kMostInOnePiece = 1 << 20;

// A file of the configuration while libxml2 reads it: as it lies there, never unpacked, without a DOCTYPE, and with
// nothing opened but the file itself.
class Source {
 public:
  Source(const char *psFileName, cvt::String &sReason) : m_reason(sReason) {
    if (psFileName == nullptr) {
      refuse("no file is named");
      return;
    }
    struct stat tStat {};
    m_file = open(psFileName, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (m_file < 0 || fstat(m_file, &tStat) != 0) {
      refuse(std::strerror(errno));
    } else if (!S_ISREG(tStat.st_mode)) {
      refuse("is no regular file");
    }
  }
  ~Source() {
    if (m_file >= 0) close(m_file);
  }
  Source(const Source &) = delete;
  Source &operator=(const Source &) = delete;

  // The document, or null, and the reason is set.
  xmlDocPtr parse() {
    if (m_bRefused) return nullptr;
    m_context.reset(xmlNewParserCtxt());
    if (m_context == nullptr) return nullptr;  // no heap: libxml2 has said so
    m_context->_private = this;
    m_context->sax->internalSubset = onDoctype;
    const xmlDocPtr pt =
        xmlCtxtReadIO(m_context.get(), onRead, nullptr, this, nullptr, nullptr, XML_PARSE_NOBLANKS);
    if (!m_bRefused) return cvt::withoutBlanks(pt);
    xmlFreeDoc(pt);
    return nullptr;
  }

 private:
  void refuse(const char *psReason) {
    m_bRefused = true;
    if (!m_reason.empty()) return;
    if (m_context != nullptr && m_context->input != nullptr) {
      m_reason.append("line ").append(std::to_string(m_context->input->line).c_str()).append(": ");
    }
    m_reason += psReason;
  }

  // The node that was read last.
  const void *progress() const {
    const xmlNode *const ptParent = m_context->node;
    if (ptParent != nullptr) return ptParent->last == nullptr ? ptParent : ptParent->last;
    return m_context->myDoc == nullptr ? nullptr : m_context->myDoc->last;
  }

  // What libxml2 has met by the time it wants more bytes.
  const char *objection() {
    if (m_context->maxatts > kMostAttributeEntries)
      return "an element has more than 400 attributes: take some out";
    if (m_context->nsMax > kMostNamespaceEntries) return "more than 300 namespaces: take some out";
    if (std::exchange(m_last, progress()) != m_last) m_nInOnePiece = 0;
    if (m_nInOnePiece > kMostInOnePiece) return "a tag, text or comment has more than 1 MiB: make it shorter";
    return nullptr;
  }

  static int onRead(void *pSource, char *psRoom, int nRoom) {
    Source &self = *static_cast<Source *>(pSource);
    if (const char *const psReason = self.objection()) {
      self.refuse(psReason);
      return -1;
    }
    const ssize_t nRead = read(self.m_file, psRoom, static_cast<size_t>(nRoom));
    if (nRead < 0) self.refuse(std::strerror(errno));
    const std::string_view sRead(psRoom, nRead < 0 ? 0 : static_cast<size_t>(nRead));
    if (self.m_bFirst && sRead.starts_with("\x1F\x8B")) {
      self.refuse("the file is compressed: unpack it");
      return -1;
    }
    self.m_bFirst = false;
    self.m_nInOnePiece += sRead.size();
    return static_cast<int>(nRead);
  }

  static void onDoctype(void *pContext, const xmlChar *, const xmlChar *, const xmlChar *) {
    const auto context = static_cast<xmlParserCtxtPtr>(pContext);
    static_cast<Source *>(context->_private)
        ->refuse("a DOCTYPE: remove it, and write out what its entities stand for");
    xmlStopParser(context);
  }

  cvt::String &m_reason;
  int m_file = -1;
  bool m_bFirst = true;
  bool m_bRefused = false;
  const void *m_last = nullptr;
  size_t m_nInOnePiece = 0;  // bytes since the last node
  Context m_context;
};

// A namespace belongs to its element, which drops it.
void leaveToNode(xmlNsPtr) {}

// A copy of the first nLen bytes, or of all when there are fewer, so that the caller's string is not written to.
// Null for no string and for a negative length.
XmlText firstBytes(const char *ps, int nLen) {
  if (ps == nullptr || nLen < 0) return nullptr;
  return XmlText(xmlStrndup(text(ps), static_cast<int>(strnlen(ps, static_cast<size_t>(nLen)))));
}

bool writeFile(const char *psFileName, const xmlChar *ps, int nSize) {
  std::FILE *const file = std::fopen(psFileName, "wb");
  if (file == nullptr) return false;
  const auto nNum = static_cast<size_t>(nSize);
  const bool bWritten = std::fwrite(ps, 1, nNum, file) == nNum;
  return std::fclose(file) == 0 && bWritten;
}

}  // namespace

namespace cvt {

XmlPlace xmlPlaceOf(void *ptXmlNode) {
  const xmlNodePtr pt = node(ptXmlNode);
  const bool bNamed = pt->doc != nullptr && pt->doc->URL != nullptr;
  return {bNamed ? plain(pt->doc->URL) : "", xmlGetLineNo(pt)};
}

void *xmlFileParse(char *psFileName, String &sReason) {
  sReason.clear();
  const LastError last;
  const Quiet quiet(&sReason);
  Source source(psFileName, sReason);
  const xmlDocPtr pt = quiet.whole(source.parse(), xmlFreeDoc);
  if (pt == nullptr) return nullptr;
  pt->URL = xmlStrdup(text(psFileName));
  return quiet.whole(pt, xmlFreeDoc);
}

bool xmlHasAttr(void *ptXmlNode, const char *psAttrName) {
  return xmlHasProp(node(ptXmlNode), text(psAttrName)) != nullptr;
}

void xmlDropNode(void *ptXmlNode) {
  xmlUnlinkNode(node(ptXmlNode));
  xmlFreeNode(node(ptXmlNode));
}

void XmlDocFree::operator()(void *ptXmlDoc) const {
  xmlDocFree(ptXmlDoc);
}
void XmlNodeFree::operator()(void *ptXmlNode) const {
  xmlNodeFree(ptXmlNode);
}

}  // namespace cvt

// --- Building -------------------------------------------------------------------------------------------------

void *xmlInit() {
  return xmlInitEncoding(const_cast<char *>("UTF-8"));
}

void *xmlInitEncoding(char *psEncoding) {
  const Quiet quiet;
  const xmlDocPtr pt = xmlNewDoc(text("1.0"));
  if (pt != nullptr) pt->encoding = xmlStrdup(text(psEncoding));
  return quiet.whole(pt, xmlFreeDoc);
}

void *xmlMadeNode(char *psNodeName) {
  return xmlMadeNsNode(nullptr, psNodeName);
}

void *xmlMadeNsNode(void *ptXmlNs, char *psNodeName) {
  const Quiet quiet;
  return quiet.whole(xmlNewNode(nameSpace(ptXmlNs), text(psNodeName)), xmlFreeNode);
}

void *xmlMadeNameSpace(void *ptXmlNode, char *psNameSpace) {
  return xmlMadeNameSpaceShortCut(ptXmlNode, nullptr, psNameSpace, 1);
}

void *xmlMadeNameSpaceShortCut(void *ptXmlNode, char *psShortCut, char *psNameSpace, int nFlag) {
  const Quiet quiet;
  const xmlNsPtr pt =
      quiet.whole(xmlNewNs(node(ptXmlNode), text(psNameSpace), text(psShortCut)), leaveToNode);
  if (pt != nullptr && nFlag == 1) xmlSetNs(node(ptXmlNode), pt);
  return pt;
}

void xmlNodeAddNameSapce(void *ptNode, void *ptNameSpace) {
  xmlSetNs(node(ptNode), nameSpace(ptNameSpace));
}

int xmlPutRootNode(void *ptXmlDoc, void *ptXmlNode) {
  xmlDocSetRootElement(document(ptXmlDoc), node(ptXmlNode));
  return 0;
}

int xmlPutChileNode(void *ptXmlFatherNode, void *ptXmlNode) {
  xmlAddChild(node(ptXmlFatherNode), node(ptXmlNode));
  return 0;
}

void *xmlPutNsNodeValue(void *ptXmlFatherNode, void *ptXmlNs, char *psName, char *psVaule, int nLen) {
  // Unlike the attribute setters this one cuts the caller's string in place, also where it ends already:
  // psVaule[nLen] must be writable. Callers rely on it for their own buffers; a constant does not fit here.
  if (psVaule == nullptr || nLen < 0) return nullptr;
  const char cSaved = psVaule[nLen];
  psVaule[nLen] = 0;
  const Quiet quiet;
  const xmlNodePtr pt =
      xmlNewTextChild(node(ptXmlFatherNode), nameSpace(ptXmlNs), text(psName), text(psVaule));
  psVaule[nLen] = cSaved;
  return quiet.whole(pt, cvt::xmlDropNode);
}

void *xmlPutNodeValue(void *ptXmlFatherNode, char *psName, char *psVaule, int nLen) {
  return xmlPutNsNodeValue(ptXmlFatherNode, nullptr, psName, psVaule, nLen);
}

void *xmlPutNodeAttr(void *ptXmlNode, char *psAttrName, char *psAttrVaule, int nAttrLen) {
  const Quiet quiet;
  const XmlText value = firstBytes(psAttrVaule, nAttrLen);
  if (value == nullptr) return nullptr;
  return quiet.whole(xmlSetProp(node(ptXmlNode), text(psAttrName), value.get()), xmlRemoveProp);
}

void *xmlPutNsNodeAttr(void *ptXmlNode, void *ptXmlNs, char *psAttrName, char *psAttrVaule, int nAttrLen) {
  const Quiet quiet;
  const XmlText value = firstBytes(psAttrVaule, nAttrLen);
  if (value == nullptr) return nullptr;
  return quiet.whole(xmlSetNsProp(node(ptXmlNode), nameSpace(ptXmlNs), text(psAttrName), value.get()),
                     xmlRemoveProp);
}

// --- Writing and reading ----------------------------------------------------------------------------------------

int xmlGenerate(void *ptXmlDoc, char *psBuf, int *pnLen) {
  xmlChar *psDump = nullptr;
  int nSize = 0;
  const Quiet quiet;
  xmlDocDumpMemory(document(ptXmlDoc), &psDump, &nSize);
  const XmlText owner(psDump);
  if (psDump == nullptr || quiet.noHeap() || *pnLen < nSize) return -1;
  *pnLen = nSize;
  std::memcpy(psBuf, psDump, static_cast<size_t>(nSize));
  return 0;
}

// libxml2's own way to a file takes the name for a URL: it would write a%41.xml to aA.xml.
int xmlFileGenerate(char *psFileName, void *ptXmlDoc) {
  xmlChar *psDump = nullptr;
  int nSize = 0;
  const Quiet quiet;
  xmlDocDumpFormatMemory(document(ptXmlDoc), &psDump, &nSize, 1);
  const XmlText owner(psDump);
  if (psDump == nullptr || quiet.noHeap() || !writeFile(psFileName, psDump, nSize)) return -1;
  return nSize;
}

void *xmlParse(char *psBuf, int nLen) {
  const Quiet quiet;
  return quiet.whole(xmlReadMemory(psBuf, nLen, nullptr, nullptr, 0), xmlFreeDoc);
}

void *xmlParse2(char *psBuf, int nLen) {
  const Quiet quiet;
  return quiet.whole(cvt::withoutBlanks(xmlReadMemory(psBuf, nLen, nullptr, nullptr, XML_PARSE_NOBLANKS)),
                     xmlFreeDoc);
}

void *xmlFileParse(char *psFileName) {
  const Quiet quiet;
  return quiet.whole(cvt::withoutBlanks(xmlReadFile(psFileName, nullptr, XML_PARSE_NOBLANKS)), xmlFreeDoc);
}

int xmlDocFree(void *ptXmlDoc) {
  xmlFreeDoc(document(ptXmlDoc));
  return 0;
}

int xmlNodeFree(void *ptXmlNode) {
  xmlFreeNode(node(ptXmlNode));
  return 0;
}

void xmlFreeString(char *psString) {
  xmlFree(psString);
}

// --- Navigation: nodes of every kind, comments and text included --------------------------------------------

void *xmlGetHeadNode(void *ptXmlDoc) {
  return xmlDocGetRootElement(document(ptXmlDoc));
}
void *xmlGetChileNode(void *ptXmlNode) {
  return node(ptXmlNode)->children;
}
void *xmlGetFatherNode(void *ptXmlNode) {
  return node(ptXmlNode)->parent;
}
void *xmlGetLastChildNode(void *ptXmlNode) {
  return node(ptXmlNode)->last;
}
void *xmlGetPrevNode(void *ptXmlNode) {
  return node(ptXmlNode)->prev;
}
void *xmlGetNextNode(void *ptXmlNode) {
  return node(ptXmlNode)->next;
}
char *xmlGetNodeName(void *ptXmlNode) {
  return plain(node(ptXmlNode)->name);
}

char *xmlGetNodeVaule(void *ptXmlNode) {
  // Only the first child counts: text behind an element child is never seen.
  const xmlNodePtr ptChild = node(ptXmlNode)->children;
  if (ptChild == nullptr || ptChild->type == XML_ELEMENT_NODE) return nullptr;
  const Quiet quiet;
  return plain(xmlNodeGetContent(ptChild));
}

char *xmlGetNodeAttr(void *ptXmlNode, char *psAttrName) {
  const Quiet quiet;
  return plain(xmlGetProp(node(ptXmlNode), text(psAttrName)));
}

// --- Schemas and encodings ----------------------------------------------------------------------------------------

void *xmlGetSchemaObj(char *psUrl) {
  if (psUrl == nullptr || *psUrl == 0) return nullptr;
  const Quiet quiet;
  const std::unique_ptr<xmlSchemaParserCtxt, decltype(&xmlSchemaFreeParserCtxt)> context(
      xmlSchemaNewParserCtxt(psUrl), &xmlSchemaFreeParserCtxt);
  if (context == nullptr) return nullptr;
  return xmlSchemaParse(context.get());
}

int xmlCheckSchema(void *ptSchema, void *ptXmlDoc) {
  const Quiet quiet;
  const std::unique_ptr<xmlSchemaValidCtxt, decltype(&xmlSchemaFreeValidCtxt)> context(
      xmlSchemaNewValidCtxt(static_cast<xmlSchemaPtr>(ptSchema)), &xmlSchemaFreeValidCtxt);
  if (context == nullptr) return -1;
  return xmlSchemaValidateDoc(context.get(), document(ptXmlDoc));
}

void xmlEncodeAlias(char *psEncoding, char *psAlias) {
  xmlAddEncodingAlias(psEncoding, psAlias);
}
