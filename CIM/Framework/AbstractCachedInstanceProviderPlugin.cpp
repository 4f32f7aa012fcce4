// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractCachedInstanceProviderPlugin.h"

#include "CIM/Framework/CIMException.h"
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

void AbstractCachedInstanceProviderPlugin::modifyInstance(
    CIMObjectPath&, CIMInstance&, std::vector<std::string>&) {
  throwNotSupported("modifyInstance");
}

void AbstractCachedInstanceProviderPlugin::createInstance(CIMObjectPath&, CIMInstance&) {
  throwNotSupported("createInstance");
}

void AbstractCachedInstanceProviderPlugin::deleteInstance(const CIMObjectPath&) {
  throwNotSupported("deleteInstance");
}

void AbstractCachedInstanceProviderPlugin::associators(
    CIMObjectPath&, std::string&, std::vector<CIMInstance>&, std::string&, std::string&, std::string&,
    const char**) {
  throwNotSupported("associators");
}

void AbstractCachedInstanceProviderPlugin::associatorNames(
    CIMObjectPath&, std::string&, std::vector<CIMObjectPath>&, std::string&, std::string&, std::string&) {
  throwNotSupported("associatorNames");
}

void AbstractCachedInstanceProviderPlugin::references(
    CIMObjectPath&, const std::string&, std::vector<CIMInstance>&, const std::string&) {
  throwNotSupported("references");
}

void AbstractCachedInstanceProviderPlugin::referencesNames(
    CIMObjectPath&, const std::string&, const std::string&, std::vector<CIMObjectPath>&) {
  throwNotSupported("referencesNames");
}

unsigned int AbstractCachedInstanceProviderPlugin::invokeMethod(
    const CIMObjectPath&, const std::string&, const CIMMethodParam&, CIMMethodParam&) {
  return FW_RC_NOT_SUPPORTED;
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
