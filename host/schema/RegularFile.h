// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_REGULARFILE_H
#define HOST_SCHEMA_REGULARFILE_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace tvp::host {

/** A file that cannot be read; what() says why, as the end of a sentence. */
class FileError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/**
 * A file that somebody named, open for reading. Only regular files are: a FIFO could be waited for without
 * end, a device read without end. Belongs to one thread.
 */
class RegularFile {
public:
  /** @throws FileError */
  explicit RegularFile(const std::string& name);
  ~RegularFile();
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  /** Bytes, as of the opening. */
  std::uint64_t size() const { return m_size; }
  /** Up to so many bytes from an offset; fewer if the file ends there. @throws FileError */
  std::string read(std::uint64_t offset, std::size_t count) const;

private:
  int m_descriptor;
  std::uint64_t m_size = 0;
};

}  // namespace tvp::host

#endif
