// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTCACHEDINSTANCEPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTCACHEDINSTANCEPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * A plugin that is meant to serve view-class instances from a cache. Nothing is served unless the concrete
 * class overrides it: reading throws CIMException with FW_RC_NOT_SUPPORTED, as all other operations of an
 * instance plugin do, invokeMethod returns that code, the hooks add nothing.
 */
class AbstractCachedInstanceProviderPlugin : public virtual AbstractInstanceProviderPlugin {
public:
  void getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) override;
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;

  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;

  /** Refills the cache. */
  virtual void refreshCache() = 0;
  /** Empties the cache. */
  virtual void dropCache() = 0;

  /** Keys of the view class that the path names. @return 0 */
  virtual unsigned int getViewClassKeys(CIMObjectPath& path, std::vector<CIMProperty>& keys);
  /** Keys of the instance that an event is about. @return 0 */
  virtual unsigned int
  getKeysFromEventKeys(std::vector<CIMProperty>& eventKeys, std::vector<CIMProperty>& keys);
  /** Name of the concrete class; empty here. */
  virtual std::string getConcreteClassName();
};

}  // namespace tvp::cim::fwf

#endif
