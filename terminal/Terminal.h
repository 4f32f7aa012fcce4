// SPDX-License-Identifier: Apache-2.0
#ifndef TERMINAL_TERMINAL_H
#define TERMINAL_TERMINAL_H

#include <cstddef>
#include <limits>

namespace tvp::terminal {

/** What standard output can show. A plain value. */
struct Terminal {
  static constexpr std::size_t UNLIMITED = std::numeric_limits<std::size_t>::max();

  std::size_t columns = UNLIMITED;  ///< UNLIMITED unless output is a terminal: nothing is cut in files
  bool colour = false;              ///< a terminal, and NO_COLOR is not set
  std::size_t rows = 0;             ///< of the terminal; 0 where they are not known

  /** Standard output of this process; the columns are those of the terminal, else of COLUMNS, else 80. */
  static Terminal ofStandardOutput();
};

/**
 * Whether the environment asks for UTF-8. A name is enough: the locale itself may not be installed, which
 * says nothing about the terminal.
 */
bool isUtf8Wanted();

}  // namespace tvp::terminal

#endif
