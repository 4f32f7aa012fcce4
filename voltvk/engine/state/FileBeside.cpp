// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/FileBeside.h"

#include "text/Quote.h"
#include "voltvk/engine/state/Refusal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace voltvk {

namespace {

namespace fs = std::filesystem;

void requireDone(bool isDone, const std::string& path) {
  const int error = errno;
  require(isDone, TVK_INTERNAL, [&] {
    return tvp::text::quoted(path) + " cannot be written (" + std::strerror(error) +
           "); name a file in a directory that you can write to";
  });
}

}  // namespace

FileBeside::FileBeside(const std::string& path)
    : m_path(path), m_directory(fs::path(path).parent_path()),
      m_name((fs::path(m_directory) / ".voltvkctl-XXXXXX").string()),
      m_file(::mkostemp(m_name.data(), O_CLOEXEC)) {
  requireDone(static_cast<bool>(m_file), m_path);
}

FileBeside::~FileBeside() {
  if (!m_name.empty()) {
    ::unlink(m_name.c_str());
  }
}

void FileBeside::write(const std::string& contents) {
  for (std::size_t written = 0; written < contents.size();) {
    const ssize_t count = ::write(m_file.get(), contents.data() + written, contents.size() - written);
    requireDone(count >= 0 || errno == EINTR, m_path);
    written += count < 0 ? 0 : static_cast<std::size_t>(count);
  }
}

void FileBeside::store(mode_t mode) {
  requireDone(::fchmod(m_file.get(), mode) == 0 && ::fsync(m_file.get()) == 0, m_path);
}

void FileBeside::finish() {
  m_name.clear();
  const FileDescriptor entries(
      ::open(m_directory.empty() ? "." : m_directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A directory that may be written to but not read has no descriptor to wait for.
  requireDone(!entries || ::fsync(entries.get()) == 0 || errno == EINVAL, m_path);
}

void FileBeside::takePlace(mode_t mode) {
  store(mode);
  requireDone(std::rename(m_name.c_str(), m_path.c_str()) == 0, m_path);
  finish();
}

bool FileBeside::takeFreePlace(mode_t mode) {
  store(mode);
  int result = ::renameat2(AT_FDCWD, m_name.c_str(), AT_FDCWD, m_path.c_str(), RENAME_NOREPLACE);
  if (result != 0 && errno == EINVAL) {
    // A file system, such as one of a network, that can only replace.
    struct stat status {};
    errno = EEXIST;
    result = ::lstat(m_path.c_str(), &status) == 0 ? -1 : std::rename(m_name.c_str(), m_path.c_str());
  }
  if (result != 0 && errno == EEXIST) {
    return false;
  }
  requireDone(result == 0, m_path);
  finish();
  return true;
}

}  // namespace voltvk
