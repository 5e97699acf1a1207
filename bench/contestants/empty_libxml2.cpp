// empty_libxml2.cpp: what starting and ending a process costs that has libxml2 loaded, as every reader of the
// configuration has.
#include <libxml/parser.h>

int main() {
  return xmlParserVersion == nullptr;
}
