// io_faults.h: files, directories and shared objects that cannot be had when it is told so, for the program
// and all that it loads.
#pragma once

#include "trigger.h"

namespace faults {
extern Trigger g_open;     // open, fopen64: no descriptor is left
extern Trigger g_read;     // read: the device fails
extern Trigger g_stat;     // stat, stat64: the device fails
extern Trigger g_opendir;  // no descriptor is left
extern Trigger g_readdir;  // the device fails
extern Trigger g_dlopen;   // there is no such object
}  // namespace faults
