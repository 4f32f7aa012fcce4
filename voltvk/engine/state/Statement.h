// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_STATEMENT_H
#define VOLTVK_ENGINE_STATE_STATEMENT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

struct sqlite3_stmt;

namespace voltvk {

class Connection;

/**
 * A prepared statement with its arguments. Must not outlive its connection, and keeps a read transaction open
 * until it is destroyed or has returned its last row. Functions throw DatabaseError.
 */
class Statement {
public:
  /** @param arguments integers, enumerations and texts for the question marks, in order. */
  template <typename... Arguments>
  Statement(Connection& connection, const char* sql, const Arguments&... arguments)
      : Statement(connection, sql, Unbound{}) {
    (bind(arguments), ...);
  }

  /** The same for a statement that is put together. */
  template <typename... Arguments>
  Statement(Connection& connection, const std::string& sql, const Arguments&... arguments)
      : Statement(connection, sql.c_str(), arguments...) {}

  /** Steps to the next row. @return false if there is none. */
  bool step();
  /** Runs a statement that returns no rows; afterwards it can be run again. */
  void run();
  /** Runs a statement again with other arguments. */
  template <typename... Arguments>
  void runWith(const Arguments&... arguments) {
    rebind(arguments...);
    run();
  }
  /** Starts over with other arguments. */
  template <typename... Arguments>
  void rebind(const Arguments&... arguments) {
    reset();
    (bind(arguments), ...);
  }

  /** Runs a statement with the columns of another's row as its arguments. */
  void runWithRowOf(const Statement& other);

  std::int64_t integer(int column) const;
  std::uint64_t unsignedInteger(int column) const { return static_cast<std::uint64_t>(integer(column)); }
  /** The column as another integer or enumeration type. Throws DatabaseError if it does not fit. */
  template <typename T>
  T as(int column) const {
    const std::int64_t value = integer(column);
    const T narrow = static_cast<T>(value);
    if (static_cast<std::int64_t>(narrow) != value) {
      refuse(column);
    }
    return narrow;
  }
  bool isNull(int column) const;
  std::string text(int column) const;

private:
  struct Unbound {};
  Statement(Connection& connection, const char* sql, Unbound);

  template <typename T>
  void bind(const T& argument) {
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
      bindInteger(static_cast<std::int64_t>(argument));
    } else {
      bindText(argument);
    }
  }
  void reset();
  void bindInteger(std::int64_t value);
  void bindText(std::string_view value);
  [[noreturn]] void fail(int code) const;
  [[noreturn]] void refuse(int column) const;

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };
  Connection& m_connection;
  std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
  int m_bound = 0;
};

}  // namespace voltvk

#endif
