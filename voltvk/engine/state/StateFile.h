// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_STATEFILE_H
#define VOLTVK_ENGINE_STATE_STATEFILE_H

#include "voltvk/engine/state/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace voltvk {

/** Marks a database as a state of this library ("TVK1"), in SQLite's application_id. */
constexpr std::uint32_t STATE_APPLICATION_ID = 0x54564B31U;
/** Layout of the tables, in SQLite's user_version. */
constexpr std::uint32_t STATE_VERSION = 1;

/**
 * The file that holds the state, seen from the outside: where it is and whether it may be opened.
 *
 * A file that is damaged, belongs to something else or is from a newer version is recognised by reading only
 * its header, so it is left exactly as it is.
 */
class StateFile {
public:
  /** $VOLTVK_STATE unless the process runs with raised privileges, else /var/lib/voltvk/state.db. */
  static std::string defaultPath();

  /** @param path absolute or relative to the current directory. */
  explicit StateFile(const std::string& path);

  /** The path without symbolic links in its directory if the directory exists, else as given. */
  const std::string& path() const { return m_path; }

  /**
   * Creates the directory (mode 0700) and an empty file (0600) if they are missing, checks that the file may
   * be used, and keeps other processes from checking or creating it until release is called.
   *
   * The file stays open until close: closing any descriptor of it would drop the locks that SQLite holds, so
   * neither this nor close may be called while this process has the database open.
   * @throws Refusal TVK_NO_DRIVER with a sentence for an administrator, TVK_BUSY
   */
  void prepare();

  /** Lets other processes continue: the file has its tables. */
  void release() const;

  void close();

  /** True while the path names the file that prepare saw. */
  bool isSame() const;

private:
  void makeDirectorys();
  void openFile();
  void waitForTurn() const;
  void checkHeader(std::uint64_t size) const;
  [[noreturn]] void refuse(const std::string& what, const std::string& advice) const;

  std::string m_path;
  std::optional<FileDescriptor> m_file;
  dev_t m_device = 0;
  ino_t m_inode = 0;
};

}  // namespace voltvk

#endif
