// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/ElementReader.h"

#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/KeyTypes.h"
#include "host/cimxml/message/ScalarText.h"
#include "host/cimxml/message/XmlDocument.h"
#include "host/schema/Names.h"
#include "text/Quote.h"
#include "text/Trim.h"
#include "text/Utf8.h"

#include <set>

namespace tvp::host::cimxml {
namespace {

constexpr unsigned int DEEPEST_EMBEDDING = 8;
constexpr std::string_view BLANKS = " \t\r\n";

using Names = std::set<std::string_view, NameLess>;

/** The beginning of a text, for a message. */
std::string shown(std::string_view text) {
  constexpr std::size_t LONGEST = 60;
  return text::quoted(text::cutToSize(text, LONGEST));
}

bool isTag(const pugi::xml_node& element, std::string_view tag) {
  return element.name() == tag;
}

std::string_view requiredName(const pugi::xml_node& element, const char* attribute) {
  const std::string_view name = element.attribute(attribute).value();
  if (name.empty()) {
    ElementReader::fail(shown(element.name()) + " has no " + attribute);
  }
  return name;
}

void rejectSecond(Names& names, std::string_view name, const char* what) {
  if (!names.insert(name).second) {
    ElementReader::fail(std::string("the ") + what + " " + shown(name) + " comes twice");
  }
}

/** The type that an element has in itself, of an array that of its elements. */
std::optional<CMPIType> messageType(const pugi::xml_node& element, const char* attribute) {
  // COMPAT: the second spelling is that of DSP0201 before 2.3; some servers write both.
  for (const char* mark : {"EmbeddedObject", "EMBEDDEDOBJECT"}) {
    if (!std::string_view(element.attribute(mark).value()).empty()) {
      return CMPI_instance;
    }
  }
  const std::string name = element.attribute(attribute).value();
  if (name.empty()) {
    return std::nullopt;
  }
  if (equalNames(name.c_str(), "reference")) {
    return CMPI_ref;
  }
  const std::optional<CMPIType> type = typeOfName(name);
  if (!type) {
    ElementReader::fail(shown(name) + " is not a type");
  }
  return type;
}

CMPIType elementType(CMPIType type) {
  return static_cast<CMPIType>(type & ~CMPI_ARRAY);
}

CMPIType arrayType(CMPIType type) {
  return static_cast<CMPIType>(type | CMPI_ARRAY);
}

std::vector<std::string> textsOf(const pugi::xml_node& array) {
  std::vector<std::string> texts;
  for (pugi::xml_node element = firstElement(array); element; element = nextElement(element)) {
    if (isTag(element, "VALUE")) {
      texts.push_back(textOf(element));
    }
  }
  return texts;
}

}  // namespace

void ElementReader::fail(const std::string& problem) {
  throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, problem);
}

pugi::xml_node ElementReader::content(const pugi::xml_node& element) {
  pugi::xml_node found;
  for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
    if (isTag(child, "QUALIFIER")) {
      continue;
    }
    if (found) {
      fail(shown(element.name()) + " has more than one value");
    }
    found = child;
  }
  return found;
}

std::string ElementReader::nameSpace(const pugi::xml_node& element) {
  std::string result;
  for (const pugi::xml_node& part : element.children("NAMESPACE")) {
    result.append(result.empty() ? "" : "/").append(requiredName(part, "NAME"));
  }
  if (result.empty()) {
    fail("the path of a namespace is empty");
  }
  return result;
}

std::string ElementReader::className(const pugi::xml_node& element) {
  if (!isTag(element, "CLASSNAME")) {
    fail(shown(element.name()) + " stands where CLASSNAME is expected");
  }
  return std::string(requiredName(element, "NAME"));
}

ObjectPath ElementReader::path(const pugi::xml_node& element) const {
  ObjectPath result;
  if (isTag(element, "INSTANCENAME")) {
    result = instanceName(element);
  } else if (isTag(element, "CLASSNAME")) {
    result.className = className(element);
  } else if (isTag(element, "OBJECTPATH") || isTag(element, "VALUE.REFERENCE")) {
    result = path(content(element));
  } else if (
      isTag(element, "INSTANCEPATH") || isTag(element, "LOCALINSTANCEPATH") || isTag(element, "CLASSPATH") ||
      isTag(element, "LOCALCLASSPATH")) {
    const pugi::xml_node instanceElement = element.child("INSTANCENAME");
    result = path(instanceElement ? instanceElement : element.child("CLASSNAME"));
    const pugi::xml_node place = element.child("NAMESPACEPATH");
    result.host = textOf(place.child("HOST"));
    result.nameSpace = nameSpace((place ? place : element).child("LOCALNAMESPACEPATH"));
  } else {
    fail(shown(element.name()) + " is not a path");
  }
  return result;
}

