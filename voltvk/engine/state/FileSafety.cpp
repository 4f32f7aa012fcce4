// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/FileSafety.h"

#include "voltvk/engine/state/FileDescriptor.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace voltvk {

std::optional<Unsafe> checkFile(int descriptor, bool closes) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) {
    return Unsafe{"cannot be examined", "check the permissions of its directory"};
  }
  if (!S_ISREG(status.st_mode)) {
    return Unsafe{"is not a regular file", "set VOLTVK_STATE to another path"};
  }
  if (status.st_uid != geteuid() && status.st_uid != 0) {
    return Unsafe{
        "belongs to user " + std::to_string(status.st_uid), "remove it or give it to the right user"};
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    return Unsafe{
        (status.st_mode & S_IWOTH) != 0 ? "can be written by everybody" : "can be written by its group",
        "check what it holds, then chmod 600 it"};
  }
  if (closes && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    fchmod(descriptor, S_IRUSR | S_IWUSR);  // fails for root's file, which root alone may close to others
  }
  return std::nullopt;
}

std::optional<Unsafe> checkFileBeside(const std::string& path, bool closes) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) {
    if (errno == ENOENT) {
      return std::nullopt;
    }
    return Unsafe{
        errno == ELOOP ? "is a symbolic link" : "cannot be opened",
        "find out who put it there, then remove it"};
  }
  struct stat status {};
  if (fstat(file.get(), &status) == 0 && status.st_nlink > 1) {
    return Unsafe{"is a link to another file as well", "find out who put it there, then remove it"};
  }
  return checkFile(file.get(), closes);
}

std::optional<Unsafe> checkDirectory(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || (status.st_mode & S_ISVTX) != 0) {
    return std::nullopt;
  }
  const bool foreignGroup = status.st_gid != getegid() && status.st_gid != 0;
  if ((status.st_mode & S_IWOTH) != 0 || ((status.st_mode & S_IWGRP) != 0 && foreignGroup)) {
    return Unsafe{
        (status.st_mode & S_IWOTH) != 0 ? "can be written by everybody" : "can be written by another group",
        "check what it holds, then chmod 700 it"};
  }
  return std::nullopt;
}

}  // namespace voltvk
