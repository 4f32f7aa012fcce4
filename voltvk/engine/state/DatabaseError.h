// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_DATABASEERROR_H
#define VOLTVK_ENGINE_STATE_DATABASEERROR_H

#include <stdexcept>
#include <string>

struct sqlite3;

namespace voltvk {

/** What to do about a state file that cannot be used any more. */
inline constexpr const char* REPLACE_STATE =
    "move it and the files beside it away, then restore a backup or start with an empty one";

/** An error reported by SQLite, or damage that SQLite cannot see. */
class DatabaseError : public std::runtime_error {
public:
  /** @param code SQLite's primary result code. */
  DatabaseError(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}

  /** Another connection held the database longer than the time-out. */
  bool isBusy() const;
  /** The file can no longer be trusted: damaged, replaced, or removed. */
  bool isFileLost() const;
  /** The contents are damaged. */
  bool isDamage() const;
  /** What to do about a state that cannot be opened: a full disk is not a reason to give up the state. */
  const char* advice() const;

  /** An error that reports rows which contradict the rules or each other. @param text which, and how */
  static DatabaseError ofDamage(const std::string& text);

private:
  int m_code;
};

/**
 * Reports the latest call on a connection, which failed.
 * @param connection null if there was not even memory for it
 * @param code any result code but success
 * @throws std::bad_alloc if memory ran out, DatabaseError with SQLite's sentence otherwise
 */
[[noreturn]] void throwDatabaseError(sqlite3* connection, int code);

}  // namespace voltvk

#endif
