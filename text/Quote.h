// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_QUOTE_H
#define TEXT_QUOTE_H

#include <string>
#include <string_view>

namespace tvp::text {

/** The text in single quotes and printable, for a message that names what somebody gave. */
std::string quoted(std::string_view text);

/** The text in double quotes, with a backslash in front of each double quote and backslash in it. */
std::string doubleQuoted(std::string_view text);

}  // namespace tvp::text

#endif
