// SPDX-License-Identifier: Apache-2.0
#include "text/Quote.h"

#include "text/Utf8.h"

namespace tvp::text {

std::string quoted(std::string_view text) {
  return "'" + printable(text) + "'";
}

std::string doubleQuoted(std::string_view text) {
  std::string result = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') {
      result += '\\';
    }
    result += character;
  }
  return result + "\"";
}

}  // namespace tvp::text
