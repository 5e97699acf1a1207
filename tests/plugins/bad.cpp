// bad.cpp: what a plug-in should not do, one initialiser for each fault. All but quietInit have registered
// the format "toy" by then, so that the library holds their functions whatever comes after.
#include <stdexcept>

#include "cvt_identify.h"

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

char f_sFormat[] = "toy";

void *knowsNoType(void *, char *) {
  return nullptr;
}
void *writesNoType(void *, void *, char *, char *) {
  return nullptr;
}

// Leaves fParse and fGen as they are: null.
int preparesNothing(Msg *) {
  return 0;
}

int step(InnerMessage *, InnerMessage *, void *) {
  return 0;
}

void registerAll() {
  char sStep[] = "badStep";
  cvtFmtAddPlug(f_sFormat, knowsNoType, writesNoType, preparesNothing);
  cvtIdAddFunction(sStep, step);
}

}  // namespace

EXPORTED int badInit(void *) {
  registerAll();
  return 7;
}

EXPORTED int throwInit(void *) {
  registerAll();
  throw std::runtime_error("no licence");
}

EXPORTED int throwNumberInit(void *) {
  registerAll();
  throw 7;
}

EXPORTED int quietInit(void *) {
  return 0;
}

EXPORTED int nullDispatchersInit(void *) {
  return cvtFmtAddPlug(f_sFormat, nullptr, nullptr, preparesNothing);
}

EXPORTED int nullFormatInit(void *) {
  registerAll();
  return cvtFmtAddPlug(f_sFormat, knowsNoType, writesNoType, nullptr);
}

EXPORTED int nullNameInit(void *) {
  return cvtFmtAddPlug(nullptr, knowsNoType, writesNoType, preparesNothing);
}

EXPORTED int noFunctionsInit(void *) {
  registerAll();
  return 0;
}

// A symbol that is there and is null.
asm(".globl zeroInit\n.set zeroInit, 0\n");
