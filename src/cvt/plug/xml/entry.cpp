// entry.cpp: the initialiser that the loader looks up in the plug-in.
//
// The library's XML layer has a function of the same name and another type, declared in stt.h; so nothing
// that includes it may be included here. The loader asks the plug-in's own handle, which finds this one, and
// the library's calls go to its own, since plug-ins are opened with local scope.
#include "entry.h"

extern "C" __attribute__((visibility("default"))) int xmlInit(void *element) {
  return cvt::xml::initialise(element);
}
