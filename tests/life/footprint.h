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

// What a phase that takes nothing may still show. Pieces of the heap are not all of the size that was asked for (freed
// ones in the caches of threads count as used: CMakeLists.txt turns these off). With a sanitizer the C library does not
// use the exit entries of closed plug-ins again: some hundred bytes a start. The system gives memory in pages.
long heapBound();
constexpr long kResidentBound = 256L * 1024;

// Whether this build's heap can be measured, and the resident memory.
bool measuresHeap();
bool measuresResident();

}  // namespace life
