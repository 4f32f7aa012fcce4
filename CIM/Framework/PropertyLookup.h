// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_PROPERTYLOOKUP_H
#define CIM_FRAMEWORK_PROPERTYLOOKUP_H

#include "CIM/Framework/CIMProperty.h"

#include <string>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Finds a property; Properties is a list of properties, const or not.
 * @return the first property of exactly this name, owned by the list; null if there is no such property.
 */
template <typename Properties>
auto findProperty(Properties& properties, const std::string& name) -> decltype(properties.data()) {
  for (auto& property : properties) {
    if (property.name() == name) {
      return &property;
    }
  }
  return nullptr;
}

/**
 * @param property may be null
 * @return the elements that a property has in its slot for T; none if the property is null, or its value
 * there is
 */
template <typename T>
std::vector<T> elementsOf(const CIMProperty* property) {
  if (property == nullptr || property->slot<T>().m_isNull) {
    return {};
  }
  return property->slot<T>().m_values;
}

/** @return the first of elementsOf, if any */
template <typename T>
T firstElementOf(const CIMProperty* property, T missing = T()) {
  std::vector<T> elements = elementsOf<T>(property);
  return elements.empty() ? std::move(missing) : std::move(elements.front());
}

}  // namespace tvp::cim::fwf

#endif
