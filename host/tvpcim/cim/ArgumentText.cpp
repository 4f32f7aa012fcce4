// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/ArgumentText.h"

#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>

namespace tvp::host::tvpcim {

const char* const ARGUMENT_HELP =
    "Values: the type of each NAME comes from the schema. A string is all that follows the equals sign.\n"
    "Numbers are decimal or begin with 0x, booleans are true or false, date-times have the 25 characters\n"
    "of CIM, references are paths. Arrays are written NAME=1,2,3 or as JSON, NAME='[\"a, b\",\"c\"]', which\n"
    "strings that contain a comma need; NAME= is an empty array. null is the null value of any type but "
    "string.";

namespace {

using Json = nlohmann::json;

[[noreturn]] void refuse(const TypedElement& element, const std::string& text, const std::string& expected) {
  throw UsageError(
      statusName(CMPI_RC_ERR_INVALID_PARAMETER) + ": " + element.name + " is of type " +
      typeName(element.type) + ": " + text::quoted(text) + " is not " + expected);
}

unsigned bitsOf(CMPIType type) {
  switch (type) {
  case CMPI_uint8:
  case CMPI_sint8:
    return 8;
  case CMPI_uint16:
  case CMPI_sint16:
  case CMPI_char16:
    return 16;
  case CMPI_uint32:
  case CMPI_sint32:
    return 32;
  default:
    return 64;
  }
}

bool isSigned(CMPIType type) {
  return type == CMPI_sint8 || type == CMPI_sint16 || type == CMPI_sint32 || type == CMPI_sint64;
}

Value parseInteger(const TypedElement& element, CMPIType type, const std::string& text) {
  const unsigned bits = bitsOf(type);
  const std::uint64_t largest = std::numeric_limits<std::uint64_t>::max() >> (64 - bits);
  const bool negative = !text.empty() && text[0] == '-';
  const std::string digits = negative ? text.substr(1) : text;
  const bool hexadecimal = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
  const std::string expected = isSigned(type) ? "a whole number from -" + std::to_string(largest / 2 + 1) +
                                                    " to " + std::to_string(largest / 2)
                                              : "a whole number from 0 to " + std::to_string(largest);
  const char* const allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  const std::string plain = hexadecimal ? digits.substr(2) : digits;
  if (plain.empty() || plain.find_first_not_of(allowed) != std::string::npos) {
    refuse(element, text, expected);
  }
  errno = 0;
  const std::uint64_t number = std::strtoull(plain.c_str(), nullptr, hexadecimal ? 16 : 10);
  const std::uint64_t limit = isSigned(type) ? largest / 2 + (negative ? 1 : 0) : negative ? 0 : largest;
  if (errno == ERANGE || number > limit) {
    refuse(element, text, expected);
  }
  if (isSigned(type)) {
    return Value::signedInteger(type, static_cast<std::int64_t>(negative ? 0 - number : number));
  }
  return Value::unsignedInteger(type, number);
}

Value parseReal(const TypedElement& element, CMPIType type, const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(number)) {
    refuse(element, text, "a number");
  }
  return Value::real(type, number);
}

Value parseReference(const TypedElement& element, const std::string& text) {
  try {
    return Value::reference(parsePathText(text));
  } catch (const PathSyntaxError& error) {
    refuse(element, text, std::string("a path (") + error.what() + ")");
  }
}

Value parseScalar(const TypedElement& element, const std::string& text) {
  const auto type = static_cast<CMPIType>(element.type & ~CMPI_ARRAY);
  switch (type) {
  case CMPI_string:
    return Value::string(text);
  case CMPI_boolean:
    if (!equalNames(text, "true") && !equalNames(text, "false")) {
      refuse(element, text, "a boolean: give true or false");
    }
    return Value::boolean(equalNames(text, "true"));
  case CMPI_dateTime: {
    const std::optional<DateTime> time = DateTime::parse(text);
    if (!time) {
      refuse(element, text, "a date-time such as 20260131235959.000000+060");
    }
    return Value::dateTime(*time);
  }
  case CMPI_ref:
    return parseReference(element, text);
  case CMPI_real32:
  case CMPI_real64:
    return parseReal(element, type, text);
  case CMPI_instance:
    refuse(element, text, "a value that can be given on a command line");
  default:
    return parseInteger(element, type, text);
  }
}

std::vector<std::string> elementsOfJson(const TypedElement& element, const std::string& text) {
  const Json array = Json::parse(text, nullptr, false);
  if (!array.is_array()) {
    refuse(element, text, "an array: write it 1,2,3 or as JSON, [\"a\", \"b\"]");
  }
  std::vector<std::string> elements;
  for (const Json& item : array) {
    if (item.is_structured() || item.is_null()) {
      refuse(element, text, "an array of plain values");
    }
    elements.push_back(item.is_string() ? item.get<std::string>() : item.dump());
  }
  return elements;
}

/** Splits NAME=VALUE texts, finds each name's declaration and reads the values. */
std::vector<NamedValue> parseAll(
    const std::vector<std::string>& texts, const std::string& whose, CMPIrc unknownName,
    const std::vector<std::string>& names,
    const std::function<const TypedElement*(const std::string&)>& find) {
  std::vector<NamedValue> values;
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw UsageError(
          statusName(CMPI_RC_ERR_INVALID_PARAMETER) + ": " + text::quoted(text) +
          " is not of the form NAME=VALUE");
    }
    const std::string name = text.substr(0, equals);
    const TypedElement* element = find(name);
    if (element == nullptr) {
      const std::string near = suggestion(name, names);
      throw UsageError(
          statusName(unknownName) + ": " + whose + " " + text::quoted(name) +
          (near.empty() ? "; it has: " + join(names, ", ") : near));
    }
    if (findValue(values, name) != nullptr) {
      throw UsageError(statusName(CMPI_RC_ERR_INVALID_PARAMETER) + ": " + element->name + " is given twice");
    }
    values.push_back({element->name, parseValue(*element, text.substr(equals + 1))});
  }
  return values;
}

}  // namespace

