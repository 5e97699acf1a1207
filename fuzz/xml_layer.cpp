// xml_layer.cpp: the XML layer: a document is read, walked, added to, written, and read again.
#include <memory>

#include "stt.h"
#include "support/input.h"

namespace {

struct Free {
  void operator()(void *document) const { xmlDocFree(document); }
  void operator()(char *text) const { xmlFreeString(text); }
};
using Document = std::unique_ptr<void, Free>;
using Text = std::unique_ptr<char, Free>;

// The elements of a tree in the order of the document.
void walk(void *node, std::string &names) {
  char attribute[] = "a";
  for (; node != nullptr; node = xmlGetNextNode(node)) {
    const Text value(xmlGetNodeVaule(node));
    const Text attributeValue(xmlGetNodeAttr(node, attribute));
    names += std::string(xmlGetNodeName(node)) + '(';
    walk(xmlGetChileNode(node), names);
    names += ')';
  }
}

// A name, a value: what the writer cannot take shows here.
void add(void *node, fuzz::Input &input) {
  std::string name(1, 'n');
  name += std::to_string(input.byte());
  std::string value = input.string();
  const int length = static_cast<int>(value.size());
  xmlPutNodeAttr(node, name.data(), value.data(), length);
  if (void *const child = xmlPutNodeValue(node, name.data(), value.data(), length)) {
    xmlPutChileNode(node, xmlMadeNode(name.data()));
    xmlMadeNameSpaceShortCut(child, name.data(), value.data(), 1);
  }
}

void writeAndReadAgain(void *document) {
  std::string buffer(size_t{256} * 1024, '\0');
  int length = static_cast<int>(buffer.size());
  if (xmlGenerate(document, buffer.data(), &length) != 0) return;
  fuzz::require(length <= static_cast<int>(buffer.size()), "the written document fits");
  const Document again(xmlParse(buffer.data(), length));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const bool withoutBlanks = input.byte() % 2 == 1;
  const std::string added = input.string();
  std::string bytes = input.rest();
  const int length = static_cast<int>(bytes.size());
  const Document document(withoutBlanks ? xmlParse2(bytes.data(), length) : xmlParse(bytes.data(), length));
  if (document == nullptr) return 0;
  void *const root = xmlGetHeadNode(document.get());
  fuzz::require(root != nullptr, "a document has a root");
  std::string names;
  walk(root, names);
  fuzz::Input additions(reinterpret_cast<const uint8_t *>(added.data()), added.size());
  while (!additions.atEnd()) add(root, additions);
  writeAndReadAgain(document.get());
  return 0;
}
