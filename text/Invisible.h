// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_INVISIBLE_H
#define TEXT_INVISIBLE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tvp::text {

/**
 * The first character of a text that cannot be seen: one that only formats what is around it, such as a
 * zero-width space or a change of the writing direction, or a line or paragraph separator. Texts that differ
 * in such characters look the same, and some show as other texts. Blanks are not among them.
 * @param text UTF-8
 * @return its code point; 0 if there is none
 */
std::uint32_t firstInvisible(std::string_view text);

/** Whether a text has nothing but blanks of any width, or nothing at all. @param text UTF-8 */
bool isBlank(std::string_view text);

/** "U+200B". */
std::string codePointName(std::uint32_t code);

}  // namespace tvp::text

#endif
