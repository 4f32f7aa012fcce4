// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALPOOLS_H
#define PROVIDERS_TVP_VIRTUALPOOLS_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The collection of pools: one instance of fixed content. An enumeration says 2 pools and getting it 5;
 * clients rely on both, neither is counted.
 */
class TVP_VirtualPools : public AbstractInstanceProviderPlugin {
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
