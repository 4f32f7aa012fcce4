// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualVolumeSource.h"

#include "providers/FixedInstance.h"

namespace tvp::cim::fwf {

void TVP_VirtualVolumeSource::enumerateInstances(
    CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_VirtualVolumeSource"), keyProperty("VirtualPoolId", 21U),
       keyProperty("MaxAllowedChunks", 512ULL)},
      instances);
}

void TVP_VirtualVolumeSource::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualVolumeSource::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_VirtualVolumeSource"));
  keys.push_back(keyProperty<unsigned char>("VirtualVolumeSourceId", 21));
  keys.push_back(keyProperty("MaxAllowedChunks", 512ULL));
}

void TVP_VirtualVolumeSource::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualVolumeSource::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
