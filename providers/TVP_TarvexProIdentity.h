// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_TVP_TARVEXPROIDENTITY_H
#define PROVIDERS_TVP_TARVEXPROIDENTITY_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * The product: one instance with its revisions, features and limits; none while there is no driver.
 * Getting it answers the path of the request alone.
 */
class TVP_TarvexProIdentity : public AbstractInstanceProviderPlugin {
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
