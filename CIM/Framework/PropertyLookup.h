// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_PROPERTYLOOKUP_H
#define CIM_FRAMEWORK_PROPERTYLOOKUP_H

#include "CIM/Framework/CIMProperty.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Properties is a list of properties, const or not.
 * @return the first property of exactly this name, owned by the list; null when there is none.
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

}  // namespace tvp::cim::fwf

#endif
