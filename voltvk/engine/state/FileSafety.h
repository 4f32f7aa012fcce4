// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FILESAFETY_H
#define VOLTVK_ENGINE_STATE_FILESAFETY_H

#include <optional>
#include <string>

namespace voltvk {

/** Why a file or directory cannot be trusted, and what to do about it, as the end of a sentence about it. */
struct Unsafe {
  std::string what;
  std::string advice;
};

/**
 * Checks the file behind a descriptor: regular, of this user or of root, and not writable by anyone else. Its
 * mode becomes 0600 if others can only read it, as they can a copy that was restored from a backup.
 * @param closes false leaves the mode as it is
 */
std::optional<Unsafe> checkFile(int descriptor, bool closes = true);

/** Checks a file that SQLite keeps beside the database in the same way, if it exists. Follows no links. */
std::optional<Unsafe> checkFileBeside(const std::string& path, bool closes = true);

/**
 * Checks that nobody else can replace files in a directory: not everybody, unless only their own, and no
 * group that is neither this process's nor root's.
 */
std::optional<Unsafe> checkDirectory(const std::string& path);

}  // namespace voltvk

#endif
