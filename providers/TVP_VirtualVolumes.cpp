// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualVolumes.h"

#include "providers/FixedInstance.h"

namespace tvp::cim::fwf {

void TVP_VirtualVolumes::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_LogicalDevice"),
       keyProperty<unsigned char>("NumberOfVirtualVolumesPresent", 2)},
      instances);
}

void TVP_VirtualVolumes::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualVolumes::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_LogicalDevice"));
  keys.push_back(keyProperty<unsigned char>("NumberOfVirtualVolumesPresent", 8));
}

void TVP_VirtualVolumes::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualVolumes::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
