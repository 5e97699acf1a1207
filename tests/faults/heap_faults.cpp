// The program's own allocation functions stand before the C library's, or before those of the address
// sanitizer, which goes on watching what they give.
#include "heap_faults.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace faults {
constinit Trigger g_heap;
}

using faults::g_heap;

#define EXPORTED extern "C" __attribute__((visibility("default")))

// The C library's; the sanitizer's, where there is one.
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void *__libc_memalign(size_t, size_t);
__attribute__((weak)) void *__interceptor_malloc(size_t);
__attribute__((weak)) void *__interceptor_calloc(size_t, size_t);
__attribute__((weak)) void *__interceptor_realloc(void *, size_t);
__attribute__((weak)) void *__interceptor_memalign(size_t, size_t);
}
#define REAL(function) (__interceptor_##function != nullptr ? __interceptor_##function : __libc_##function)

bool faults::countsHeap() {
  g_heap.arm(0, false);
  // By their addresses, as the loader's: a checker replaces what stands there.
  void *(*volatile fMalloc)(size_t) = std::malloc;
  void *(*volatile fNew)(size_t) = ::operator new;
  std::free(fMalloc(1));
  ::operator delete(fNew(1));
  g_heap.disarm();
  return g_heap.calls() == 2;
}

namespace {

template <class Allocate>
void *give(Allocate allocate) {
  if (!g_heap.fails()) return allocate();
  errno = ENOMEM;
  return nullptr;
}

}  // namespace

EXPORTED void *malloc(size_t nSize) {
  return give([&] { return REAL(malloc)(nSize); });
}
EXPORTED void *calloc(size_t nNum, size_t nSize) {
  return give([&] { return REAL(calloc)(nNum, nSize); });
}
EXPORTED void *realloc(void *p, size_t nSize) {
  return give([&] { return REAL(realloc)(p, nSize); });
}
EXPORTED void *memalign(size_t nAlignment, size_t nSize) {
  return give([&] { return REAL(memalign)(nAlignment, nSize); });
}
EXPORTED void *aligned_alloc(size_t nAlignment, size_t nSize) {
  return memalign(nAlignment, nSize);
}
EXPORTED int posix_memalign(void **pp, size_t nAlignment, size_t nSize) {
  void *const p = memalign(nAlignment, nSize);
  if (p == nullptr) return ENOMEM;
  *pp = p;
  return 0;
}

// The sanitizer's own operators do not come by malloc.
void *operator new(size_t nSize) {
  void *const p = malloc(nSize == 0 ? 1 : nSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void *operator new(size_t nSize, const std::nothrow_t &) noexcept {
  return malloc(nSize == 0 ? 1 : nSize);
}
void *operator new(size_t nSize, std::align_val_t nAlignment) {
  void *const p = memalign(static_cast<size_t>(nAlignment), nSize == 0 ? 1 : nSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void operator delete(void *p) noexcept {
  std::free(p);
}
void operator delete(void *p, size_t) noexcept {
  std::free(p);
}
void operator delete(void *p, std::align_val_t) noexcept {
  std::free(p);
}
void operator delete(void *p, size_t, std::align_val_t) noexcept {
  std::free(p);
}
