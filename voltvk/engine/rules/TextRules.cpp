// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/TextRules.h"

#include "text/Utf8.h"
#include "voltvk/engine/drives/SystemText.h"
#include "voltvk/engine/rules/Refusal.h"

#include <cstring>

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

std::string checkedName(const char (&field)[TVK_NAME_SIZE], bool tooLong) {
  std::string name(field, strnlen(field, sizeof field));
  if (tooLong || !isPlainText(name, sizeof field - 1)) {
    throw Refusal(TVK_INVALID_NAME);
  }
  return name;
}

std::string checkedDescription(const char (&field)[TVK_DESCRIPTION_SIZE], bool tooLong) {
  std::string description(field, strnlen(field, sizeof field));
  if (tooLong || description.size() == sizeof field || !tvp::text::isUtf8(description)) {
    throw Refusal(TVK_INVALID_DESCRIPTION);
  }
  return description;
}

std::string shownName(const char (&field)[TVK_NAME_SIZE]) {
  return cleanText(std::string_view(field, strnlen(field, sizeof field)));
}

}  // namespace voltvk
