// footprint.h: what the process holds of the system.
#pragma once

#include <string>

namespace life {

struct Footprint {
  long nHeap = 0;        // bytes in use by the heap's callers; 0 where only a checker knows them
  long nResident = 0;    // bytes of memory; 0 where a checker's own would count
  int nDescriptors = 0;  // open files

  std::string text() const;
};

Footprint footprint();

// Whether this build's heap can be measured, and the resident memory.
bool measuresHeap();
bool measuresResident();

}  // namespace life
