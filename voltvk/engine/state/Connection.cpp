// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Connection.h"

#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Statement.h"

#include <sqlite3.h>

#include <cctype>

namespace voltvk {

void Connection::Closer::operator()(sqlite3* handle) const {
  sqlite3_close_v2(handle);
}

namespace {

/** The path as a URI in which only letters, digits and slashes stand for themselves. */
std::string uriOf(const std::string& path) {
  constexpr const char* DIGITS = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '/' || (byte < 0x80 && std::isalnum(byte) != 0)) {
      uri += c;
    } else {
      uri += {'%', DIGITS[byte >> 4U], DIGITS[byte & 0xFU]};
    }
  }
  return uri;
}

}  // namespace

Connection::Connection(const std::string& path, Access access) {
  sqlite3* handle = nullptr;
  const int flags = (access == Access::Change ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) |
                    SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW;
  const std::string uri = uriOf(path) + (access == Access::Frozen ? "?immutable=1" : "");
  int code = sqlite3_open_v2(uri.c_str(), &handle, flags, nullptr);
  m_handle.reset(handle);
  if (code != SQLITE_OK) {
    throw DatabaseError(code & 0xff, handle == nullptr ? "out of memory" : sqlite3_errmsg(handle));
  }
  waitAtMost(BUSY_TIMEOUT);
}

void Connection::waitAtMost(std::chrono::milliseconds time) {
  sqlite3_busy_timeout(m_handle.get(), static_cast<int>(time.count()));
}

void Connection::execute(const char* sql) {
  int code = sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    throw DatabaseError(code & 0xff, sqlite3_errmsg(m_handle.get()));
  }
}

std::int64_t Connection::number(const char* sql) {
  Statement query(*this, sql);
  return query.step() ? query.integer(0) : 0;
}

void Connection::emptyLog() {
  waitAtMost(std::chrono::milliseconds(0));
  // Others may be reading or writing: then the log stays as it is, which does no harm.
  sqlite3_wal_checkpoint_v2(m_handle.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  waitAtMost(BUSY_TIMEOUT);
}

void Connection::keepLogOnClose(bool keep) {
  sqlite3_db_config(m_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keep ? 1 : 0, nullptr);
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
  connection.waitAtMost(std::chrono::milliseconds(0));
  sqlite3_exec(connection.handle(), "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
}

HasteGuard::~HasteGuard() {
  sqlite3_exec(m_connection.handle(), "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
  m_connection.waitAtMost(BUSY_TIMEOUT);
}

}  // namespace voltvk
