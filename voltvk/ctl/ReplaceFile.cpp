// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/ReplaceFile.h"

#include "text/Quote.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace voltvk::ctl {

namespace {

[[noreturn]] void fail(const std::string& path, int error) {
  throw std::runtime_error(
      tvp::text::quoted(path) + " cannot be written (" + std::strerror(error) +
      "); name a file in a directory that you can write to");
}

/** A file beside another, removed on destruction unless it has taken the other's place. */
class FileBeside {
public:
  explicit FileBeside(const std::string& path)
      : m_path(path), m_name((std::filesystem::path(path).parent_path() / ".voltvkctl-XXXXXX").string()),
        m_file(::mkostemp(m_name.data(), O_CLOEXEC)) {
    if (!m_file) {
      fail(m_path, errno);
    }
  }
  ~FileBeside() {
    if (!m_name.empty()) {
      ::unlink(m_name.c_str());
    }
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  void write(const std::string& contents, mode_t mode) {
    for (std::size_t written = 0; written < contents.size();) {
      const ssize_t count = ::write(m_file.get(), contents.data() + written, contents.size() - written);
      if (count < 0 && errno != EINTR) {
        fail(m_path, errno);
      }
      written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    if (::fchmod(m_file.get(), mode) != 0 || ::fsync(m_file.get()) != 0) {
      fail(m_path, errno);
    }
  }

  void takePlace() {
    if (std::rename(m_name.c_str(), m_path.c_str()) != 0) {
      fail(m_path, errno);
    }
    m_name.clear();
  }

private:
  const std::string m_path;
  std::string m_name;
  const FileDescriptor m_file;
};

/** The mode that files get which this process creates. */
mode_t usualMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666U & ~mask;
}

}  // namespace

void replaceFile(const std::string& path, const std::string& contents) {
  struct stat before {};
  const bool exists = ::lstat(path.c_str(), &before) == 0;
  if (exists && !S_ISREG(before.st_mode)) {
    throw std::runtime_error(
        tvp::text::quoted(path) + " is not a regular file and is left alone; name another file");
  }
  FileBeside file(path);
  file.write(contents, exists ? before.st_mode & 0777U : usualMode());
  file.takePlace();
}

}  // namespace voltvk::ctl
