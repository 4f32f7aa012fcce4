// SPDX-License-Identifier: Apache-2.0
#ifndef TERMINAL_WIDTH_H
#define TERMINAL_WIDTH_H

#include <clocale>
#include <cstddef>
#include <string>

namespace tvp::terminal {

/**
 * While it lives, the calling thread reads characters as UTF-8. The locale of the process stays as it is: it
 * belongs to the provider and its host as well. Where the system has no UTF-8 locale, nothing changes.
 */
class Utf8Locale {
public:
  Utf8Locale();
  ~Utf8Locale();
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
  locale_t m_before;
};

/** The columns of a terminal that a line takes; control characters and bytes that are not UTF-8 count as 1.
 */
std::size_t displayWidth(const std::string& text);
/** The line cut to so many columns, an ellipsis in the last one when something was cut. */
std::string cutToWidth(const std::string& text, std::size_t columns);
/** The text in lines of at most so many columns, each with its newline, broken at blanks where there are any.
 *  @param columns at least 2 */
std::string wrapped(const std::string& text, std::size_t columns);

}  // namespace tvp::terminal

#endif
