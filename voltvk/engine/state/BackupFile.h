// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_BACKUPFILE_H
#define VOLTVK_ENGINE_STATE_BACKUPFILE_H

#include "voltvk/engine/state/Backings.h"
#include "voltvk/engine/state/Connection.h"

#include <cstdint>
#include <string>

namespace voltvk {

/** What a backup says of itself. */
struct BackupLabel {
  std::string product;      ///< version of the product that made it; empty for a copy that was made otherwise
  std::uint32_t time = 0;   ///< seconds since 1970; 0 for a copy that was made otherwise
  std::int64_t layout = 0;  ///< version of its tables
  BackingChoice backing;
};

/**
 * A copy of a state in one file, which is read into a database of this process's own: the file itself is
 * never changed. Belongs to one thread. Functions throw Refusal, with the name of the file and what to do.
 */
class BackupFile {
public:
  /**
   * Writes what a state has at one moment, for the file's owner alone; the file is whole and on the disk on
   * return.
   * @param state may be read and changed by others meanwhile
   * @param path a new file, or a regular file if it may be replaced
   * @param product version of the product, for the label
   */
  static void write(Connection& state, const std::string& path, const std::string& product, bool mayReplace);

  /**
   * Reads a backup, checks all of it, and converts one of an earlier version.
   * @throws Refusal TVK_INVALID_ARGUMENT if the file cannot be read or trusted, is not a backup, is damaged,
   * or comes from a newer version
   */
  explicit BackupFile(const std::string& path);

  /** Absolute. */
  const std::string& path() const { return m_path; }
  const BackupLabel& label() const { return m_label; }

  /** Everything that the backup has, with the present layout. What is written here does not reach the file.
   */
  Connection& contents() { return m_contents; }

  /**
   * Takes over from a state which numbers drives of the machine have that the backup does not know, and which
   * one was given last. @param state is read within the caller's transaction
   */
  void adoptNumbers(Connection& state);

  /**
   * Replaces the configuration of a state, heat and statistics included, within the caller's transaction.
   * Kept is what is not part of a configuration: faults, the last refusal, which identifiers have been given,
   * and the events, on which clients go on.
   * @param withEvents the state is new: the events of the backup come with it
   */
  void copyTo(Connection& state, bool withEvents);

private:
  void requireTrusted() const;
  void readLabel(Connection& copy);
  void convert(Connection& copy);
  [[noreturn]] void refuse(const std::string& what, const std::string& advice) const;

  const std::string m_path;
  Connection m_contents{""};
  BackupLabel m_label;
};

}  // namespace voltvk

#endif
