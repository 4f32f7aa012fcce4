// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/ElementWriter.h"

#include "host/cimxml/message/ScalarText.h"
#include "host/cimxml/message/XmlWriter.h"
#include "host/schema/Names.h"

#include <algorithm>
#include <climits>

#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

/** A view without data: an attribute that is left out. */
constexpr std::string_view ABSENT;

std::string_view presentIf(bool condition, std::string_view text) {
  return condition ? text : ABSENT;
}

CMPIType elementType(const Value& value) {
  return static_cast<CMPIType>(value.type() & ~CMPI_ARRAY);
}

CMPIType elementType(const TypedElement& element) {
  return static_cast<CMPIType>(element.type & ~CMPI_ARRAY);
}

const std::string& machineName() {
  static const std::string known = [] {
    char name[HOST_NAME_MAX + 1] = {};
    return std::string(gethostname(name, HOST_NAME_MAX) == 0 && name[0] != '\0' ? name : "localhost");
  }();
  return known;
}

/** PROPERTY, PARAMETER and their like, with the suffix that the type requires. */
std::string tagOf(const char* kind, const TypedElement& element) {
  const bool isArray = (element.type & CMPI_ARRAY) != 0;
  const char* suffix = elementType(element) == CMPI_ref ? isArray ? ".REFARRAY" : ".REFERENCE"
                       : isArray                        ? ".ARRAY"
                                                        : "";
  return std::string(kind) + suffix;
}

std::string_view propertyTag(const Value& value) {
  return value.isArray() ? "PROPERTY.ARRAY" : value.type() == CMPI_ref ? "PROPERTY.REFERENCE" : "PROPERTY";
}

/**
 * What marks a string that contains an instance. The spelling of DSP0201 before 2.3, EMBEDDEDOBJECT, is not
 * written as well, as some servers do: wbemcli does not read an element that has both.
 */
std::string_view embedding(CMPIType type) {
  return presentIf(type == CMPI_instance, "instance");
}

}  // namespace

void ElementWriter::scalar(const Value& value) {
  if (value.isNull()) {
    m_output += "<VALUE.NULL/>\n";
    return;
  }
  m_output += "<VALUE>";
  if (value.type() == CMPI_instance) {
    std::string embedded;
    ElementWriter(embedded).instance(value.asInstance());
    appendEscaped(m_output, embedded);
  } else {
    appendScalar(m_output, value);
  }
  m_output += "</VALUE>\n";
}

void ElementWriter::list(const Value& value) {
  const bool references = elementType(value) == CMPI_ref;
  const XmlElement array(m_output, references ? "VALUE.REFARRAY" : "VALUE.ARRAY");
  for (const Value& element : value.asArray()) {
    if (references && !element.isNull()) {
      reference(element.asReference());
    } else {
      scalar(element);
    }
  }
}

void ElementWriter::value(const Value& value) {
  if (value.isNull()) {
    return;
  }
  if (value.isArray()) {
    list(value);
  } else if (value.type() == CMPI_ref) {
    reference(value.asReference());
  } else {
    scalar(value);
  }
}

void ElementWriter::argument(const NamedValue& argument) {
  typedValue("PARAMVALUE", argument.name, argument.value);
}

void ElementWriter::returnValue(const Value& value) {
  if (!value.isNull()) {
    typedValue("RETURNVALUE", ABSENT, value);
  }
}

void ElementWriter::typedValue(std::string_view tag, std::string_view name, const Value& content) {
  const CMPIType type = elementType(content);
  // Not EMBEDDEDOBJECT as well, as some servers write: wbemcli refuses an element that has both.
  const XmlElement element(
      m_output, tag,
      {{"NAME", name},
       {"PARAMTYPE", presentIf(content.type() != CMPI_null, xmlTypeName(type))},
       {"EmbeddedObject", embedding(type)}});
  value(content);
}

