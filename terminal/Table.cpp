// SPDX-License-Identifier: Apache-2.0
#include "terminal/Table.h"

#include "terminal/Width.h"
#include "text/Utf8.h"

#include <libsmartcols.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <sstream>

namespace tvp::terminal {
namespace {

constexpr const char* GAP = "  ";
constexpr const char* BOLD = "\033[1m";
constexpr const char* RED = "\033[31m";
constexpr const char* YELLOW = "\033[33m";
constexpr const char* PLAIN = "\033[0m";

/** What the library gives, or the exception: its functions fail only for want of memory. */
template <typename T>
T* made(T* object) {
  if (object == nullptr) {
    throw std::bad_alloc();
  }
  return object;
}

void done(int code) {
  if (code != 0) {
    throw std::bad_alloc();
  }
}

const char* sequenceOf(Table::Colour colour) {
  return colour == Table::Colour::Red ? RED : colour == Table::Colour::Yellow ? YELLOW : "";
}

void setBranches(libscols_table* table) {
  const std::unique_ptr<libscols_symbols, void (*)(libscols_symbols*)> symbols(
      made(scols_new_symbols()), scols_unref_symbols);
  done(scols_symbols_set_branch(symbols.get(), "├─ "));
  done(scols_symbols_set_vertical(symbols.get(), "│ "));
  done(scols_symbols_set_right(symbols.get(), "└─ "));
  done(scols_table_set_symbols(table, symbols.get()));
}

}  // namespace

void Table::Release::operator()(libscols_table* table) const {
  scols_unref_table(table);
}

Table::Table(Kind kind) : m_kind(kind), m_table(made(scols_new_table())) {
  // Neither the width of a terminal nor what may be printed is the library's business: text() fits the lines.
  done(scols_table_set_termforce(m_table.get(), SCOLS_TERMFORCE_NEVER));
  done(scols_table_enable_noencoding(m_table.get(), 1));
  done(scols_table_enable_minout(m_table.get(), 1));
  done(scols_table_enable_noheadings(m_table.get(), kind == Kind::Titled ? 0 : 1));
  done(scols_table_set_column_separator(m_table.get(), GAP));
  if (kind == Kind::Tree) {
    setBranches(m_table.get());
  }
}

void Table::addColumn(const std::string& title, bool numbers, bool stays) {
  const bool tree = m_kind == Kind::Tree && m_stays.empty();
  m_stays.push_back(stays || m_stays.empty() || m_kind != Kind::Titled);
  made(scols_table_new_column(
      m_table.get(), text::printable(title).c_str(), 0,
      (numbers ? SCOLS_FL_RIGHT : 0) | (tree ? SCOLS_FL_TREE : 0)));
}

Table::Row Table::addRow(const std::vector<std::string>& cells, Row parent, Colour colour) {
  m_colours.push_back(colour);
  const Row row = made(scols_table_new_line(m_table.get(), parent));
  for (std::size_t index = 0; index < std::min(cells.size(), scols_table_get_ncols(m_table.get())); ++index) {
    done(scols_line_set_data(row, index, text::printable(cells[index]).c_str()));
  }
  return row;
}

std::vector<std::string> Table::lines(const std::vector<bool>& shown) {
  for (std::size_t index = 0; index < shown.size(); ++index) {
    libscols_column* column = scols_table_get_column(m_table.get(), index);
    const int flags = scols_column_get_flags(column) & ~SCOLS_FL_HIDDEN;
    done(scols_column_set_flags(column, flags | (shown[index] ? 0 : SCOLS_FL_HIDDEN)));
  }
  const Utf8Locale locale;
  char* printed = nullptr;
  done(scols_print_table_to_string(m_table.get(), &printed));
  const std::unique_ptr<char, void (*)(void*)> owner(printed, std::free);
  std::istringstream stream(printed == nullptr ? "" : printed);
  std::vector<std::string> result;
  for (std::string line; std::getline(stream, line);) {
    result.push_back(line);
  }
  return result;
}

std::string Table::text(const Terminal& terminal) {
  std::vector<bool> columns(m_stays.size(), true);
  std::vector<std::string> shown = lines(columns);
  m_hidden = 0;
  const auto tooWide = [&](const std::string& line) { return displayWidth(line) > terminal.columns; };
  for (std::size_t column = columns.size(); column-- > 0;) {
    if (!m_stays[column] && std::any_of(shown.begin(), shown.end(), tooWide)) {
      columns[column] = false;
      ++m_hidden;
      shown = lines(columns);
    }
  }
  const std::size_t titles = m_kind == Kind::Titled ? 1 : 0;
  std::string result;
  for (std::size_t index = 0; index < shown.size(); ++index) {
    const std::string fitting = cutToWidth(shown[index], terminal.columns);
    const bool isRow = index >= titles && index - titles < m_colours.size();
    const std::string sequence = index < titles ? BOLD : isRow ? sequenceOf(m_colours[index - titles]) : "";
    const bool plain = sequence.empty() || !terminal.colour;
    result += (plain ? fitting : sequence + fitting + PLAIN) + "\n";
  }
  return result;
}

}  // namespace tvp::terminal
