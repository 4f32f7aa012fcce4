// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualPools.h"

#include "providers/FixedInstance.h"

namespace tvp::cim::fwf {

void TVP_VirtualPools::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_VirtualPools"),
       keyProperty<unsigned char>("NumberOfStoragePool", 2)},
      instances);
}

void TVP_VirtualPools::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualPools::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_VirtualPools"));
  keys.push_back(keyProperty<unsigned char>("NumberOfStoragePool", 5));
}

void TVP_VirtualPools::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualPools::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