ObjectPath ElementReader::instanceName(const pugi::xml_node& element) const {
  ObjectPath result;
  result.className = requiredName(element, "CLASSNAME");
  Names names;
  for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
    const bool isBinding = isTag(child, "KEYBINDING");
    const std::string_view name = isBinding ? requiredName(child, "NAME") : std::string_view("");
    rejectSecond(names, name, "key");
    const pugi::xml_node key = isBinding ? content(child) : child;
    if (isTag(key, "VALUE.REFERENCE")) {
      result.keys.push_back({std::string(name), Value::reference(path(key))});
    } else if (isTag(key, "KEYVALUE")) {
      result.keys.push_back({std::string(name), keyValue(key)});
    } else {
      fail("the key " + shown(name) + " has no value");
    }
  }
  if (names.size() > 1 && names.count("") > 0) {
    fail("a key without a name stands beside others");
  }
  if (m_schema != nullptr) {
    applyKeyTypes(result, *m_schema);
  }
  return result;
}

Value ElementReader::keyValue(const pugi::xml_node& element) {
  const std::string text = textOf(element);
  std::optional<CMPIType> type = messageType(element, "TYPE");
  const std::string_view kind = element.attribute("VALUETYPE").value();
  if (!type && kind == "boolean") {
    type = CMPI_boolean;
  } else if (!type && kind == "numeric") {
    type = suggestedType({text});
    type = type == CMPI_uint64 ? type : std::optional<CMPIType>(CMPI_sint64);
  }
  std::optional<Value> value = parseScalar(text, type.value_or(CMPI_string));
  if (!value && kind == "numeric") {
    value = parseScalar(text, CMPI_real64);
  }
  if (!value) {
    fail(shown(text) + " is not the value of a key of the type " + typeName(*type));
  }
  return *value;
}

Value ElementReader::scalar(const pugi::xml_node& element, CMPIType type) const {
  if (isTag(element, "VALUE.NULL")) {
    return Value::null(type);
  }
  if (isTag(element, "VALUE.REFERENCE") && type == CMPI_ref) {
    return Value::reference(path(element));
  }
  if (!isTag(element, "VALUE") || firstElement(element)) {
    fail(shown(element.name()) + " is not a value of the type " + typeName(type));
  }
  std::string text = textOf(element);
  if (type == CMPI_string) {
    return Value::string(std::move(text));
  }
  if (type == CMPI_instance) {
    return text::trimmed(text, BLANKS).empty() ? Value::null(type) : Value::instance(embeddedInstance(text));
  }
  std::optional<Value> value = parseScalar(text, type);
  if (!value) {
    fail(shown(text) + " is not a value of the type " + typeName(type));
  }
  return std::move(*value);
}

Value ElementReader::list(const pugi::xml_node& element, std::optional<CMPIType> type) const {
  if (!type) {
    const std::vector<std::string> texts = textsOf(element);
    type = suggestedType({texts.begin(), texts.end()});
  }
  Value::List elements;
  for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
    elements.push_back(scalar(child, *type));
  }
  return Value::array(*type, std::move(elements));
}

Value ElementReader::value(
    const pugi::xml_node& holder, std::optional<CMPIType> type, CMPIType nullType) const {
  const pugi::xml_node element = content(holder);
  if (!element || isTag(element, "VALUE.NULL")) {
    return Value::null(nullType);
  }
  if (isTag(element, "VALUE.ARRAY")) {
    return list(element, type);
  }
  if (isTag(element, "VALUE.REFARRAY")) {
    return list(element, type.value_or(CMPI_ref));
  }
  if (isTag(element, "VALUE.REFERENCE")) {
    return scalar(element, type.value_or(CMPI_ref));
  }
  return scalar(element, type ? *type : suggestedType({textOf(element)}));
}

Value ElementReader::typedValue(const pugi::xml_node& element, const TypedElement* declared) const {
  std::optional<CMPIType> type = messageType(element, "PARAMTYPE");
  if (!type && declared != nullptr) {
    type = elementType(declared->type);
  }
  const bool isArray = declared != nullptr && (declared->type & CMPI_ARRAY) != 0;
  const CMPIType known = type.value_or(CMPI_null);
  return value(element, type, isArray ? arrayType(known) : known);
}

