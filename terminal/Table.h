// SPDX-License-Identifier: Apache-2.0
#ifndef TERMINAL_TABLE_H
#define TERMINAL_TABLE_H

#include "terminal/Terminal.h"

#include <memory>
#include <string>
#include <vector>

struct libscols_line;
struct libscols_table;

namespace tvp::terminal {

/**
 * Rows of text for people: a table under titles, lines in columns without titles, or a tree. On a terminal no
 * line is wider than it: of a table with titles the columns that do not fit are left out from the right, and
 * what is still too wide is cut. Control characters and bytes that are not UTF-8 are shown as \xHH.
 * Belongs to one thread. All functions throw std::bad_alloc.
 */
class Table {
public:
  enum class Kind {
    Titled,    ///< titles, bold on a terminal with colour
    Untitled,  ///< no titles, and no column is left out
    Tree       ///< no titles; the first column shows which row stands under which
  };
  /** A row, to put others under it; valid as long as the table. */
  using Row = libscols_line*;

  explicit Table(Kind kind = Kind::Titled);
  /** Adds a column; numbers are aligned to the right. To be called before the first row. */
  void addColumn(const std::string& title, bool numbers = false);
  /** Adds a row; missing cells are empty. @param parent for a tree: the row that it stands under */
  Row addRow(const std::vector<std::string>& cells, Row parent = nullptr);
  /** The lines, each with its newline. */
  std::string text(const Terminal& terminal);

private:
  struct Release {
    void operator()(libscols_table* table) const;
  };

  /** The lines with the first columns only, without a limit of the width. */
  std::vector<std::string> lines(std::size_t columns);

  Kind m_kind;
  std::unique_ptr<libscols_table, Release> m_table;
};

}  // namespace tvp::terminal

#endif
