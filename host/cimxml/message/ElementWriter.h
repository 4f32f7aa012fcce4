// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_ELEMENTWRITER_H
#define HOST_CIMXML_MESSAGE_ELEMENTWRITER_H

#include "host/cimxml/message/MessageWriter.h"
#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace tvp::host::cimxml {

/** Appends the elements of CIM-XML to a text. One thread. */
class ElementWriter {
public:
  /**
   * All must outlive the writer.
   * @param schema gives the origins of instances' properties; may be null
   * @param detail null for everything that an instance has; never null for classes
   */
  explicit ElementWriter(std::string& output, const Schema* schema = nullptr, const Detail* detail = nullptr)
      : m_output(output), m_schema(schema), m_detail(detail) {}

  /** VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for null. */
  void value(const Value& value);
  /** PARAMVALUE. */
  void argument(const NamedValue& argument);
  /** RETURNVALUE; nothing for null. */
  void returnValue(const Value& value);
  void localNameSpacePath(std::string_view nameSpace);
  void className(std::string_view name);
  void instanceName(const ObjectPath& path);
  /** INSTANCEPATH; the name of this machine stands for a host that the path does not have. */
  void instancePath(const ObjectPath& path);
  /** LOCALINSTANCEPATH, or LOCALCLASSPATH for a path without keys. */
  void localPath(const ObjectPath& path);
  /** INSTANCE. */
  void instance(const Instance& instance);
  /** CLASS. */
  void schemaClass(const SchemaClass& schemaClass);

private:
  void typedValue(std::string_view tag, std::string_view name, const Value& content);
  void scalar(const Value& value);
  void list(const Value& value);
  void reference(const ObjectPath& path);
  void keyBinding(const NamedValue& key);
  const std::string& startTag(std::size_t position, const NamedValue& property);
  void property(const SchemaProperty& property, const SchemaClass& schemaClass);
  void method(const SchemaMethod& method, const SchemaClass& schemaClass);
  void qualifiers(const Qualifiers& qualifiers);
  bool isWanted(const std::string& property) const;

  /** The start tag of a property of the latest instance; without a text when it is not wanted. */
  struct StartTag {
    std::string name;
    CMPIType type = CMPI_null;
    std::string text;
  };

  std::string& m_output;
  const Schema* m_schema;
  const Detail* m_detail;
  std::string m_className;            ///< of the latest instance
  std::vector<StartTag> m_startTags;  ///< by position, as instances of a class differ in the values only
};

}  // namespace tvp::host::cimxml

#endif
