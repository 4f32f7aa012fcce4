// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_VALUE_H
#define HOST_SCHEMA_VALUE_H

#include "cmpidt.h"
#include "host/schema/DateTime.h"

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace tvp::host {

struct ObjectPath;
struct Instance;

/**
 * One value as CMPI knows it: a type code, a state and the content. A plain value: copies are independent
 * (embedded instances and references are shared, and never change). The type of an array has the CMPI_ARRAY
 * bit; its elements are values of the element type. The readers throw std::bad_variant_access if the content
 * is of another kind, or null.
 */
class Value {
public:
  using List = std::vector<Value>;

  /** The null value without a type (CMPI_null). */
  Value() = default;
  static Value null(CMPIType type);
  static Value boolean(bool value);
  static Value uint8(std::uint8_t value) { return unsignedInteger(CMPI_uint8, value); }
  static Value uint16(std::uint16_t value) { return unsignedInteger(CMPI_uint16, value); }
  static Value uint32(std::uint32_t value) { return unsignedInteger(CMPI_uint32, value); }
  static Value uint64(std::uint64_t value) { return unsignedInteger(CMPI_uint64, value); }
  static Value sint64(std::int64_t value) { return signedInteger(CMPI_sint64, value); }
  /** @param type CMPI_uint8 to CMPI_uint64, or CMPI_char16. */
  static Value unsignedInteger(CMPIType type, std::uint64_t value);
  /** @param type CMPI_sint8 to CMPI_sint64. */
  static Value signedInteger(CMPIType type, std::int64_t value);
  /** @param type CMPI_real32 or CMPI_real64. */
  static Value real(CMPIType type, double value);
  static Value string(std::string text);
  static Value dateTime(DateTime value);
  static Value reference(ObjectPath path);
  static Value instance(Instance embedded);
  static Value instance(std::shared_ptr<const Instance> embedded);
  /** @param elementType the type without the CMPI_ARRAY bit. */
  static Value array(CMPIType elementType, List elements);

  CMPIType type() const { return m_type; }
  CMPIValueState state() const { return m_state; }
  /** Adds state bits such as CMPI_keyValue; comparison considers only null. */
  void setState(CMPIValueState state) { m_state = state; }
  bool isNull() const { return (m_state & CMPI_nullValue) != 0; }
  bool isArray() const { return (m_type & CMPI_ARRAY) != 0; }

  bool asBoolean() const { return std::get<bool>(m_content); }
  std::uint64_t asUnsigned() const { return std::get<std::uint64_t>(m_content); }
  std::int64_t asSigned() const { return std::get<std::int64_t>(m_content); }
  double asReal() const { return std::get<double>(m_content); }
  const std::string& asString() const { return std::get<std::string>(m_content); }
  const DateTime& asDateTime() const { return std::get<DateTime>(m_content); }
  const ObjectPath& asReference() const;
  const Instance& asInstance() const;
  /** The shared embedded instance, never null. */
  const std::shared_ptr<const Instance>& sharedInstance() const;
  const List& asArray() const { return std::get<List>(m_content); }

  /** The value in MOF syntax: "text" quoted, NULL, {1, 2}; for people and test messages. */
  std::string toText() const;

  bool operator==(const Value& other) const;
  bool operator!=(const Value& other) const { return !(*this == other); }

private:
  using Content = std::variant<
      std::monostate, bool, std::uint64_t, std::int64_t, double, std::string, DateTime,
      std::shared_ptr<const ObjectPath>, std::shared_ptr<const Instance>, List>;
  Value(CMPIType type, Content content)
      : m_type(type), m_state(CMPI_goodValue), m_content(std::move(content)) {}

  CMPIType m_type = CMPI_null;
  CMPIValueState m_state = CMPI_nullValue;
  Content m_content;
};

/** A key binding, a property or an argument. */
struct NamedValue {
  std::string name;
  Value value;

  /** Names are compared ignoring case. */
  bool operator==(const NamedValue& other) const;
  bool operator!=(const NamedValue& other) const { return !(*this == other); }
};

/** Finds by name, ignoring case. @return null if there is none. */
const Value* findValue(const std::vector<NamedValue>& values, const std::string& name);
Value* findValue(std::vector<NamedValue>& values, const std::string& name);
/** Replaces the value of that name, or appends it. */
void setValue(std::vector<NamedValue>& values, const std::string& name, Value value);

/** An object path. Keys keep their order; class, namespace and key names are compared ignoring case. */
struct ObjectPath {
  std::string nameSpace;
  std::string className;
  std::vector<NamedValue> keys;
  std::string host;

  const Value* key(const std::string& name) const { return findValue(keys, name); }
  /** Compares namespace, class and keys in any order; the host is ignored. */
  bool operator==(const ObjectPath& other) const;
  bool operator!=(const ObjectPath& other) const { return !(*this == other); }
};

/** An instance: properties in the schema's order, each with its declared type, null if unset. */
struct Instance {
  ObjectPath path;
  std::vector<NamedValue> properties;

  const Value* property(const std::string& name) const { return findValue(properties, name); }
  /** Compares the class names and the properties; the paths' keys are ignored. */
  bool operator==(const Instance& other) const;
  bool operator!=(const Instance& other) const { return !(*this == other); }
};

/** Arguments of a method, in order. */
struct Arguments {
  std::vector<NamedValue> values;

  /** Appends an argument, or replaces the one of that name. @return itself, for chaining. */
  Arguments& add(const std::string& name, Value value);
  const Value* find(const std::string& name) const { return findValue(values, name); }
  bool operator==(const Arguments& other) const { return values == other.values; }
  bool operator!=(const Arguments& other) const { return !(*this == other); }
};

std::ostream& operator<<(std::ostream& stream, const Value& value);

}  // namespace tvp::host

#endif
