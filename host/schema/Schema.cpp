// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Schema.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tvp::host {
namespace {

template <class Element>
const Element* findByName(const std::vector<Element>& elements, const std::string& name) {
  const auto found = std::find_if(elements.begin(), elements.end(), [&name](const Element& element) {
    return equalNames(element.name, name);
  });
  return found == elements.end() ? nullptr : &*found;
}

/** Inherited elements come first; a redeclared element replaces the inherited one. */
template <class Element>
std::vector<Element>
inherit(const std::vector<Element>& inherited, std::vector<Element> own, const std::string& className) {
  std::vector<Element> result = inherited;
  for (Element& element : own) {
    element.origin = className;
    const Element* known = findByName(result, element.name);
    if (known != nullptr) {
      result[static_cast<std::size_t>(known - result.data())] = std::move(element);
    } else {
      result.push_back(std::move(element));
    }
  }
  return result;
}

}  // namespace

std::string TypedElement::text(const std::string& qualifierName) const {
  const Value* value = qualifier(qualifierName);
  return value != nullptr && !value->isNull() && value->type() == CMPI_string ? value->asString() : "";
}

std::string TypedElement::valueName(const std::string& number) const {
  const Value* numbers = qualifier("ValueMap");
  const Value* names = qualifier("Values");
  if (numbers == nullptr || names == nullptr || !numbers->isArray() || !names->isArray()) {
    return "";
  }
  const Value::List& map = numbers->asArray();
  for (std::size_t i = 0; i < map.size() && i < names->asArray().size(); ++i) {
    const Value& meaning = names->asArray()[i];
    if (map[i] == Value::string(number) && meaning.type() == CMPI_string) {
      return meaning.asString();
    }
  }
  return "";
}

const SchemaParameter* SchemaMethod::parameter(const std::string& parameterName) const {
  return findByName(parameters, parameterName);
}

const SchemaProperty* SchemaClass::property(const std::string& propertyName) const {
  const std::optional<std::size_t> known = position(propertyName);
  return known ? &properties[*known] : nullptr;
}

std::optional<std::size_t> SchemaClass::position(std::string_view propertyName) const {
  const auto found = positions.find(propertyName);
  return found == positions.end() ? std::nullopt : std::optional(found->second);
}

const SchemaMethod* SchemaClass::method(const std::string& methodName) const {
  return findByName(methods, methodName);
}

bool SchemaClass::isIndication() const {
  const Value* flag = findValue(qualifiers, "Indication");
  return flag != nullptr && *flag == Value::boolean(true);
}

const SchemaClass* Schema::superclassOf(const SchemaClass& added) {
  if (const SchemaClass* known = find(added.superclass)) {
    return known;
  }
  if (!equalNames(added.superclass.substr(0, 4), "CIM_")) {
    throw std::invalid_argument(
        "the superclass " + added.superclass + " of " + added.name + " is not declared before it");
  }
  auto external = std::make_unique<SchemaClass>();
  external->name = added.superclass;
  external->external = true;
  return keep(std::move(external));
}

const SchemaClass* Schema::keep(std::unique_ptr<SchemaClass> kept) {
  const SchemaClass* result = kept.get();
  m_classes.push_back(std::move(kept));
  m_byName[result->name] = result;
  return result;
}

void Schema::add(SchemaClass added) {
  if (const SchemaClass* known = find(added.name); known != nullptr) {
    throw std::invalid_argument(
        known->external ? "the class " + added.name + " is declared after a class that derives from it"
                        : "the class " + added.name + " is declared twice");
  }
  if (!added.superclass.empty() && equalNames(added.superclass, added.name)) {
    throw std::invalid_argument("the class " + added.name + " derives from itself");
  }
  const SchemaClass none;
  const SchemaClass& parent = added.superclass.empty() ? none : *superclassOf(added);
  added.properties = inherit(parent.properties, std::move(added.properties), added.name);
  added.methods = inherit(parent.methods, std::move(added.methods), added.name);
  for (std::size_t i = 0; i < added.properties.size(); ++i) {
    added.positions.emplace(added.properties[i].name, i);
  }
  keep(std::make_unique<SchemaClass>(std::move(added)));
}

const SchemaClass* Schema::find(const std::string& className) const {
  const auto found = m_byName.find(className);
  return found == m_byName.end() ? nullptr : found->second;
}

bool Schema::isA(const std::string& className, const std::string& ancestor) const {
  if (equalNames(className, ancestor)) {
    return true;
  }
  const SchemaClass* known = find(className);
  return known != nullptr && !known->superclass.empty() && isA(known->superclass, ancestor);
}

std::vector<const SchemaClass*> Schema::classes() const {
  std::vector<const SchemaClass*> result;
  for (const auto& known : m_classes) {
    if (!known->external) {
      result.push_back(known.get());
    }
  }
  return result;
}

Instance Schema::emptyInstance(const ObjectPath& path) const {
  const SchemaClass* known = find(path.className);
  if (known == nullptr) {
    throw std::invalid_argument("the schema has no class " + path.className);
  }
  Instance result;
  result.path = path;
  result.properties.reserve(known->properties.size());
  for (const SchemaProperty& property : known->properties) {
    result.properties.push_back({property.name, Value::null(property.type)});
  }
  return result;
}

}  // namespace tvp::host