Value parseValue(const TypedElement& element, const std::string& text) {
  const auto scalar = static_cast<CMPIType>(element.type & ~CMPI_ARRAY);
  const bool array = (element.type & CMPI_ARRAY) != 0;
  if (text == "null" && scalar != CMPI_string) {
    return Value::null(element.type);
  }
  if (!array) {
    return parseScalar(element, text);
  }
  Value::List values;
  for (const std::string& part :
       !text.empty() && text[0] == '[' ? elementsOfJson(element, text) : split(text, ',')) {
    values.push_back(parseScalar(element, part));
  }
  return Value::array(scalar, std::move(values));
}

std::vector<NamedValue>
parseProperties(const SchemaClass& schemaClass, const std::vector<std::string>& texts) {
  return parseAll(
      texts, "the class " + schemaClass.name + " has no property", CMPI_RC_ERR_NO_SUCH_PROPERTY,
      namesOf(schemaClass.properties), [&](const std::string& name) { return schemaClass.property(name); });
}

Arguments parseArguments(const SchemaMethod& method, const std::vector<std::string>& texts) {
  std::vector<std::string> names;
  for (const SchemaParameter& parameter : method.parameters) {
    if (parameter.in) {
      names.push_back(parameter.name);
    }
  }
  Arguments arguments;
  arguments.values = parseAll(
      texts, "the method " + method.name + " has no input argument", CMPI_RC_ERR_INVALID_PARAMETER, names,
      [&](const std::string& name) {
        const SchemaParameter* parameter = method.parameter(name);
        // Like a method's name, it reaches the provider as it is written.
        return parameter != nullptr && parameter->in && parameter->name == name ? parameter : nullptr;
      });
  return arguments;
}

}  // namespace tvp::host::tvpcim
