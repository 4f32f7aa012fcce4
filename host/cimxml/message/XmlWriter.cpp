// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/XmlWriter.h"

#include "text/Utf8.h"

#include <algorithm>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";  // U+FFFD

/** Whether a byte is written as it is, wherever it stands. */
constexpr bool isPlain(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte > 0x20 && byte < 0x7F && character != '<' && character != '>' && character != '&' &&
         character != '"' && character != '\'';
}

std::string_view escapeOf(char character) {
  switch (character) {
  case '<':
    return "&lt;";
  case '>':
    return "&gt;";
  case '&':
    return "&amp;";
  case '"':
    return "&quot;";
  case '\'':
    return "&apos;";
  case '\t':
    return "&#9;";
  case '\n':
    return "&#10;";
  case '\r':
    return "&#13;";
  case '\x7F':
    return "&#127;";
  default:
    return REPLACEMENT;
  }
}

bool blankStands(std::string_view text, std::size_t position) {
  return position > 0 && position + 1 < text.size() && text[position - 1] != ' ';
}

/** Appends a character that is not ASCII. @return its bytes */
std::size_t appendWide(std::string& output, std::string_view text, std::size_t position) {
  const text::Character character = text::characterAt(text, position);
  const bool allowed = character.length != 0 && character.code != 0xFFFE && character.code != 0xFFFF;
  output += allowed ? text.substr(position, character.length) : REPLACEMENT;
  return character.step();
}

}  // namespace

void appendEscaped(std::string& output, std::string_view text) {
  std::size_t position = 0;
  while (position < text.size()) {
    const auto* begin = text.data() + position;
    const auto* plainEnd = std::find_if_not(begin, text.data() + text.size(), isPlain);
    output.append(begin, plainEnd);
    position = static_cast<std::size_t>(plainEnd - text.data());
    if (position == text.size()) {
      return;
    }
    const char special = text[position];
    if (static_cast<unsigned char>(special) >= 0x80) {
      position += appendWide(output, text, position);
      continue;
    }
    if (special == ' ') {
      output += blankStands(text, position) ? " " : "&#32;";
    } else {
      output += escapeOf(special);
    }
    ++position;
  }
}

void appendTag(std::string& output, std::string_view tag, XmlAttributes attributes, std::string_view end) {
  output += '<';
  output += tag;
  for (const XmlAttribute& attribute : attributes) {
    if (attribute.value.data() != nullptr) {
      output += ' ';
      output += attribute.name;
      output += "=\"";
      appendEscaped(output, attribute.value);
      output += '"';
    }
  }
  output += end;
}

void appendText(std::string& output, std::string_view tag, XmlAttributes attributes, std::string_view text) {
  appendTag(output, tag, attributes, ">");
  appendEscaped(output, text);
  output.append("</").append(tag).append(">\n");
}

}  // namespace tvp::host::cimxml
