// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_STATEFILE_H
#define VOLTVK_ENGINE_STATE_STATEFILE_H

#include "voltvk/engine/state/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace voltvk {

/** Marks a database as a state of this library ("TVK1"), in SQLite's application_id. */
constexpr std::uint32_t STATE_APPLICATION_ID = 0x54564B31U;
/** Layout of the tables, in SQLite's user_version. */
constexpr std::uint32_t STATE_VERSION = 4;

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
   * Creates the directory (mode 0700) and an empty file (0600) if they are missing, and checks that the file,
   * the files beside it and its directory may be used. Keeps other processes from creating or examining the
   * file until release is called, and if there is reason for this process to do so, from opening it.
   *
   * The file stays open until close: closing any descriptor of it would drop the locks that SQLite holds, so
   * neither this nor close may be called while this process has the database open.
   * @param until when to give up waiting for a process that is creating or examining the file
   * @throws Refusal TVK_NO_DRIVER with a sentence for an administrator, TVK_BUSY
   */
  void prepare(std::chrono::steady_clock::time_point until);

  /**
   * Does the same for a file that is only to be copied, and alters nothing: neither the file nor its
   * directory is created, and no mode is corrected. Until close, no other process opens the file.
   * @return false if there is no file
   */
  bool prepareForCopy(std::chrono::steady_clock::time_point until);

  /** Stands for another file from now on. Not while a file is open. */
  void moveTo(const std::string& path) { m_path = path; }

  /** Lets other processes continue: the file has its tables and is sound. */
  void release() const;

  void close();

  /** True while the path names the file that prepare saw, and it can be used in the way that it was opened.
   */
  bool isSame() const;

  /** Somebody had the database open when the file was prepared. */
  bool wasInUse() const { return m_wasInUse; }
  /** The file is empty: its tables have to be created. */
  bool isNew() const { return m_size == 0; }
  /**
   * A write-ahead log was left behind and nobody uses the file: the last process that did was ended by force,
   * or the machine was.
   */
  bool wasLeftOpen() const { return m_wasLeftOpen; }
  /** The file lies on a file system that is mounted read-only: it can be read but not changed. */
  bool isReadOnly() const { return m_isReadOnly; }
  /**
   * Nobody else is changing it either: it may be mounted with write access elsewhere. isSame finds out if
   * that is no longer so.
   */
  bool isFrozen() const { return m_isReadOnly && !m_wasInUse && !m_wasLeftOpen; }
  /** The present size in bytes. */
  std::uint64_t currentSize() const;

private:
  void makeDirectorys();
  void openFile(int creation);
  void checkSafety(bool closes) const;
  void waitForTurn(int kind, std::chrono::steady_clock::time_point until) const;
  void examine();
  bool isInUse() const;
  bool hasLog() const;
  void checkHeader() const;
  [[noreturn]] void refuse(const std::string& what, const std::string& advice) const;

  std::string m_path;
  std::optional<FileDescriptor> m_file;
  std::uint64_t m_size = 0;
  bool m_wasInUse = false;
  bool m_wasLeftOpen = false;
  bool m_isReadOnly = false;
  dev_t m_device = 0;
  ino_t m_inode = 0;
  timespec m_modified{};
};

}  // namespace voltvk

#endif
