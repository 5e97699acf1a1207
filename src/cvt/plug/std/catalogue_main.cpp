// catalogue_main.cpp: cvt_function_catalogue, which prints docs/functions.md.
#include <cstdio>

#include "manual.h"

int main() {
  return std::fputs(cvt::functions::manual().c_str(), stdout) < 0 ? 1 : 0;
}
