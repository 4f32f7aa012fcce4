// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_ELEMENTREADER_H
#define HOST_CIMXML_MESSAGE_ELEMENTREADER_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <pugixml.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvp::host::cimxml {

/**
 * Reads the elements of CIM-XML. An element that is not what it should be is a
 * CimFailure(CMPI_RC_ERR_INVALID_PARAMETER) that says which and why. Thread-safe.
 */
class ElementReader {
public:
  /** @param schema gives the types of properties and keys where it has the class; may be null */
  explicit ElementReader(const Schema* schema = nullptr) : m_schema(schema) {}

  /** The names in a LOCALNAMESPACEPATH or NAMESPACEPATH: "root/interop". */
  static std::string nameSpace(const pugi::xml_node& element);
  static std::string className(const pugi::xml_node& element);
  /** INSTANCENAME, CLASSNAME, a path element around one of them, OBJECTPATH or VALUE.REFERENCE. */
  ObjectPath path(const pugi::xml_node& element) const;
  /** INSTANCE, or an element that has one, with its path if it has one too. */
  Instance instance(const pugi::xml_node& element) const;
  /**
   * The value of a PARAMVALUE or RETURNVALUE.
   * @param declared gives the type where the element has none; may be null
   */
  Value typedValue(const pugi::xml_node& element, const TypedElement* declared) const;
  /** The PARAMVALUEs of a call or an answer. @param method may be null; gives types where elements have none
   */
  Arguments arguments(const pugi::xml_node& call, const SchemaMethod* method) const;
  /** The text of a VALUE, and those in a VALUE.ARRAY. */
  static std::string text(const pugi::xml_node& element);
  static std::vector<std::string> texts(const pugi::xml_node& element);

  /** The only element inside, QUALIFIER apart; an empty node if there is none. */
  static pugi::xml_node content(const pugi::xml_node& element);

  [[noreturn]] static void fail(const std::string& problem);

private:
  ElementReader(const Schema* schema, unsigned int embedding) : m_schema(schema), m_embedding(embedding) {}

  Instance plainInstance(const pugi::xml_node& element) const;
  ObjectPath instanceName(const pugi::xml_node& element) const;
  NamedValue property(const pugi::xml_node& element, const SchemaClass* schemaClass) const;
  static Value keyValue(const pugi::xml_node& element);
  Value value(const pugi::xml_node& holder, std::optional<CMPIType> type, CMPIType nullType) const;
  Value scalar(const pugi::xml_node& element, CMPIType type) const;
  Value list(const pugi::xml_node& element, std::optional<CMPIType> type) const;
  Instance embeddedInstance(const std::string& xml) const;

  const Schema* m_schema;
  unsigned int m_embedding = 0;  ///< how many instances this one is embedded in
};

}  // namespace tvp::host::cimxml

#endif
