// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractCachedInstanceProviderPlugin.h"

#include "oslib/KVSLog.h"

namespace tvp::cim::fwf {

void AbstractCachedInstanceProviderPlugin::getCIMInstance(CIMObjectPath&, std::vector<CIMInstance>&) {
  throwNotSupported("getCIMInstance");
}

void AbstractCachedInstanceProviderPlugin::enumerateInstances(
    CIMObjectPath&, std::vector<CIMInstance>&, bool) {
  throwNotSupported("enumerateInstances");
}

void AbstractCachedInstanceProviderPlugin::enumerateInstanceNames(
    CIMObjectPath&, std::vector<CIMObjectPath>&) {
  throwNotSupported("enumerateInstanceNames");
}

void AbstractCachedInstanceProviderPlugin::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void AbstractCachedInstanceProviderPlugin::getNonKeyAttributes(
    const CIMInstance&, std::vector<CIMProperty>&) {}

void AbstractCachedInstanceProviderPlugin::getRepositoryObjects(
    const CIMObjectPath&, std::vector<CIMInstance>&) {}

unsigned int
AbstractCachedInstanceProviderPlugin::getViewClassKeys(CIMObjectPath&, std::vector<CIMProperty>&) {
  KvsTrace("Executing AbstractCachedInstanceProviderPlugin :: getViewClassKeys()");
  return 0;
}

unsigned int AbstractCachedInstanceProviderPlugin::getKeysFromEventKeys(
    std::vector<CIMProperty>&, std::vector<CIMProperty>&) {
  KvsTrace("Executing AbstractCachedInstanceProviderPlugin :: getKeysFromEventKeys()");
  return 0;
}

std::string AbstractCachedInstanceProviderPlugin::getConcreteClassName() {
  return std::string();
}

}  // namespace tvp::cim::fwf
