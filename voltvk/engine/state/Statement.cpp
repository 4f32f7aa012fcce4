// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Statement.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"

#include <sqlite3.h>

namespace voltvk {

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Statement::Statement(Connection& connection, const char* sql, Unbound) : m_connection(connection) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(connection.handle(), sql, -1, &statement, nullptr);
  m_statement.reset(statement);
  if (code != SQLITE_OK) {
    fail(code);
  }
}

void Statement::fail(int code) const {
  throwDatabaseError(m_connection.handle(), code);
}

void Statement::refuse(int column) const {
  throw DatabaseError::ofDamage(
      std::string(sqlite3_column_name(m_statement.get(), column)) + " is " + text(column));
}

void Statement::bindInteger(std::int64_t value) {
  int code = sqlite3_bind_int64(m_statement.get(), ++m_bound, value);
  if (code != SQLITE_OK) {
    fail(code);
  }
}

void Statement::bindText(std::string_view value) {
  int code = sqlite3_bind_text(
      m_statement.get(), ++m_bound, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
  if (code != SQLITE_OK) {
    fail(code);
  }
}

bool Statement::step() {
  int code = sqlite3_step(m_statement.get());
  if (code == SQLITE_ROW) {
    return true;
  }
  if (code != SQLITE_DONE) {
    fail(code);
  }
  return false;
}

void Statement::reset() {
  sqlite3_reset(m_statement.get());
  m_bound = 0;
}

void Statement::run() {
  step();
  reset();
}

void Statement::runWithRowOf(const Statement& other) {
  reset();
  for (int column = 0; column < sqlite3_column_count(other.m_statement.get()); ++column) {
    const int code = sqlite3_bind_value(
        m_statement.get(), ++m_bound, sqlite3_column_value(other.m_statement.get(), column));
    if (code != SQLITE_OK) {
      fail(code);
    }
  }
  run();
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(m_statement.get(), column);
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL;
}

std::string Statement::text(int column) const {
  const unsigned char* text = sqlite3_column_text(m_statement.get(), column);
  if (text == nullptr) {
    if (sqlite3_errcode(m_connection.handle()) == SQLITE_NOMEM) {
      fail(SQLITE_NOMEM);
    }
    return {};
  }
  return {
      reinterpret_cast<const char*>(text),
      static_cast<std::size_t>(sqlite3_column_bytes(m_statement.get(), column))};
}

}  // namespace voltvk
