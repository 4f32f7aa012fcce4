// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_TRIM_H
#define TEXT_TRIM_H

#include <string_view>

namespace tvp::text {

/**
 * The part of a text between the characters to remove at both ends.
 * @param removed the characters to remove; blanks unless told otherwise
 * @return a view into the text, which has to outlive it; empty when nothing is left
 */
constexpr std::string_view trimmed(std::string_view text, std::string_view removed = " ") {
  const std::size_t first = text.find_first_not_of(removed);
  return first == std::string_view::npos ? text.substr(0, 0)
                                         : text.substr(first, text.find_last_not_of(removed) - first + 1);
}

}  // namespace tvp::text

#endif
