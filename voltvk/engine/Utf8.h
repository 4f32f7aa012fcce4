// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_UTF8_H
#define VOLTVK_ENGINE_UTF8_H

#include <cstddef>
#include <string_view>

namespace voltvk {

/** Length of the valid UTF-8 character at the beginning of a text, 1 to 4; 0 when there is none. */
std::size_t utf8Length(std::string_view text);

/** True when the whole text is valid UTF-8. */
bool isUtf8(std::string_view text);

/** True for the characters U+0000 to U+001F and U+007F to U+009F. @param character valid UTF-8. */
bool isControlCharacter(std::string_view character);

/** The longest beginning of at most limit bytes that does not end within a character. */
std::string_view cutUtf8(std::string_view text, std::size_t limit);

}  // namespace voltvk

#endif
