// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FILEHEADER_H
#define VOLTVK_ENGINE_STATE_FILEHEADER_H

#include <cstdint>
#include <optional>

namespace voltvk {

/** What the beginning of a database file says about it, read past SQLite. */
struct FileHeader {
  std::uint32_t applicationId = 0;
  std::uint32_t version = 0;  ///< of the layout of its tables
  std::uint64_t size = 0;     ///< in bytes, that the whole file should have

  /** @return nothing if the file does not begin as a database does */
  static std::optional<FileHeader> read(int descriptor);
};

}  // namespace voltvk

#endif
