// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/TextRules.h"

#include "text/Invisible.h"
#include "text/Quote.h"
#include "text/Utf8.h"
#include "voltvk/engine/state/PlainText.h"
#include "voltvk/engine/state/Refusal.h"

#include <cstring>

namespace voltvk {

namespace {

std::string textOf(const GivenText& given) {
  return std::string(given.field.substr(0, given.field.find('\0')));
}

bool fits(const GivenText& given, const std::string& text) {
  return !given.tooLong && text.size() < given.field.size();
}

std::string sizeOf(const GivenText& given, const std::string& text) {
  if (given.bytes > text.size()) {
    return counted(given.bytes, "byte");
  }
  return given.tooLong ? "too many bytes" : "no end";
}

std::string limitOf(const GivenText& given) {
  return counted(given.field.size() - 1, "byte");
}

}  // namespace

std::string checkedName(const GivenText& given) {
  std::string name = textOf(given);
  require(fits(given, name), TVK_INVALID_NAME, [&] {
    return "the name has " + sizeOf(given, name) + "; a name has 1 to " + limitOf(given);
  });
  require(tvp::text::isUtf8(name), TVK_INVALID_NAME, [&] {
    return "the name " + tvp::text::quoted(name) + " is not UTF-8, which names are";
  });
  require(isPlainText(name, given.field.size()), TVK_INVALID_NAME, [&] {
    return "the name " + tvp::text::quoted(name) + " has control characters in it; choose one without them";
  });
  const std::uint32_t invisible = tvp::text::firstInvisible(name);
  require(invisible == 0, TVK_INVALID_NAME, [&] {
    return "the name has the invisible character " + tvp::text::codePointName(invisible) +
           " in it; choose one without it";
  });
  require(name.empty() || !tvp::text::isBlank(name), TVK_INVALID_NAME, [&] {
    return "the name " + tvp::text::quoted(name) + " has only blanks; choose one that can be seen";
  });
  return name;
}

std::string requiredName(const GivenText& given) {
  std::string name = checkedName(given);
  require(!name.empty(), TVK_INVALID_NAME, [&] {
    return "the name is empty; a name has 1 to " + limitOf(given);
  });
  return name;
}

std::string checkedDescription(const GivenText& given) {
  std::string description = textOf(given);
  require(fits(given, description), TVK_INVALID_DESCRIPTION, [&] {
    return "the description has " + sizeOf(given, description) + "; a description has at most " +
           limitOf(given);
  });
  require(tvp::text::isUtf8(description), TVK_INVALID_DESCRIPTION, [&] {
    return "the description " + tvp::text::quoted(description) + " is not UTF-8, which descriptions are";
  });
  return description;
}

std::string shownName(const char (&field)[TVK_NAME_SIZE]) {
  return cleanText(std::string_view(field, strnlen(field, sizeof field)));
}

}  // namespace voltvk
