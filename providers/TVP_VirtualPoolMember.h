// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALPOOLMEMBER_H
#define PROVIDERS_TVP_VIRTUALPOOLMEMBER_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * A sample member of a pool, of fixed content: two extents, sectors 0 to 40 and 51 to 79. Getting it
 * leaves the extents out.
 */
class TVP_VirtualPoolMember : public AbstractInstanceProviderPlugin {
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
