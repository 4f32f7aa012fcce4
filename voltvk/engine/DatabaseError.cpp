#include "voltvk/engine/DatabaseError.h"

#include <sqlite3.h>

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

}  // namespace voltvk