void ElementWriter::localNameSpacePath(std::string_view nameSpace) {
  const XmlElement element(m_output, "LOCALNAMESPACEPATH");
  while (!nameSpace.empty()) {
    const std::size_t length = std::min(nameSpace.find('/'), nameSpace.size());
    if (length > 0) {
      appendTag(m_output, "NAMESPACE", {{"NAME", nameSpace.substr(0, length)}}, "/>\n");
    }
    nameSpace.remove_prefix(std::min(length + 1, nameSpace.size()));
  }
}

void ElementWriter::className(std::string_view name) {
  appendTag(m_output, "CLASSNAME", {{"NAME", name}}, "/>\n");
}

void ElementWriter::instanceName(const ObjectPath& path) {
  const XmlElement element(m_output, "INSTANCENAME", {{"CLASSNAME", path.className}});
  for (const NamedValue& key : path.keys) {
    if (key.value.isNull() || key.value.isArray() || key.value.type() == CMPI_instance) {
      continue;  // nothing that a key can have
    }
    if (key.name.empty()) {
      keyValue(key.value);  // the only key, of a class that was unknown where the path was read
    } else {
      const XmlElement binding(m_output, "KEYBINDING", {{"NAME", key.name}});
      keyValue(key.value);
    }
  }
}

void ElementWriter::keyValue(const Value& value) {
  const CMPIType type = value.type();
  if (type == CMPI_ref) {
    reference(value.asReference());
    return;
  }
  const bool isText = type == CMPI_string || type == CMPI_dateTime || type == CMPI_char16;
  const std::string_view kind = type == CMPI_boolean ? "boolean" : isText ? "string" : "numeric";
  appendTag(m_output, "KEYVALUE", {{"VALUETYPE", kind}}, ">");
  appendScalar(m_output, value);
  m_output += "</KEYVALUE>\n";
}

void ElementWriter::instancePath(const ObjectPath& path) {
  const XmlElement element(m_output, "INSTANCEPATH");
  {
    const XmlElement place(m_output, "NAMESPACEPATH");
    appendText(m_output, "HOST", {}, path.host.empty() ? machineName() : path.host);
    localNameSpacePath(path.nameSpace);
  }
  instanceName(path);
}

void ElementWriter::localPath(const ObjectPath& path) {
  const bool isClass = path.keys.empty();
  const XmlElement element(m_output, isClass ? "LOCALCLASSPATH" : "LOCALINSTANCEPATH");
  localNameSpacePath(path.nameSpace);
  if (isClass) {
    className(path.className);
  } else {
    instanceName(path);
  }
}

void ElementWriter::reference(const ObjectPath& path) {
  const XmlElement element(m_output, "VALUE.REFERENCE");
  if (path.nameSpace.empty()) {
    instanceName(path);
  } else if (path.host.empty() || path.keys.empty()) {
    localPath(path);
  } else {
    instancePath(path);
  }
}

bool ElementWriter::isWanted(const std::string& property) const {
  if (m_detail == nullptr || !m_detail->properties) {
    return true;
  }
  const auto& wanted = *m_detail->properties;
  return std::any_of(wanted.begin(), wanted.end(), [&property](const std::string& name) {
    return equalNames(name, property);
  });
}

void ElementWriter::instance(const Instance& instance) {
  const std::string& className = instance.path.className;
  if (className != m_className) {
    m_className = className;
    m_startTags.clear();
  }
  const XmlElement element(m_output, "INSTANCE", {{"CLASSNAME", className}});
  for (std::size_t position = 0; position < instance.properties.size(); ++position) {
    const NamedValue& property = instance.properties[position];
    const std::string& tag = startTag(position, property);
    if (!tag.empty()) {
      m_output += tag;
      value(property.value);
      m_output.append("</").append(propertyTag(property.value)).append(">\n");
    }
  }
}

