// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_SCHEMA_H
#define HOST_SCHEMA_SCHEMA_H

#include "host/schema/Names.h"
#include "host/schema/Value.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvp::host {

/** A qualifier with its value, for example Units("...") or ValueMap{"1", "2"}. */
using Qualifiers = std::vector<NamedValue>;

/** What a property, a parameter and a method's result have in common. */
struct TypedElement {
  std::string name;
  CMPIType type = CMPI_string;  ///< with CMPI_ARRAY for arrays; CMPI_instance for EmbeddedInstance
  std::string className;        ///< of an embedded instance or a reference, else empty
  Qualifiers qualifiers;

  /** @return null if there is no such qualifier. */
  const Value* qualifier(const std::string& qualifierName) const {
    return findValue(qualifiers, qualifierName);
  }
  /** The text of a string qualifier such as "Description"; empty if there is no such qualifier. */
  std::string text(const std::string& qualifierName) const;
  /** The name that ValueMap and Values give to a number; empty if they do not contain it. */
  std::string valueName(const std::string& number) const;
};

struct SchemaProperty : TypedElement {
  bool key = false;
  bool writable = false;
  std::string origin;  ///< the class that declares it
};

struct SchemaParameter : TypedElement {
  bool in = true;
  bool out = false;
};

/** A method; `type` is the type of its return value. */
struct SchemaMethod : TypedElement {
  std::vector<SchemaParameter> parameters;
  std::string origin;

  /** @return null if there is no such parameter. */
  const SchemaParameter* parameter(const std::string& parameterName) const;
};

/** A class including what it inherits: inherited properties and methods come first. */
struct SchemaClass {
  std::string name;
  std::string superclass;  ///< empty for a base class
  bool external = false;   ///< a standard class that is only named as a superclass
  Qualifiers qualifiers;
  std::vector<SchemaProperty> properties;
  std::vector<SchemaMethod> methods;
  std::map<std::string, std::size_t, NameLess> positions;  ///< of the properties, by name

  /** The position of a property, if there is one of that name. Does not allocate. */
  std::optional<std::size_t> position(std::string_view propertyName) const;
  /** @return null if there is no such property. */
  const SchemaProperty* property(const std::string& propertyName) const;
  /** @return null if there is no such method. */
  const SchemaMethod* method(const std::string& methodName) const;
  bool isIndication() const;
};

/**
 * The classes that a broker knows. Built once (by MofReader), then only read: safe for any number of threads.
 * Class names are looked up ignoring case.
 */
class Schema {
public:
  /**
   * Adds a class with its own features; inherited features are put before them. A superclass that is not in
   * the schema is accepted as an external class when its name begins with "CIM_".
   * @throws std::invalid_argument for a class that already exists (also as a superclass of another) or an
   * unknown superclass.
   */
  void add(SchemaClass added);

  /** @return null if there is no such class. */
  const SchemaClass* find(const std::string& className) const;
  /** Whether a class is the same as the other one or derives from it. */
  bool isA(const std::string& className, const std::string& ancestor) const;
  /** The declared classes in the order of declaration, without external ones. */
  std::vector<const SchemaClass*> classes() const;
  /** An instance of a class with every property null. @throws std::invalid_argument for an unknown class. */
  Instance emptyInstance(const ObjectPath& path) const;

private:
  const SchemaClass* superclassOf(const SchemaClass& added);
  const SchemaClass* keep(std::unique_ptr<SchemaClass> kept);

  std::vector<std::unique_ptr<SchemaClass>> m_classes;
  std::map<std::string, const SchemaClass*, NameLess> m_byName;
};

}  // namespace tvp::host

#endif
