// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_LogicalDevices.h"

#include "providers/FixedInstance.h"

namespace tvp::cim::fwf {

void TVP_LogicalDevices::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_LogicalDevices"), keyProperty("NumberOfLogicalDevices", 2U)},
      instances);
}

void TVP_LogicalDevices::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_LogicalDevices::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_LogicalDevices"));
  keys.push_back(keyProperty("NumberOfLogicalDevices", 10U));
}

void TVP_LogicalDevices::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_LogicalDevices::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
