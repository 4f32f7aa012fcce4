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
 * line is wider than it: of a table with titles the columns that do not fit are left out from the right,
 * except the first one and those that stay, and what is still too wide is cut. Control characters and bytes
 * that are not UTF-8 are shown as \xHH. Belongs to one thread. All functions throw std::bad_alloc.
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
  /** The colour of a row on a terminal that has colours. */
  enum class Colour { None, Yellow, Red };

  explicit Table(Kind kind = Kind::Titled);
  /** Adds a column; numbers are aligned to the right. To be called before the first row.
   *  @param stays whether it is shown on a narrow terminal too */
  void addColumn(const std::string& title, bool numbers = false, bool stays = false);
  /**
   * Adds a row; missing cells are empty.
   * @param parent for a tree: the row that it stands under. Where rows have colours, each is added after all
   * that is under the one before it
   */
  Row addRow(const std::vector<std::string>& cells, Row parent = nullptr, Colour colour = Colour::None);
  /** The lines, each with its newline. */
  std::string text(const Terminal& terminal);
  /** How many columns the last text has left out. */
  std::size_t hiddenColumns() const { return m_hidden; }

private:
  struct Release {
    void operator()(libscols_table* table) const;
  };

  /** The lines with some of the columns only, without a limit of the width. */
  std::vector<std::string> lines(const std::vector<bool>& shown);

  Kind m_kind;
  std::vector<bool> m_stays;      ///< by column
  std::vector<Colour> m_colours;  ///< by row
  std::size_t m_hidden = 0;
  std::unique_ptr<libscols_table, Release> m_table;
};

}  // namespace tvp::terminal

#endif
