// cvt_xml.h: what the library itself asks of the XML layer beyond its exported functions. Private.
#pragma once

#include <string>

namespace cvt {

// Where an element stands: the file of its document ("" when it has none) and its line.
struct XmlPlace {
  const char *psFile;
  long nLine;
};
XmlPlace xmlPlaceOf(void *ptXmlNode);

// What was wrong with the file that xmlFileParse refused last: "line 3: Opening and ending tag mismatch".
std::string xmlLastParseError();

// Takes a node out of its tree and frees it.
void xmlDropNode(void *ptXmlNode);

// Deletes a document when its owner leaves.
struct XmlDocFree {
  void operator()(void *ptXmlDoc) const;
};

}  // namespace cvt