std::string ElementReader::text(const pugi::xml_node& element) {
  const Value value = ElementReader().scalar(element, CMPI_string);
  if (value.isNull()) {
    fail("expected a text, found VALUE.NULL");
  }
  return value.asString();
}

std::vector<std::string> ElementReader::texts(const pugi::xml_node& element) {
  if (!isTag(element, "VALUE.ARRAY")) {
    fail(shown(element.name()) + " stands where VALUE.ARRAY is expected");
  }
  std::vector<std::string> result;
  for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
    result.push_back(text(child));
  }
  return result;
}

Arguments ElementReader::arguments(const pugi::xml_node& call, const SchemaMethod* method) const {
  Arguments result;
  Names names;
  for (const pugi::xml_node& element : call.children("PARAMVALUE")) {
    const std::string name(requiredName(element, "NAME"));
    rejectSecond(names, element.attribute("NAME").value(), "argument");
    const SchemaParameter* declared = method == nullptr ? nullptr : method->parameter(name);
    try {
      result.values.push_back({name, typedValue(element, declared)});
    } catch (const CimFailure& failure) {
      fail("the argument " + shown(name) + ": " + failure.what());
    }
  }
  return result;
}

NamedValue ElementReader::property(const pugi::xml_node& element, const SchemaClass* schemaClass) const {
  const std::string name(requiredName(element, "NAME"));
  const bool isReference = isTag(element, "PROPERTY.REFERENCE");
  const bool isArray = isTag(element, "PROPERTY.ARRAY");
  const SchemaProperty* declared = schemaClass == nullptr ? nullptr : schemaClass->property(name);
  std::optional<CMPIType> type =
      isReference ? std::optional<CMPIType>(CMPI_ref) : messageType(element, "TYPE");
  if (declared != nullptr) {
    type = elementType(declared->type);
  }
  const CMPIType known = type.value_or(CMPI_string);
  const CMPIType whole = declared != nullptr ? declared->type : isArray ? arrayType(known) : known;
  Value content = value(element, type, whole);
  if (!content.isNull() && content.isArray() != ((whole & CMPI_ARRAY) != 0)) {
    fail("the value of " + shown(name) + " is " + (content.isArray() ? "an array" : "not an array"));
  }
  return {name, std::move(content)};
}

Instance ElementReader::plainInstance(const pugi::xml_node& element) const {
  Instance result;
  result.path.className = requiredName(element, "CLASSNAME");
  const SchemaClass* schemaClass = m_schema == nullptr ? nullptr : m_schema->find(result.path.className);
  Names names;
  for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
    if (isTag(child, "QUALIFIER")) {
      continue;
    }
    if (!isTag(child, "PROPERTY") && !isTag(child, "PROPERTY.ARRAY") && !isTag(child, "PROPERTY.REFERENCE")) {
      fail(shown(child.name()) + " is not a property");
    }
    rejectSecond(names, child.attribute("NAME").value(), "property");
    result.properties.push_back(property(child, schemaClass));
  }
  return result;
}

Instance ElementReader::instance(const pugi::xml_node& element) const {
  if (isTag(element, "INSTANCE")) {
    return plainInstance(element);
  }
  const pugi::xml_node content = element.child("INSTANCE");
  if (!content) {
    fail(shown(element.name()) + " is not an instance");
  }
  Instance result = plainInstance(content);
  for (const char* tag : {"INSTANCENAME", "INSTANCEPATH", "LOCALINSTANCEPATH"}) {
    if (const pugi::xml_node name = element.child(tag)) {
      ObjectPath named = path(name);
      if (!equalNames(named.className, result.path.className)) {
        fail("the class of the instance, " + shown(result.path.className) + ", is not that of its path");
      }
      result.path = std::move(named);
    }
  }
  return result;
}

Instance ElementReader::embeddedInstance(const std::string& xml) const {
  if (m_embedding == DEEPEST_EMBEDDING) {
    fail("instances are embedded deeper than " + std::to_string(DEEPEST_EMBEDDING));
  }
  pugi::xml_document document;
  try {
    parseXml(document, xml, LARGEST_REQUEST);
  } catch (const BadMessage& error) {
    fail(std::string("an embedded instance: ") + error.what());
  }
  return ElementReader(m_schema, m_embedding + 1).instance(firstElement(document));
}

}  // namespace tvp::host::cimxml
