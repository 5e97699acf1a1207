// cvt_xml.h: what the library itself asks of the XML layer beyond its exported functions. Private.
#pragma once

#include "cvt_heap.h"

namespace cvt {

// Where an element stands: the file of its document ("" when it has none) and its line.
struct XmlPlace {
  const char *psFile;
  long nLine;
};
XmlPlace xmlPlaceOf(void *ptXmlNode);

// A file of the configuration, read as it lies there: no DOCTYPE, nothing unpacked, nothing opened beside it. For a
// file that is refused sReason says what was objected to first:
// "line 3: Opening and ending tag mismatch: b line 2 and a".
void *xmlFileParse(char *psFileName, String &sReason);

// Whether an element has an attribute: where it has, and xmlGetNodeAttr gives null, the heap has nothing left.
bool xmlHasAttr(void *ptXmlNode, const char *psAttrName);

// Takes a node out of its tree and frees it.
void xmlDropNode(void *ptXmlNode);

// Delete a document, or a tree that is in no document yet, when its owner leaves.
struct XmlDocFree {
  void operator()(void *ptXmlDoc) const;
};
struct XmlNodeFree {
  void operator()(void *ptXmlNode) const;
};

}  // namespace cvt
