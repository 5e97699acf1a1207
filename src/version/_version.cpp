// _version.cpp: the version record.
#include "_version.h"

namespace {
char f_sMorvaneVerInfo[256] = "^__VERSION_ID__^=Version[Morvane_v1.7.7] Id[$Rev: 305 $] Build[Apr 15 2014]";
}

char *_cvt2_Get_Ver() {
  return f_sMorvaneVerInfo;
}
