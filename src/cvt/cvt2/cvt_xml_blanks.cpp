// cvt_xml_blanks.cpp: blanks between elements, which mean nothing.
#include "cvt_xml_blanks.h"

namespace cvt {

namespace {

bool isBlank(const xmlNode *pt) {
  return pt->type == XML_TEXT_NODE && xmlIsBlankNode(const_cast<xmlNode *>(pt)) == 1;
}

bool isText(const xmlNode *pt) {
  return pt->type == XML_TEXT_NODE || pt->type == XML_CDATA_SECTION_NODE || pt->type == XML_ENTITY_REF_NODE;
}

// Whether an element has children, none of which is text: blanks among them mean nothing, unless it says so.
bool hasBlanksToDrop(const xmlNode *ptElement) {
  bool bBlank = false;
  bool bOther = false;
  for (const xmlNode *pt = ptElement->children; pt != nullptr; pt = pt->next) {
    if (isBlank(pt)) {
      bBlank = true;
    } else if (isText(pt)) {
      return false;
    } else {
      bOther = true;
    }
  }
  return bBlank && bOther && xmlNodeGetSpacePreserve(ptElement) != 1;
}

void dropBlankChildren(xmlNodePtr ptElement) {
  for (xmlNodePtr pt = ptElement->children; pt != nullptr;) {
    const xmlNodePtr ptNext = pt->next;
    if (isBlank(pt)) {
      xmlUnlinkNode(pt);
      xmlFreeNode(pt);
    }
    pt = ptNext;
  }
}

// The node behind another in the order of the document; null behind the last one of ptRoot.
xmlNodePtr nextInOrder(xmlNodePtr pt, const xmlNode *ptRoot) {
  if (pt->type == XML_ELEMENT_NODE && pt->children != nullptr) return pt->children;
  while (pt != ptRoot && pt->next == nullptr) pt = pt->parent;
  return pt == ptRoot ? nullptr : pt->next;
}

}  // namespace

xmlDocPtr withoutBlanks(xmlDocPtr ptDoc) {
  xmlNode *const ptRoot = ptDoc == nullptr ? nullptr : xmlDocGetRootElement(ptDoc);
  for (xmlNodePtr pt = ptRoot; pt != nullptr; pt = nextInOrder(pt, ptRoot)) {
    if (pt->type == XML_ELEMENT_NODE && hasBlanksToDrop(pt)) dropBlankChildren(pt);
  }
  return ptDoc;
}

}  // namespace cvt
