// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/PlainText.h"

#include "text/Trim.h"
#include "text/Utf8.h"

namespace voltvk {

bool isPlainText(std::string_view text, std::size_t limit) {
  if (text.size() > limit) {
    return false;
  }
  while (!text.empty()) {
    const tvp::text::Character character = tvp::text::characterAt(text);
    if (character.length == 0 || tvp::text::isControl(character.code)) {
      return false;
    }
    text.remove_prefix(character.length);
  }
  return true;
}

std::string cleanText(std::string_view text) {
  constexpr std::string_view BLANKS(" \t\r\n\v\f\0", 7);
  text = tvp::text::trimmed(text, BLANKS);
  std::string clean;
  while (!text.empty()) {
    const tvp::text::Character character = tvp::text::characterAt(text);
    if (character.length == 0 || tvp::text::isControl(character.code)) {
      clean += '?';
    } else {
      clean += text.substr(0, character.length);
    }
    text.remove_prefix(character.step());
  }
  return clean;
}

}  // namespace voltvk
