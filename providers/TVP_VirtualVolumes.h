// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALVOLUMES_H
#define PROVIDERS_TVP_VIRTUALVOLUMES_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The collection of volumes: one instance of fixed content, which names itself a TVP_LogicalDevice. An
 * enumeration says 2 volumes and getting it 8. Clients rely on all three.
 */
class TVP_VirtualVolumes : public AbstractInstanceProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  /** Names nothing. */
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;
};

}  // namespace tvp::cim::fwf

#endif
