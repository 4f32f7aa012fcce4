// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALVOLUMESOURCE_H
#define PROVIDERS_TVP_VIRTUALVOLUMESOURCE_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * A sample source of a volume, of fixed content. An enumeration names the identifier VirtualPoolId, getting
 * it names it VirtualVolumeSourceId; both stay.
 */
class TVP_VirtualVolumeSource : public AbstractInstanceProviderPlugin {
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
