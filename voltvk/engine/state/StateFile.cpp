// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/StateFile.h"

#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/FileHeader.h"
#include "voltvk/engine/state/FileSafety.h"
#include "voltvk/engine/state/Refusal.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace voltvk {

namespace {

constexpr const char* DEFAULT_PATH = "/var/lib/voltvk/state.db";
constexpr const char* CHECK_PATH = "check the path in VOLTVK_STATE, or the permissions of its directory";

std::string errorText(int number) {
  std::array<char, 128> buffer{};
  return strerror_r(number, buffer.data(), buffer.size());
}

/** Splits into directory and file name; the directory of a bare name is ".". */
std::pair<std::string, std::string> split(const std::string& path) {
  std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    return {".", path};
  }
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

/** Resolves symbolic links of the directory, so that one file has one name. */
std::string resolved(const std::string& path) {
  auto [directory, name] = split(path);
  std::array<char, PATH_MAX> real{};
  if (realpath(directory.c_str(), real.data()) == nullptr) {
    if (errno == ENOMEM) {
      throw std::bad_alloc();  // a second name for the file would be worse
    }
    return path;
  }
  return std::string(real.data()) + (std::strcmp(real.data(), "/") == 0 ? "" : "/") + name;
}

/** Creates a directory and its parents. @return 0 or the error number. */
int makeDirectory(const std::string& directory) {
  if (mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST) {
    return 0;
  }
  auto [above, name] = split(directory);
  if (errno != ENOENT || above == directory || above == ".") {
    return errno;
  }
  int error = makeDirectory(above);
  if (error != 0) {
    return error;
  }
  return mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

std::uint64_t fileSize(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

std::string StateFile::defaultPath() {
  const char* path = secure_getenv("VOLTVK_STATE");
  return path != nullptr && *path != '\0' ? path : DEFAULT_PATH;
}

StateFile::StateFile(const std::string& path) : m_path(resolved(path)) {}

void StateFile::refuse(const std::string& what, const std::string& advice) const {
  throw Refusal(TVK_NO_DRIVER, "the state file " + m_path + " " + what + "; " + advice);
}

void StateFile::makeDirectorys() {
  const int error = makeDirectory(split(m_path).first);
  if (error != 0) {
    refuse("cannot be made, its directory: " + errorText(error), CHECK_PATH);
  }
  m_path = resolved(m_path);
}

void StateFile::openFile(int creation) {
  // O_NONBLOCK: a pipe in place of the file must not hang the caller.
  constexpr int FLAGS = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  m_file.emplace(open(m_path.c_str(), O_RDWR | creation | FLAGS, 0600));
  m_isReadOnly = !*m_file && errno == EROFS;
  if (m_isReadOnly) {
    m_file.emplace(open(m_path.c_str(), O_RDONLY | FLAGS));
  }
  if (!*m_file) {
    const int error = errno;
    if (error == ELOOP) {
      refuse("is a symbolic link, which is not followed", "set VOLTVK_STATE to the file itself");
    }
    refuse("cannot be opened: " + errorText(error), CHECK_PATH);
  }
  if (m_file->get() <= STDERR_FILENO) {
    // In a process whose standard streams are closed, its output would otherwise be written into the state.
    m_file.emplace(fcntl(m_file->get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!*m_file) {
      refuse("cannot be opened: " + errorText(errno), CHECK_PATH);
    }
  }
}

void StateFile::checkSafety(bool closes) const {
  if (const std::optional<Unsafe> unsafe = checkFile(m_file->get(), closes)) {
    refuse(unsafe->what, unsafe->advice);
  }
  const std::string directory = split(m_path).first;
  if (const std::optional<Unsafe> unsafe = checkDirectory(directory)) {
    refuse("is not safe: its directory " + directory + " " + unsafe->what, unsafe->advice);
  }
  for (const char* suffix : {"-wal", "-shm", "-journal"}) {
    if (const std::optional<Unsafe> unsafe = checkFileBeside(m_path + suffix, closes)) {
      refuse("is not safe: " + m_path + suffix + " beside it " + unsafe->what, unsafe->advice);
    }
  }
}

void StateFile::waitForTurn(int kind, std::chrono::steady_clock::time_point until) const {
  // This kind of lock is independent of those that SQLite uses on the same file.
  while (flock(m_file->get(), kind | LOCK_NB) != 0) {
    if (std::chrono::steady_clock::now() >= until) {
      throw Refusal(
          TVK_BUSY,
          "the state file " + m_path + " is being opened by another process; try again when that goes on");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

bool StateFile::hasLog() const {
  return fileSize(m_path + "-wal") > 0 || fileSize(m_path + "-journal") > 0;
}

bool StateFile::isInUse() const {
  // The bytes that SQLite locks: whoever has the database open holds a read lock on some of them.
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0x40000000;
  lock.l_len = 512;
  return fcntl(m_file->get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void StateFile::examine() {
  struct stat status {};
  if (fstat(m_file->get(), &status) != 0) {
    refuse("cannot be examined: " + errorText(errno), CHECK_PATH);
  }
  m_size = static_cast<std::uint64_t>(status.st_size);
  m_wasInUse = isInUse();
  m_wasLeftOpen = hasLog() && !m_wasInUse;
  m_modified = status.st_mtim;
  m_device = status.st_dev;
  m_inode = status.st_ino;
}

void StateFile::prepare(std::chrono::steady_clock::time_point until) {
  makeDirectorys();
  openFile(O_CREAT);
  checkSafety(true);
  // Whoever opens the file holds a share of the turn until SQLite's own locks show that it is in use, so that
  // the one who examines it is alone.
  waitForTurn(LOCK_SH, until);
  examine();
  if (!m_isReadOnly && (isNew() || m_wasLeftOpen)) {
    waitForTurn(LOCK_EX, until);
    examine();
  }
  checkHeader();
}

bool StateFile::prepareForCopy(std::chrono::steady_clock::time_point until) {
  m_path = resolved(m_path);
  struct stat status {};
  if (lstat(m_path.c_str(), &status) != 0 && errno == ENOENT) {
    return false;
  }
  openFile(0);
  checkSafety(false);
  waitForTurn(LOCK_EX, until);
  examine();
  checkHeader();
  return true;
}

void StateFile::release() const {
  flock(m_file->get(), LOCK_UN);
}

void StateFile::close() {
  m_file.reset();
}

void StateFile::checkHeader() const {
  if (isNew()) {
    if (fileSize(m_path + "-wal") > 0) {
      refuse("was cut to nothing while it was in use", REPLACE_STATE);
    }
    if (m_isReadOnly) {
      refuse("is empty and lies on a read-only file system", CHECK_PATH);
    }
    return;  // new, or left empty by a process that was killed while creating the tables
  }
  const std::optional<FileHeader> header = FileHeader::read(m_file->get());
  if (!header) {
    refuse("is not a database, or is damaged", REPLACE_STATE);
  }
  if (header->applicationId != STATE_APPLICATION_ID) {
    refuse("is a database of another program", "set VOLTVK_STATE to another path");
  }
  if (header->version > STATE_VERSION) {
    refuse(
        "is from a newer version (layout " + std::to_string(header->version) + ")",
        "install that version or use another state file");
  }
  // A journal next to the file may hold the rest of it, so only a file without one is known to be truncated.
  if (!hasLog() && m_size < header->size) {
    refuse("was cut short", REPLACE_STATE);
  }
}

std::uint64_t StateFile::currentSize() const {
  return fileSize(m_path);
}

bool StateFile::isSame() const {
  struct stat status {};
  if (lstat(m_path.c_str(), &status) != 0 || status.st_dev != m_device || status.st_ino != m_inode) {
    return false;
  }
  struct statvfs system {};
  if (m_isReadOnly && (statvfs(m_path.c_str(), &system) != 0 || (system.f_flag & ST_RDONLY) == 0)) {
    return false;
  }
  const bool touched =
      status.st_mtim.tv_sec != m_modified.tv_sec || status.st_mtim.tv_nsec != m_modified.tv_nsec;
  return !isFrozen() || (!touched && !hasLog());
}

}  // namespace voltvk
