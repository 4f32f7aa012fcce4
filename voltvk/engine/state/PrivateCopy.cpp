// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/PrivateCopy.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/StateFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>

namespace voltvk {

namespace {

/** Nobody has the database open, and nobody can open it: what its last user left behind belongs to it. */
void copyFiles(const std::string& from, const std::string& to) {
  for (const char* suffix : {"", "-wal", "-journal"}) {
    if (std::filesystem::exists(from + suffix)) {
      std::filesystem::copy_file(from + suffix, to + suffix);
    }
  }
}

/** Copies a database that others may be reading and changing. */
void copyDatabase(
    const std::string& from, const std::string& to, std::chrono::steady_clock::time_point until) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
  Connection source(from, Connection::Access::Read);
  source.keepLogOnClose(true);
  source.waitAtMost(std::max(left, std::chrono::milliseconds(0)));
  {
    // SQLite opens what exists: so only the owner can read the copy, from the beginning.
    const FileDescriptor made(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  }
  Connection(to).copyFrom(source);
}

}  // namespace

bool PrivateCopy::make(std::chrono::steady_clock::time_point until) {
  vanish();
  StateFile file(m_original);
  const bool exists = file.prepareForCopy(until);
  m_original = file.path();
  try {
    std::string place = std::filesystem::temp_directory_path() / "voltvk-dry-run-XXXXXX";
    if (::mkdtemp(place.data()) == nullptr) {
      throw std::filesystem::filesystem_error(place, std::error_code(errno, std::generic_category()));
    }
    m_directory = place;
    if (exists && !file.wasInUse()) {
      copyFiles(m_original, path());
    }
  } catch (const std::filesystem::filesystem_error& error) {
    throw Refusal(
        TVK_INTERNAL, std::string("the state cannot be copied for a dry run (") + error.what() +
                          "); make room for it in the directory for temporary files");
  }
  if (exists && file.wasInUse()) {
    copyDatabase(m_original, path(), until);
  }
  return !file.isReadOnly();
}

void PrivateCopy::vanish() noexcept {
  std::error_code ignored;
  if (!m_directory.empty()) {
    std::filesystem::remove_all(m_directory, ignored);
    m_directory.clear();
  }
}

}  // namespace voltvk
