// seen.h: what nobody sees, the compiler may leave out: a piece of memory that is made and dropped, or most of it.
#pragma once

namespace test {

inline const void *volatile g_pSeen = nullptr;

// Has the memory be there, and hold what was written to it.
inline void see(const void *pMemory) {
  g_pSeen = pMemory;
}

}  // namespace test
