// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/DatabaseError.h"

#include <sqlite3.h>

#include <new>

namespace voltvk {

bool DatabaseError::isBusy() const {
  return m_code == SQLITE_BUSY || m_code == SQLITE_LOCKED;
}

bool DatabaseError::isFileLost() const {
  switch (m_code) {
  case SQLITE_CORRUPT:
  case SQLITE_NOTADB:
  case SQLITE_IOERR:
  case SQLITE_CANTOPEN:
  case SQLITE_READONLY:
  case SQLITE_PROTOCOL:
    return true;
  default:
    return false;
  }
}

bool DatabaseError::isDamage() const {
  return m_code == SQLITE_CORRUPT || m_code == SQLITE_NOTADB;
}

DatabaseError DatabaseError::ofDamage(const std::string& text) {
  return {SQLITE_CORRUPT, text};
}

const char* DatabaseError::advice() const {
  return isDamage()
             ? REPLACE_STATE
             : "see that its disk works and has room, and that it and the files beside it can be written";
}

void throwDatabaseError(sqlite3* connection, int code) {
  constexpr int PRIMARY_CODE = 0xff;
  if (connection == nullptr || (code & PRIMARY_CODE) == SQLITE_NOMEM ||
      sqlite3_extended_errcode(connection) == SQLITE_IOERR_NOMEM) {
    throw std::bad_alloc();
  }
  throw DatabaseError(code & PRIMARY_CODE, sqlite3_errmsg(connection));
}

}  // namespace voltvk
