// cvt_xml_blanks.h: blanks between elements, which mean nothing. Private.
//
// libxml2 leaves out those that it sees together with what follows them. What it sees in pieces, a file or long blanks
// with carriage returns, it takes for text, which would end a list of records.
#pragma once

#include <libxml/tree.h>

namespace cvt {

// The same document, without the blanks between the children of every element that has no text among them. Null for
// null.
xmlDocPtr withoutBlanks(xmlDocPtr ptDoc);

}  // namespace cvt
