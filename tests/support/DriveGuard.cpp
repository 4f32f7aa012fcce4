// SPDX-License-Identifier: Apache-2.0
// Preloaded into every program of the suite: a program that opens a block device for writing is ended before
// it has. Tests that write to drives do so in the emulated machine, where this is not.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

void endIfDrive(int directory, const char* path) {
  struct stat status;
  if (path != nullptr && ::fstatat(directory, path, &status, 0) == 0 && S_ISBLK(status.st_mode)) {
    std::fprintf(stderr, "A test tried to write to the drive %s of this machine.\n", path);
    std::abort();
  }
}

// By the system call itself, as the programs that are guarded make calls between fork() and exec().
int guardedOpen(int directory, const char* path, int flags, mode_t mode) {
  if ((flags & O_ACCMODE) != O_RDONLY) {
    endIfDrive(directory, path);
  }
  return static_cast<int>(::syscall(SYS_openat, directory, path, flags, mode));
}

std::FILE* guardedStream(const char* function, const char* path, const char* mode) {
  if (std::strpbrk(mode, "wa+") != nullptr) {
    endIfDrive(AT_FDCWD, path);
  }
  using Function = std::FILE* (*)(const char*, const char*);
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, function))(path, mode);
}

mode_t modeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

// The names are those of the C library, with its spelling of the parameters' types.
#define TVP_GUARDED extern "C" __attribute__((visibility("default")))

TVP_GUARDED int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return guardedOpen(AT_FDCWD, path, flags, mode);
}
TVP_GUARDED int open64(const char* path, int flags, ...) __attribute__((alias("open")));
TVP_GUARDED int __open_2(const char* path, int flags) {
  return guardedOpen(AT_FDCWD, path, flags, 0);
}
TVP_GUARDED int __open64_2(const char* path, int flags) {
  return guardedOpen(AT_FDCWD, path, flags, 0);
}
TVP_GUARDED int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return guardedOpen(directory, path, flags, mode);
}
TVP_GUARDED int openat64(int directory, const char* path, int flags, ...) __attribute__((alias("openat")));
TVP_GUARDED int creat(const char* path, mode_t mode) {
  return guardedOpen(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}
TVP_GUARDED std::FILE* fopen(const char* path, const char* mode) {
  return guardedStream("fopen", path, mode);
}
TVP_GUARDED std::FILE* fopen64(const char* path, const char* mode) {
  return guardedStream("fopen64", path, mode);
}
