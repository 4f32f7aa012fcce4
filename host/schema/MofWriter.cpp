// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofWriter.h"

#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "text/Utf8.h"

#include <array>
#include <cstdio>
#include <vector>

namespace tvp::host {
namespace {

std::string mofLiteral(const std::string& text) {
  static const std::string SPECIAL = "\"\\\b\t\n\f\r";
  static const std::string LETTERS = "\"\\btnfr";
  std::string result = "\"";
  const std::string valid = text::toUtf8(text);
  for (std::string_view rest = valid; !rest.empty();) {
    const text::Character character = text::characterAt(rest);
    const std::size_t special = SPECIAL.find(rest.front());
    if (special != std::string::npos) {
      result += {'\\', LETTERS[special]};
    } else if (text::isControl(character.code)) {
      std::array<char, 16> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\x%04X", static_cast<unsigned>(character.code));
      result += escaped.data();
    } else {
      result += rest.substr(0, character.step());
    }
    rest.remove_prefix(character.step());
  }
  return result + "\"";
}

/** Joins texts with a separator. */
std::string join(const std::vector<std::string>& texts, const std::string& separator) {
  std::string result;
  for (const std::string& text : texts) {
    result += (&text == &texts.front() ? "" : separator) + text;
  }
  return result;
}

std::string qualifierText(const Qualifiers& qualifiers, const std::string& indent) {
  std::vector<std::string> texts;
  for (const NamedValue& qualifier : qualifiers) {
    const Value& value = qualifier.value;
    std::string text = qualifier.name;
    if (value.isArray()) {
      text += " " + mofValue(value);
    } else if (value.type() != CMPI_boolean || value.isNull() || !value.asBoolean()) {
      text += " ( " + mofValue(value) + " )";
    }
    texts.push_back(text);
  }
  return texts.empty() ? "" : indent + "[" + join(texts, ",\n" + indent + " ") + "]\n";
}

/** Type and name of a property, a parameter or a method: "uint32 Ids[]". */
std::string declaration(const TypedElement& element) {
  const bool array = (element.type & CMPI_ARRAY) != 0;
  const auto scalar = static_cast<CMPIType>(element.type & ~CMPI_ARRAY);
  std::string type = typeName(scalar);
  if (scalar == CMPI_ref) {
    type = element.className + " REF";
  } else if (scalar == CMPI_instance) {
    type = "string";  // the embedded class is in the qualifier EmbeddedInstance
  }
  return type + " " + element.name + (array ? "[]" : "");
}

std::string methodText(const SchemaMethod& method) {
  std::string result = qualifierText(method.qualifiers, "    ") + "  " + declaration(method) + "(";
  std::vector<std::string> parameters;
  for (const SchemaParameter& parameter : method.parameters) {
    parameters.push_back(qualifierText(parameter.qualifiers, "      ") + "    " + declaration(parameter));
  }
  return result + (parameters.empty() ? "" : "\n" + join(parameters, ",\n")) + ");\n";
}

}  // namespace

std::string mofValue(const Value& value) {
  if (value.isNull()) {
    return "NULL";
  }
  if (value.isArray()) {
    std::vector<std::string> elements;
    for (const Value& element : value.asArray()) {
      elements.push_back(mofValue(element));
    }
    return "{" + join(elements, ", ") + "}";
  }
  switch (value.type()) {
  case CMPI_string:
    return mofLiteral(value.asString());
  case CMPI_dateTime:
    return mofLiteral(value.asDateTime().text());
  case CMPI_ref:
    return mofLiteral(toPathText(value.asReference()));
  case CMPI_instance:
    return mofLiteral(mofInstance(value.asInstance()));
  default:
    return value.toText();
  }
}

std::string mofInstance(const Instance& instance) {
  std::string result = "instance of " + instance.path.className + " {\n";
  for (const NamedValue& property : instance.properties) {
    result += "  " + property.name + " = " + mofValue(property.value) + ";\n";
  }
  return result + "};\n";
}

std::string mofClass(const SchemaClass& schemaClass) {
  std::string result = qualifierText(schemaClass.qualifiers, "  ");
  result += "class " + schemaClass.name;
  result += schemaClass.superclass.empty() ? " {\n" : " : " + schemaClass.superclass + " {\n";
  for (const SchemaProperty& property : schemaClass.properties) {
    if (equalNames(property.origin, schemaClass.name)) {
      result += "\n" + qualifierText(property.qualifiers, "    ") + "  " + declaration(property) + ";\n";
    }
  }
  for (const SchemaMethod& method : schemaClass.methods) {
    if (equalNames(method.origin, schemaClass.name)) {
      result += "\n" + methodText(method);
    }
  }
  return result + "};\n";
}

}  // namespace tvp::host
