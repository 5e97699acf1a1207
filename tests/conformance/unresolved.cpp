// unresolved.cpp: a plug-in that calls a function which nobody has. Its initialiser would succeed.
extern "C" int nobodyHasThisFunction();

extern "C" __attribute__((visibility("default"))) int unresolvedInit(void *ptXmlNode) {
  return ptXmlNode == nullptr ? nobodyHasThisFunction() : 0;
}
