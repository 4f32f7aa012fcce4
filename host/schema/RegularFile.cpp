// SPDX-License-Identifier: Apache-2.0
#include "host/schema/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tvp::host {
namespace {

/** A file descriptor that only a constructor owns so far. */
[[noreturn]] void closeAndFail(int descriptor, const std::string& problem) {
  ::close(descriptor);
  throw FileError(problem);
}

}  // namespace

RegularFile::RegularFile(const std::string& name)
    : m_descriptor(::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
  if (m_descriptor < 0) {
    throw FileError(std::strerror(errno));
  }
  struct stat status {};
  if (::fstat(m_descriptor, &status) != 0) {
    closeAndFail(m_descriptor, std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    closeAndFail(m_descriptor, "it is not a regular file");
  }
  m_size = static_cast<std::uint64_t>(status.st_size);
}

RegularFile::~RegularFile() {
  ::close(m_descriptor);
}

std::string RegularFile::read(std::uint64_t offset, std::size_t count) const {
  // In steps, since the count is often only a limit that no file comes near.
  constexpr std::size_t STEP = std::size_t{64} << 10U;
  std::string bytes;
  std::size_t have = 0;
  while (have < count) {
    bytes.resize(have + std::min(count - have, STEP));
    const ssize_t got =
        ::pread(m_descriptor, bytes.data() + have, bytes.size() - have, static_cast<off_t>(offset + have));
    if (got < 0 && errno != EINTR) {
      throw FileError(std::strerror(errno));
    }
    if (got == 0) {
      break;
    }
    have += got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  bytes.resize(have);
  return bytes;
}

}  // namespace tvp::host
