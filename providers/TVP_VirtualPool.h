// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALPOOL_H
#define PROVIDERS_TVP_VIRTUALPOOL_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The pools, one instance each, internal ones left out; none while there is no driver. Getting one
 * answers a fixed sample, whatever the path.
 */
class TVP_VirtualPool : public AbstractInstanceProviderPlugin, public virtual AbstractMethodProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  /** Names nothing. */
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  /**
   * Runs "GetVirtualPoolMembers". Any other method is answered with success and does nothing, which
   * is intended.
   * @return 0; 1 when the method fails
   */
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override;
  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;
};

}  // namespace tvp::cim::fwf

#endif
