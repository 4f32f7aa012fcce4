// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_VIRTUALVOLUME_H
#define PROVIDERS_TVP_VIRTUALVOLUME_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The volumes, one instance each; none while there is no driver. Getting one answers the path of the
 * request alone.
 */
class TVP_VirtualVolume : public AbstractInstanceProviderPlugin, public virtual AbstractMethodProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  /** Names nothing. */
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  /**
   * Runs "GetVirtualVolumeMembers". Any other method, and one that fails, is answered with success,
   * which is intended. @return 0
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
