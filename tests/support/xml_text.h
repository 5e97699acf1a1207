// xml_text.h: documents of the library's XML layer, made from text and compared as text.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "config_tree.h"
#include "stt.h"

namespace test {

// The document as one line: neither declaration nor indentation.
inline std::string textOf(void *ptXmlDoc) {
  std::vector<char> buffer(1 << 20);
  int nLen = static_cast<int>(buffer.size());
  if (xmlGenerate(ptXmlDoc, buffer.data(), &nLen) != 0) return "not generated";
  std::string s(buffer.data(), static_cast<size_t>(nLen));
  s.erase(0, s.find('\n') + 1);
  while (!s.empty() && s.back() == '\n') s.pop_back();
  return s;
}

// A document read from text, without blank nodes, and freed with the object.
class Xml {
 public:
  explicit Xml(std::string sText) : m_ptXmlDoc(xmlParse2(sText.data(), static_cast<int>(sText.size()))) {
    if (m_ptXmlDoc == nullptr) throw std::invalid_argument("not XML: " + sText);
  }
  ~Xml() { xmlDocFree(m_ptXmlDoc); }
  Xml(const Xml &) = delete;
  Xml &operator=(const Xml &) = delete;

  void *root() const { return xmlGetHeadNode(m_ptXmlDoc); }
  void *child(int nPos = 0) const { return childOf(root(), nPos); }
  std::string text() const { return textOf(m_ptXmlDoc); }

  // Child nPos of an element, nodes of every kind counted; null when there are fewer.
  static void *childOf(void *ptXmlNode, int nPos = 0) {
    void *pt = xmlGetChileNode(ptXmlNode);
    for (; nPos > 0 && pt != nullptr; --nPos) pt = xmlGetNextNode(pt);
    return pt;
  }

 private:
  void *m_ptXmlDoc;
};

// Takes a string that libxml2 allocated; "null" for none.
inline std::string taken(char *psString) {
  if (psString == nullptr) return "null";
  std::string s = psString;
  xmlFreeString(psString);
  return s;
}

}  // namespace test
