// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_CASE_H
#define TEXT_CASE_H

#include <string>
#include <string_view>

namespace tvp::text {

/** The character in lower case by the table of the C locale: A to Z change, other bytes stay. */
constexpr char lowerCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/** A copy with every byte in lower case, whatever the locale of the process is. */
std::string lowerCase(std::string_view text);

/** Compares without regard to the case of ASCII letters, whatever the locale of the process is. */
bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace tvp::text

#endif
