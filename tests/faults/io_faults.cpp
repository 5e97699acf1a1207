// The program's own functions stand before the C library's, which they call.
#include "io_faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace faults {
constinit Trigger g_open;
constinit Trigger g_read;
constinit Trigger g_stat;
constinit Trigger g_opendir;
constinit Trigger g_readdir;
constinit Trigger g_dlopen;
}  // namespace faults

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

// The function of that name behind this program's. Found anew each time: there is no state that a fork, or a
// call before main(), could find half made.
template <class F>
F *real(F *, const char *psName) {
  return reinterpret_cast<F *>(dlsym(RTLD_NEXT, psName));
}

template <class Result, class Call>
Result unless(faults::Trigger &trigger, int nError, Result failed, Call call) {
  if (!trigger.fails()) return call();
  errno = nError;
  return failed;
}

}  // namespace

EXPORTED int open(const char *psFile, int nFlags, ...) {
  va_list args;
  va_start(args, nFlags);
  const mode_t nMode = (nFlags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  return unless(faults::g_open, EMFILE, -1, [&] { return real(open, "open")(psFile, nFlags, nMode); });
}
EXPORTED int open64(const char *psFile, int nFlags, ...) {
  va_list args;
  va_start(args, nFlags);
  const mode_t nMode = (nFlags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  return open(psFile, nFlags, nMode);
}
EXPORTED FILE *fopen64(const char *psFile, const char *psMode) {
  return unless(faults::g_open, EMFILE, static_cast<FILE *>(nullptr),
                [&] { return real(fopen64, "fopen64")(psFile, psMode); });
}
EXPORTED ssize_t read(int nFile, void *p, size_t nSize) {
  return unless(faults::g_read, EIO, ssize_t{-1}, [&] { return real(read, "read")(nFile, p, nSize); });
}
EXPORTED int stat(const char *psFile, struct stat *pt) noexcept {
  return unless(faults::g_stat, EIO, -1, [&] { return real(stat, "stat")(psFile, pt); });
}
EXPORTED int stat64(const char *psFile, struct stat64 *pt) noexcept {
  return unless(faults::g_stat, EIO, -1, [&] { return real(stat64, "stat64")(psFile, pt); });
}
EXPORTED DIR *opendir(const char *psDir) {
  return unless(faults::g_opendir, EMFILE, static_cast<DIR *>(nullptr),
                [&] { return real(opendir, "opendir")(psDir); });
}
EXPORTED dirent *readdir(DIR *pt) {
  return unless(faults::g_readdir, EIO, static_cast<dirent *>(nullptr),
                [&] { return real(readdir, "readdir")(pt); });
}
EXPORTED void *dlopen(const char *psFile, int nFlags) noexcept {
  if (!faults::g_dlopen.fails()) return real(dlopen, "dlopen")(psFile, nFlags);
  return real(dlopen, "dlopen")("/nowhere/taken-away.so", nFlags);  // so that dlerror() knows, too
}
