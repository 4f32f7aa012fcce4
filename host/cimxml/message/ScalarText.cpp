// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/ScalarText.h"

#include "host/cimxml/message/XmlWriter.h"
#include "host/schema/Names.h"
#include "text/Case.h"
#include "text/Trim.h"
#include "text/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace tvp::host::cimxml {
namespace {

constexpr std::string_view BLANKS = " \t\r\n";

/** Reads digits, or hexadecimal digits after 0x, to the last character. */
std::optional<std::uint64_t> parseDigits(std::string_view text) {
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && text::lowerCase(text[1]) == 'x';
  text.remove_prefix(hexadecimal ? 2 : 0);
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
  if (text.empty() || error != std::errc() || last != end) {
    return std::nullopt;
  }
  return number;
}

std::optional<Value> parseUnsigned(std::string_view text, CMPIType type, std::uint64_t largest) {
  text.remove_prefix(!text.empty() && text.front() == '+' ? 1 : 0);
  const std::optional<std::uint64_t> number = parseDigits(text);
  if (!number || *number > largest) {
    return std::nullopt;
  }
  return Value::unsignedInteger(type, *number);
}

/** @param largest the smallest is one less than its negative */
std::optional<Value> parseSigned(std::string_view text, CMPIType type, std::uint64_t largest) {
  const bool negative = !text.empty() && text.front() == '-';
  text.remove_prefix(negative || (!text.empty() && text.front() == '+') ? 1 : 0);
  const std::optional<std::uint64_t> size = parseDigits(text);
  if (!size || *size > largest + (negative ? 1 : 0)) {
    return std::nullopt;
  }
  // Counted down in two steps, as the size of the smallest number is beyond the largest.
  return Value::signedInteger(
      type,
      negative && *size > 0 ? -static_cast<std::int64_t>(*size - 1) - 1 : static_cast<std::int64_t>(*size));
}

std::optional<Value> parseReal(std::string_view text, CMPIType type) {
  text.remove_prefix(text.size() > 1 && text.front() == '+' && text[1] != '-' ? 1 : 0);
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || last != end) {
    return std::nullopt;
  }
  if (type == CMPI_real32) {
    if (std::isfinite(number) && std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
      return std::nullopt;
    }
    number = static_cast<double>(static_cast<float>(number));
  }
  return Value::real(type, number);
}

std::optional<Value> parseBoolean(std::string_view text) {
  for (const bool value : {true, false}) {
    if (text::equalsIgnoringCase(text, value ? "true" : "false")) {
      return Value::boolean(value);
    }
  }
  return std::nullopt;
}

std::optional<Value> parseCharacter(std::string_view text) {
  const text::Character character = text::characterAt(text);
  if (character.length == 0 || character.length != text.size() || character.code > 0xFFFF) {
    return std::nullopt;
  }
  return Value::unsignedInteger(CMPI_char16, character.code);
}

std::optional<Value> parseDateTime(std::string_view text) {
  const std::optional<DateTime> parsed = DateTime::parse(std::string(text));
  return parsed ? std::optional(Value::dateTime(*parsed)) : std::nullopt;
}

template <class Number, class... Format>
void appendNumber(std::string& output, Number number, Format... format) {
  std::array<char, 64> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, format...);
  output.append(buffer.data(), result.ptr);
}

void appendReal(std::string& output, const Value& value) {
  if (!std::isfinite(value.asReal())) {
    output += std::isnan(value.asReal()) ? "NaN" : value.asReal() < 0 ? "-INF" : "INF";
    return;
  }
  // Enough digits to read the same number, always with the decimal point that the form of a real requires.
  constexpr int DIGITS_32 = std::numeric_limits<float>::max_digits10 - 1;
  constexpr int DIGITS_64 = std::numeric_limits<double>::max_digits10 - 1;
  appendNumber(
      output, value.asReal(), std::chars_format::scientific,
      value.type() == CMPI_real32 ? DIGITS_32 : DIGITS_64);
}

void appendCharacter(std::string& output, std::uint64_t code) {
  std::string text;
  if (code >= 0xD800 && code <= 0xDFFF) {
    code = 0xFFFD;  // half of a pair, which no text can have alone
  }
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += {static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 0x3FU))};
  } else {
    text +=
        {static_cast<char>(0xE0U | code >> 12U), static_cast<char>(0x80U | (code >> 6U & 0x3FU)),
         static_cast<char>(0x80U | (code & 0x3FU))};
  }
  appendEscaped(output, text);
}

}  // namespace

std::string xmlTypeName(CMPIType type) {
  const auto scalar = static_cast<CMPIType>(type & ~CMPI_ARRAY);
  switch (scalar) {
  case CMPI_ref:
    return "reference";
  case CMPI_instance:
  case CMPI_null:
    return "string";
  default:
    return typeName(scalar);
  }
}

std::optional<Value> parseScalar(std::string_view text, CMPIType type) {
  const std::string_view word = text::trimmed(text, BLANKS);
  switch (type) {
  case CMPI_string:
    return Value::string(std::string(text));
  case CMPI_boolean:
    return parseBoolean(word);
  case CMPI_uint8:
    return parseUnsigned(word, type, std::numeric_limits<std::uint8_t>::max());
  case CMPI_uint16:
    return parseUnsigned(word, type, std::numeric_limits<std::uint16_t>::max());
  case CMPI_uint32:
    return parseUnsigned(word, type, std::numeric_limits<std::uint32_t>::max());
  case CMPI_uint64:
    return parseUnsigned(word, type, std::numeric_limits<std::uint64_t>::max());
  case CMPI_sint8:
    return parseSigned(word, type, std::numeric_limits<std::int8_t>::max());
  case CMPI_sint16:
    return parseSigned(word, type, std::numeric_limits<std::int16_t>::max());
  case CMPI_sint32:
    return parseSigned(word, type, std::numeric_limits<std::int32_t>::max());
  case CMPI_sint64:
    return parseSigned(word, type, std::numeric_limits<std::int64_t>::max());
  case CMPI_real32:
  case CMPI_real64:
    return parseReal(word, type);
  case CMPI_char16:
    return parseCharacter(text);
  case CMPI_dateTime:
    return parseDateTime(word);
  default:
    return std::nullopt;
  }
}

CMPIType suggestedType(const std::vector<std::string_view>& texts) {
  for (const CMPIType type : {CMPI_boolean, CMPI_sint64, CMPI_uint64}) {
    const bool fits = std::all_of(texts.begin(), texts.end(), [type](std::string_view text) {
      return parseScalar(text, static_cast<CMPIType>(type)).has_value();
    });
    if (fits && !texts.empty()) {
      return static_cast<CMPIType>(type);
    }
  }
  return CMPI_string;
}

void appendScalar(std::string& output, const Value& value) {
  switch (value.type()) {
  case CMPI_boolean:
    output += value.asBoolean() ? "TRUE" : "FALSE";
    break;
  case CMPI_uint8:
  case CMPI_uint16:
  case CMPI_uint32:
  case CMPI_uint64:
    appendNumber(output, value.asUnsigned());
    break;
  case CMPI_sint8:
  case CMPI_sint16:
  case CMPI_sint32:
  case CMPI_sint64:
    appendNumber(output, value.asSigned());
    break;
  case CMPI_real32:
  case CMPI_real64:
    appendReal(output, value);
    break;
  case CMPI_char16:
    appendCharacter(output, value.asUnsigned());
    break;
  case CMPI_dateTime:
    output += value.asDateTime().text();
    break;
  default:
    appendEscaped(output, value.asString());
  }
}

}  // namespace tvp::host::cimxml
