// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_TIERSERVICE_H
#define PROVIDERS_TVP_TIERSERVICE_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The service with the methods that create, change, delete, flush and measure pools and volumes: one
 * instance of fixed content, there with or without a driver. Getting it answers nothing.
 */
class TVP_TierService : public AbstractInstanceProviderPlugin, public virtual AbstractMethodProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  /** Names nothing. */
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  /**
   * Hands one of the twelve methods to the storage back end, which fills the output arguments. Names
   * are compared exactly.
   * @return 0; 1 for a method that the service does not have; 4 when the method fails
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