const std::string& ElementWriter::startTag(std::size_t position, const NamedValue& property) {
  m_startTags.resize(std::max(m_startTags.size(), position + 1));
  StartTag& known = m_startTags[position];
  const CMPIType type = property.value.type();
  if (known.name != property.name || known.type != type) {
    known = {property.name, type, ""};
    if (isWanted(property.name)) {
      const bool isReference = type == CMPI_ref;
      const bool origins = m_schema != nullptr && m_detail != nullptr && m_detail->classOrigin;
      const SchemaClass* schemaClass = origins ? m_schema->find(m_className) : nullptr;
      const SchemaProperty* declared =
          schemaClass == nullptr ? nullptr : schemaClass->property(property.name);
      appendTag(
          known.text, propertyTag(property.value),
          {{"NAME", property.name},
           {"CLASSORIGIN", declared == nullptr ? ABSENT : declared->origin},
           {"TYPE", presentIf(!isReference, xmlTypeName(type))},
           {"EmbeddedObject", embedding(elementType(property.value))}},
          ">\n");
    }
  }
  return known.text;
}

void ElementWriter::qualifiers(const Qualifiers& qualifiers) {
  if (!m_detail->qualifiers) {
    return;
  }
  for (const NamedValue& qualifier : qualifiers) {
    const XmlElement element(
        m_output, "QUALIFIER", {{"NAME", qualifier.name}, {"TYPE", xmlTypeName(qualifier.value.type())}});
    value(qualifier.value);
  }
}

void ElementWriter::property(const SchemaProperty& property, const SchemaClass& schemaClass) {
  const CMPIType type = elementType(property);
  const bool isReference = type == CMPI_ref;
  const std::string tag = tagOf("PROPERTY", property);  // which the element needs until its end
  const XmlElement element(
      m_output, tag,
      {{"NAME", property.name},
       {"REFERENCECLASS", presentIf(isReference, property.className)},
       {"CLASSORIGIN", presentIf(m_detail->classOrigin, property.origin)},
       {"PROPAGATED", presentIf(!equalNames(property.origin, schemaClass.name), "true")},
       {"TYPE", presentIf(!isReference, xmlTypeName(type))},
       {"EmbeddedObject", embedding(type)}});
  qualifiers(property.qualifiers);
}

void ElementWriter::method(const SchemaMethod& method, const SchemaClass& schemaClass) {
  const XmlElement element(
      m_output, "METHOD",
      {{"NAME", method.name},
       {"TYPE", xmlTypeName(method.type)},
       {"CLASSORIGIN", presentIf(m_detail->classOrigin, method.origin)},
       {"PROPAGATED", presentIf(!equalNames(method.origin, schemaClass.name), "true")}});
  qualifiers(method.qualifiers);
  for (const SchemaParameter& entry : method.parameters) {
    const CMPIType type = elementType(entry);
    const std::string tag = tagOf("PARAMETER", entry);
    const XmlElement parameter(
        m_output, tag,
        {{"NAME", entry.name},
         {"REFERENCECLASS", presentIf(type == CMPI_ref, entry.className)},
         {"TYPE", presentIf(type != CMPI_ref, xmlTypeName(type))}});
    qualifiers(entry.qualifiers);
  }
}

void ElementWriter::schemaClass(const SchemaClass& schemaClass) {
  const XmlElement element(
      m_output, "CLASS",
      {{"NAME", schemaClass.name},
       {"SUPERCLASS", presentIf(!schemaClass.superclass.empty(), schemaClass.superclass)}});
  const auto isShown = [this, &schemaClass](const std::string& origin) {
    return !m_detail->localOnly || equalNames(origin, schemaClass.name);
  };
  qualifiers(schemaClass.qualifiers);
  for (const SchemaProperty& entry : schemaClass.properties) {
    if (isShown(entry.origin) && isWanted(entry.name)) {
      property(entry, schemaClass);
    }
  }
  for (const SchemaMethod& entry : schemaClass.methods) {
    if (isShown(entry.origin)) {
      method(entry, schemaClass);
    }
  }
}

}  // namespace tvp::host::cimxml
