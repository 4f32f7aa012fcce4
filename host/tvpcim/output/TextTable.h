// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_TEXTTABLE_H
#define HOST_TVPCIM_OUTPUT_TEXTTABLE_H

#include "host/tvpcim/output/Terminal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/**
 * Lines up cells of text under titles so that no row is wider than the terminal. Columns that do not fit
 * are left out from the right; a single cell that does not fit is cut. Belongs to one thread.
 */
class TextTable {
public:
  /** Adds a column; numbers are aligned to the right. To be called before the first row. */
  void addColumn(const std::string& title, bool numbers);
  /** Adds a row; missing cells are empty. Control characters are made visible. */
  void addRow(const std::vector<std::string>& cells);

  /** The table's lines, titles first (bold on a terminal with colour), each with its newline. */
  std::string text(const Terminal& terminal) const;

private:
  struct Column {
    std::string title;
    bool numbers;
    std::size_t width;
  };
  /** How many columns text() shows on such a terminal; at least one, if there is one. */
  std::size_t fitting(const Terminal& terminal) const;
  std::string line(const std::vector<std::string>& cells, std::size_t count, const Terminal& terminal) const;

  std::vector<Column> m_columns;
  std::vector<std::vector<std::string>> m_rows;
};

}  // namespace tvp::host::tvpcim

#endif
