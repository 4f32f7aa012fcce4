// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_CONNECTION_H
#define VOLTVK_ENGINE_STATE_CONNECTION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace voltvk {

/** How long a call waits for another process before it gives up. */
constexpr std::chrono::milliseconds BUSY_TIMEOUT{5000};

/**
 * A connection to the state's database. Belongs to one thread at a time. Functions throw DatabaseError.
 */
class Connection {
public:
  enum class Access {
    Change,
    Read,   ///< a file that cannot be written
    Frozen  ///< a file that cannot be written by anyone and has no write-ahead log: nothing is locked
  };

  /**
   * @param path an existing file, absolute and without symbolic links; empty for a database of its own, which
   *   is gone with the connection
   */
  explicit Connection(const std::string& path, Access access = Access::Change);

  /** Sets how long statements wait for other connections; initially BUSY_TIMEOUT. */
  void waitAtMost(std::chrono::milliseconds time);

  /** Runs one or more statements that return no rows. */
  void execute(const char* sql);
  /** The single number that a query returns; 0 if it returns no row. */
  std::int64_t number(const char* sql);

  /** Replaces everything by a copy of what another database has at one moment, while others change it. */
  void copyFrom(Connection& source);

  /** Moves the contents of the write-ahead log into the file, unless that would mean waiting for others. */
  void emptyLog();

  /** Whether closing the last connection of all leaves the write-ahead log behind; initially not. */
  void keepLogOnClose(bool keep);

  std::int64_t lastInsertedId() const;
  /** Number of rows changed by the last statement. */
  int changes() const;

  sqlite3* handle() const { return m_handle.get(); }

  // For Transaction and HasteGuard. What cannot be done on the way out for lack of memory is made up for by
  // settle(), which the next transaction begins with.

  /** Ends a transaction, if there is one. Its statement was prepared in advance: that takes memory. */
  void rollBack() noexcept;
  void settle();
  void dropDurability() noexcept;
  void restoreDurability() noexcept;

private:
  bool isInTransaction() const;

  struct Closer {
    void operator()(sqlite3* handle) const;
  };
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };
  std::unique_ptr<sqlite3, Closer> m_handle;
  std::unique_ptr<sqlite3_stmt, Finalizer> m_rollback;
  bool m_isHasty = false;
  bool m_isLessDurable = false;  ///< than it is to be without haste
};

/** A transaction that is rolled back on destruction unless it was committed. */
class Transaction {
public:
  /** A read transaction sees one state throughout; a change takes the write lock at once. */
  enum class Kind { Read, Change };

  Transaction(Connection& connection, Kind kind);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit();

private:
  Connection& m_connection;
  bool m_open = true;
};

/** During its lifetime, changes on a connection wait neither for other connections nor for the disk. */
class HasteGuard {
public:
  explicit HasteGuard(Connection& connection);
  ~HasteGuard();
  HasteGuard(const HasteGuard&) = delete;
  HasteGuard& operator=(const HasteGuard&) = delete;

private:
  Connection& m_connection;
};

}  // namespace voltvk

#endif
