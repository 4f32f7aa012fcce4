// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Connection.h"

#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Statement.h"

#include <sqlite3.h>

namespace voltvk {

void Connection::Closer::operator()(sqlite3* handle) const {
  sqlite3_close_v2(handle);
}

Connection::Connection(const std::string& path) {
  sqlite3* handle = nullptr;
  int code = sqlite3_open_v2(
      path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW, nullptr);
  m_handle.reset(handle);
  if (code != SQLITE_OK) {
    throwDatabaseError(handle == nullptr ? SQLITE_NOMEM : code, sqlite3_errmsg(handle));
  }
  sqlite3_busy_timeout(handle, static_cast<int>(BUSY_TIMEOUT.count()));
}

void Connection::execute(const char* sql) {
  int code = sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    throwDatabaseError(code, sqlite3_errmsg(m_handle.get()));
  }
}

std::int64_t Connection::number(const char* sql) {
  Statement query(*this, sql);
  return query.step() ? query.integer(0) : 0;
}

std::int64_t Connection::lastInsertedId() const {
  return sqlite3_last_insert_rowid(m_handle.get());
}

int Connection::changes() const {
  return sqlite3_changes(m_handle.get());
}

Transaction::Transaction(Connection& connection, Kind kind) : m_connection(connection) {
  // Taking the write lock at the beginning rules out a deadlock with another process, and the data on which
  // the change is decided cannot be outdated by the time it is written.
  connection.execute(kind == Kind::Change ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
  if (m_open) {
    // An error that ends the transaction by itself leaves nothing to roll back; it is over either way.
    sqlite3_exec(m_connection.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void Transaction::commit() {
  m_connection.execute("COMMIT");
  m_open = false;
}

HasteGuard::HasteGuard(Connection& connection) : m_connection(connection) {
  sqlite3_busy_timeout(connection.handle(), 0);
  sqlite3_exec(connection.handle(), "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
}

HasteGuard::~HasteGuard() {
  sqlite3_exec(m_connection.handle(), "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
  sqlite3_busy_timeout(m_connection.handle(), static_cast<int>(BUSY_TIMEOUT.count()));
}

}  // namespace voltvk
