#include "opened.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Where the C library's headers are left out, their declarations differ from system to system.
#define STANDS_BEFORE extern "C" __attribute__((visibility("default")))

namespace {

constexpr int kCreates = 0100;  // O_CREAT

// Never destroyed: files are opened until the process has ended, such as those that count what was covered.
std::vector<std::string> &all() {
  static auto &opened = *new std::vector<std::string>;
  return opened;
}

void note(const char *psWhat) {
  static const char *const psSeenLog =
      std::getenv("CVT2_SEEN_LOG");  // where the tests' own log notes its texts
  if (psWhat != nullptr && psSeenLog != nullptr && std::strcmp(psWhat, psSeenLog) == 0) return;
  all().emplace_back(psWhat == nullptr ? "(null)" : psWhat);
}

int openIt(int nDirectory, const char *psFile, int nFlags, int nMode) {
  note(psFile);
  return static_cast<int>(syscall(SYS_openat, nDirectory, psFile, nFlags, nMode));
}

int modeOf(int nFlags, va_list args) {
  return (nFlags & kCreates) != 0 ? va_arg(args, int) : 0;
}

template <class F>
F next(const char *psName) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, psName));
}

using FileOpen = FILE *(*)(const char *, const char *);
constexpr int kHere = -100;  // AT_FDCWD

}  // namespace

#define OPENS(name)                                             \
  STANDS_BEFORE int name(const char *psFile, int nFlags, ...) { \
    va_list args;                                               \
    va_start(args, nFlags);                                     \
    const int nMode = modeOf(nFlags, args);                     \
    va_end(args);                                               \
    return openIt(kHere, psFile, nFlags, nMode);                \
  }
#define OPENS_AT(name)                                                          \
  STANDS_BEFORE int name(int nDirectory, const char *psFile, int nFlags, ...) { \
    va_list args;                                                               \
    va_start(args, nFlags);                                                     \
    const int nMode = modeOf(nFlags, args);                                     \
    va_end(args);                                                               \
    return openIt(nDirectory, psFile, nFlags, nMode);                           \
  }
OPENS(open)
OPENS(open64)
OPENS_AT(openat)
OPENS_AT(openat64)

STANDS_BEFORE FILE *fopen(const char *psFile, const char *psMode) {
  note(psFile);
  return next<FileOpen>("fopen")(psFile, psMode);
}
STANDS_BEFORE FILE *fopen64(const char *psFile, const char *psMode) {
  note(psFile);
  return next<FileOpen>("fopen64")(psFile, psMode);
}

STANDS_BEFORE int socket(int nDomain, int nType, int nProtocol) {
  note("socket");
  return static_cast<int>(syscall(SYS_socket, nDomain, nType, nProtocol));
}
STANDS_BEFORE int getaddrinfo(const char *psHost, const char *psService, const void *pHints, void *pResult) {
  note(psHost);
  return next<int (*)(const char *, const char *, const void *, void *)>("getaddrinfo")(psHost, psService,
                                                                                        pHints, pResult);
}

namespace hostile {

std::vector<std::string> opened() {
  return all();
}

void forgetOpened() {
  all().clear();
}

}  // namespace hostile
