// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Connection.h"

#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Statement.h"

#include <sqlite3.h>

#include <cctype>

namespace voltvk {

namespace {

constexpr const char* FULL_DURABILITY = "PRAGMA synchronous = FULL";

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

void Connection::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

void Connection::Closer::operator()(sqlite3* handle) const {
  sqlite3_close_v2(handle);
}

Connection::Connection(const std::string& path, Access access) {
  sqlite3* handle = nullptr;
  const int flags = (access == Access::Change ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) |
                    SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW;
  const std::string uri = uriOf(path) + (access == Access::Frozen ? "?immutable=1" : "");
  int code = sqlite3_open_v2(uri.c_str(), &handle, flags, nullptr);
  m_handle.reset(handle);
  if (code != SQLITE_OK) {
    throwDatabaseError(handle, code);
  }
  waitAtMost(BUSY_TIMEOUT);
  sqlite3_stmt* rollback = nullptr;
  code = sqlite3_prepare_v3(handle, "ROLLBACK", -1, SQLITE_PREPARE_PERSISTENT, &rollback, nullptr);
  m_rollback.reset(rollback);
  if (code != SQLITE_OK) {
    throwDatabaseError(handle, code);
  }
}

void Connection::waitAtMost(std::chrono::milliseconds time) {
  sqlite3_busy_timeout(m_handle.get(), static_cast<int>(time.count()));
}

void Connection::execute(const char* sql) {
  int code = sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    throwDatabaseError(m_handle.get(), code);
  }
}

std::int64_t Connection::number(const char* sql) {
  Statement query(*this, sql);
  return query.step() ? query.integer(0) : 0;
}

void Connection::copyFrom(Connection& source) {
  constexpr int ALL_PAGES = -1;
  sqlite3_backup* const copy = sqlite3_backup_init(handle(), "main", source.handle(), "main");
  const int code = copy == nullptr ? sqlite3_errcode(handle()) : sqlite3_backup_step(copy, ALL_PAGES);
  const int end = sqlite3_backup_finish(copy);
  if (copy == nullptr || end != SQLITE_OK) {
    throwDatabaseError(handle(), copy == nullptr ? code : end);
  }
  if (code != SQLITE_DONE) {
    throw DatabaseError(code, sqlite3_errstr(code));  // busy, which is no error to the last call
  }
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

bool Connection::isInTransaction() const {
  return sqlite3_get_autocommit(m_handle.get()) == 0;
}

void Connection::rollBack() noexcept {
  // An error that ends the transaction by itself leaves nothing to roll back.
  if (isInTransaction()) {
    sqlite3_step(m_rollback.get());
    sqlite3_reset(m_rollback.get());
  }
}

void Connection::settle() {
  if (isInTransaction()) {
    execute("ROLLBACK");
  }
  if (m_isLessDurable && !m_isHasty) {
    execute(FULL_DURABILITY);
    m_isLessDurable = false;
  }
}

void Connection::dropDurability() noexcept {
  m_isHasty = true;
  m_isLessDurable = true;
  sqlite3_exec(m_handle.get(), "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
}

void Connection::restoreDurability() noexcept {
  m_isHasty = false;
  m_isLessDurable = sqlite3_exec(m_handle.get(), FULL_DURABILITY, nullptr, nullptr, nullptr) != SQLITE_OK;
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
  connection.settle();
  connection.execute(kind == Kind::Change ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
  if (m_open) {
    m_connection.rollBack();
  }
}

void Transaction::commit() {
  m_connection.execute("COMMIT");
  m_open = false;
}

HasteGuard::HasteGuard(Connection& connection) : m_connection(connection) {
  connection.waitAtMost(std::chrono::milliseconds(0));
  connection.dropDurability();
}

HasteGuard::~HasteGuard() {
  m_connection.restoreDurability();
  m_connection.waitAtMost(BUSY_TIMEOUT);
}

}  // namespace voltvk
