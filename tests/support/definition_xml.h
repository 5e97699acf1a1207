// definition_xml.h: the text of message definitions, and a loader for a directory of them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "config_tree.h"
#include "cvt.h"

namespace test::model {

// One element of a definition's tree.
struct NodeXml {
  std::string sName;
  int nType = 0;                   // negative: a reference
  std::string sStruct;             // attributes of the StructAttr: nType="1"
  std::string sInfo;               // further elements of the StructAttr
  std::vector<NodeXml> children;   // ptChildNode
  std::vector<NodeXml> other;      // ptOtherNode
  std::vector<NodeXml> loopNodes;  // ptLoopNode
  bool bStruct = true;             // false: no StructAttr at all, so no siblings behind it either
};

inline NodeXml field(const std::string &sName) {
  NodeXml node;
  node.sName = sName;
  return node;
}

inline NodeXml reference(const std::string &sName) {
  NodeXml node = field(sName);
  node.nType = -1;
  return node;
}

inline NodeXml group(const std::string &sName, std::vector<NodeXml> children) {
  NodeXml node = field(sName);
  node.children = std::move(children);
  return node;
}

inline std::string loopType(const std::string &sCount) {
  return "<LoopType __ID=\"pInfo\"" + (sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"") + "/>";
}

// A repeating group; an empty sCount leaves the count field out.
inline NodeXml loop(const std::string &sName, const std::string &sCount, std::vector<NodeXml> children) {
  NodeXml node = group(sName, std::move(children));
  node.sStruct = "nType=\"1\"";
  node.sInfo = loopType(sCount);
  return node;
}

inline NodeXml counted(const std::string &sName, const std::string &sCount) {
  NodeXml node = field(sName);
  node.sStruct = "nType=\"5\"";
  node.sInfo = loopType(sCount);
  return node;
}

// Siblings: the first carries the name of the field that holds the list.
inline std::string chainXml(const std::string &sId, const std::vector<NodeXml> &nodes) {
  std::string s;
  for (const NodeXml &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sId : "ptNextNode") + "\" psNodeName=\"" + node.sName + "\"";
    if (node.nType != 0) s += " nType=\"" + std::to_string(node.nType) + "\"";
    s += ">";
    if (node.bStruct) {
      s += "<StructAttr __ID=\"ptStructAttr\" " + node.sStruct + ">" + node.sInfo +
           chainXml("ptOtherNode", node.other) + chainXml("ptChildNode", node.children) +
           chainXml("ptLoopNode", node.loopNodes) + "</StructAttr>";
    }
    s += "</Message>\n";
  }
  return s;
}

// The "Msg" element of a definition.
inline std::string msgXml(const std::string &sName, const std::vector<NodeXml> &nodes) {
  return "<Msg psMsgName=\"" + sName + "\">\n" + chainXml("ptHead", nodes) + "</Msg>";
}

// A definition file of the format "flat".
inline std::string definition(const std::string &sName, const std::vector<NodeXml> &nodes) {
  return "<flat>" + msgXml(sName, nodes) + "</flat>";
}

// An element that lives as long as this.
class Element {
 public:
  explicit Element(std::string sXml) : m_ptDoc(xmlParse2(sXml.data(), static_cast<int>(sXml.size()))) {}
  ~Element() {
    if (m_ptDoc != nullptr) xmlDocFree(m_ptDoc);
  }
  Element(const Element &) = delete;
  Element &operator=(const Element &) = delete;

  void *get() const { return xmlGetHeadNode(m_ptDoc); }

 private:
  void *m_ptDoc;
};

// A directory tree of definitions, and the "Message" section that loads it.
class Definitions {
 public:
  Definitions() { gpsRootPath = m_tree.arg(); }
  ~Definitions() {
    cvtEnd();
    gpsRootPath = nullptr;
  }
  Definitions(const Definitions &) = delete;
  Definitions &operator=(const Definitions &) = delete;

  // Registers a format without records of its own.
  static void format(const char *psName, FncFotmatInit fInit = accept) {
    cvtFmtAddPlug(cs(psName), noRecord, noWriter, fInit);
  }

  // A definition msg/NAME.xml of the format "flat".
  Definitions &add(const std::string &sName, const std::vector<NodeXml> &nodes) {
    return file("msg/" + sName + ".xml", definition(sName, nodes));
  }
  Definitions &file(const std::string &sPath, const std::string &sText) {
    m_tree.file(sPath, sText);
    return *this;
  }
  std::string path(const std::string &sName) const { return m_tree.path(sName); }

  // Runs the section over these directories; sAttributes are those of the section element.
  void *load(const std::vector<std::string> &dirs = {"msg"}, const std::string &sAttributes = "") {
    std::string s = "<Message " + sAttributes + ">";
    for (size_t i = 0; i < dirs.size(); ++i) {
      s += std::string("<PathList __ID=\"") + (i == 0 ? "ptMsgList" : "ptNext") + "\" psPath=\"" + dirs[i] +
           "\"/>";
    }
    return cvtFmtInit(Element(s + "</Message>").get(), cs("Message"));
  }

  static int accept(Msg *) { return 0; }
  static void *noRecord(void *, char *) { return nullptr; }
  static void *noWriter(void *, void *, char *, char *) { return nullptr; }

 private:
  ConfigTree m_tree;
};

// The names of an index, in order, up to its terminator.
inline std::vector<std::string> names(Message **pptIdx) {
  std::vector<std::string> all;
  for (int i = 0; const Message *const ptNode = cvtIdxNode(pptIdx, i); ++i)
    all.emplace_back(ptNode->psNodeName);
  return all;
}

// The numbers of its nodes.
inline std::vector<int> numbers(Message **pptIdx) {
  std::vector<int> all;
  for (int i = 0; const Message *const ptNode = cvtIdxNode(pptIdx, i); ++i) all.push_back(ptNode->nIndex);
  return all;
}

// The first node of that name.
inline Message *nodeNamed(Message **pptIdx, const char *psName) {
  return cvtIdxNode(pptIdx, cvtGetNodeIdx(pptIdx, cs(psName)));
}

}  // namespace test::model
