// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/XmlWriter.h"

#include "text/Utf8.h"

#include <array>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";  // U+FFFD

/** Which bytes are written as they are, wherever they stand. */
constexpr std::array<bool, 256> plainBytes() {
  std::array<bool, 256> plain{};
  for (std::size_t byte = '!'; byte < '\x7F'; ++byte) {
    plain[byte] = byte != '<' && byte != '>' && byte != '&' && byte != '"' && byte != '\'';
  }
  return plain;
}

bool isPlain(char character) {
  static constexpr std::array<bool, 256> PLAIN = plainBytes();
  return PLAIN[static_cast<unsigned char>(character)];
}

std::string_view escapeOf(char character) {
  switch (character) {
  case ' ':
    return "&#32;";
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
  std::size_t begin = 0;  // of what is not yet appended
  for (std::size_t position = 0; position < text.size();) {
    const char character = text[position];
    if (isPlain(character) || (character == ' ' && blankStands(text, position))) {
      ++position;
      continue;
    }
    output.append(text, begin, position - begin);
    if (static_cast<unsigned char>(character) < 0x80) {
      output += escapeOf(character);
      ++position;
    } else {
      position += appendWide(output, text, position);
    }
    begin = position;
  }
  output.append(text, begin);
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
