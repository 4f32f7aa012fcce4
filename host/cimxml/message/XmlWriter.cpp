// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/XmlWriter.h"

#include "text/Utf8.h"

#include <array>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";  // U+FFFD

using Bytes = std::array<bool, 256>;

/** Which bytes are written as they are. Readers make blanks of line ends and tabs in attributes. */
constexpr Bytes plainBytes(bool inAttribute) {
  Bytes plain{};
  for (std::size_t byte = ' '; byte < 0x80; ++byte) {
    plain[byte] = byte != '<' && byte != '>' && byte != '&' && byte != '"' && byte != '\'';
  }
  plain['\t'] = plain['\n'] = !inAttribute;
  return plain;
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
  default:
    return REPLACEMENT;
  }
}

/** Appends a character that is not ASCII. @return its bytes */
std::size_t appendWide(std::string& output, std::string_view text, std::size_t position) {
  const text::Character character = text::characterAt(text, position);
  const bool allowed = character.length != 0 && character.code != 0xFFFE && character.code != 0xFFFF;
  output += allowed ? text.substr(position, character.length) : REPLACEMENT;
  return character.step();
}

void appendEscaped(std::string& output, std::string_view text, const Bytes& plain) {
  std::size_t begin = 0;  // of what is not yet appended
  for (std::size_t position = 0; position < text.size();) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (plain[byte]) {
      ++position;
      continue;
    }
    output.append(text, begin, position - begin);
    if (byte < 0x80) {
      output += escapeOf(text[position]);
      ++position;
    } else {
      position += appendWide(output, text, position);
    }
    begin = position;
  }
  output.append(text, begin);
}

}  // namespace

void appendEscaped(std::string& output, std::string_view text) {
  static constexpr Bytes PLAIN = plainBytes(false);
  appendEscaped(output, text, PLAIN);
}

void appendTag(std::string& output, std::string_view tag, XmlAttributes attributes, std::string_view end) {
  static constexpr Bytes PLAIN = plainBytes(true);
  output += '<';
  output += tag;
  for (const XmlAttribute& attribute : attributes) {
    if (attribute.value.data() != nullptr) {
      output += ' ';
      output += attribute.name;
      output += "=\"";
      appendEscaped(output, attribute.value, PLAIN);
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
