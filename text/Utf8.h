// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_UTF8_H
#define TEXT_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tvp::text {

/** One character of a text that ought to be UTF-8. */
struct Character {
  std::uint32_t code = 0;  ///< its code point; 0 where there is no valid character
  std::size_t length = 0;  ///< its bytes, 1 to 4; 0 where there is no valid character

  /** How far the next character is: 1 where there is no valid one, so that a bad byte is passed over. */
  std::size_t step() const { return length == 0 ? 1 : length; }
};

/**
 * The character that begins at a position. Overlong forms, halves of surrogate pairs, code points beyond
 * U+10FFFF and characters that end beyond the text are not valid.
 */
Character characterAt(std::string_view text, std::size_t position = 0);

/** Whether the whole text is valid UTF-8. */
bool isUtf8(std::string_view text);

/** Whether terminals may obey the character: U+0000 to U+001F and U+007F to U+009F. */
constexpr bool isControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

/**
 * The longest beginning of at most limit bytes that does not end within a character.
 * @param text UTF-8; what is not is cut at some place
 */
std::string_view cutToSize(std::string_view text, std::size_t limit);

/** The text as valid UTF-8: bytes that are not become the four characters \xHH. Control characters stay. */
std::string toUtf8(std::string_view text);

/** As toUtf8, and the bytes of control characters and of line and paragraph separators become \xHH too: fit
 * for one line of a terminal. */
std::string printable(std::string_view text);

/** As printable, but newlines stay: fit for the lines of a terminal. */
std::string printableLines(std::string_view text);

/** A JSON text, with the characters that terminals may obey though JSON lets them stand, U+007F to U+009F, as
 * \u00XX; it means the same. */
std::string printableJson(std::string_view json);

}  // namespace tvp::text

#endif
