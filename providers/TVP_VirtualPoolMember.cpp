// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualPoolMember.h"

#include "providers/FixedInstance.h"

namespace tvp::cim::fwf {

void TVP_VirtualPoolMember::enumerateInstances(
    CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_VirtualPoolMember"), keyProperty("SerialNumber", "23432125"),
       keyProperty("StartRange", std::vector<unsigned long long>{0, 51}),
       keyProperty("EndRange", std::vector<unsigned long long>{40, 79}),
       keyProperty<unsigned char>("NumberOfValidLDExtn", 2)},
      instances);
}

void TVP_VirtualPoolMember::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualPoolMember::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_VirtualPoolMember"));
  keys.push_back(keyProperty("SerialNumber", "23432125"));
  keys.push_back(keyProperty<unsigned char>("NumberOfValidLDExtn", 2));
}

void TVP_VirtualPoolMember::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualPoolMember::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
