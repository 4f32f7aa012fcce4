// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"

#include <utility>

namespace tvp::cim::fwf {

FixedPlugin::FixedPlugin(std::vector<CIMProperty> enumerated, std::vector<CIMProperty> got)
    : m_enumerated(std::move(enumerated)), m_got(std::move(got)) {}

void FixedPlugin::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  CIMInstance instance;
  instance.setPath(path);
  for (const CIMProperty& property : m_enumerated) {
    instance.addProperty(property);
  }
  instances.push_back(std::move(instance));
}

void FixedPlugin::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.insert(keys.end(), m_got.begin(), m_got.end());
}

}  // namespace tvp::cim::fwf
