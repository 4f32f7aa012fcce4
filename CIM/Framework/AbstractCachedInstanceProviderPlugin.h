// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTCACHEDINSTANCEPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTCACHEDINSTANCEPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * A plugin that would answer from a cache of view-class instances. Nothing is served unless the
 * concrete class overrides it: all intrinsic operations throw CIMException with FW_RC_NOT_SUPPORTED,
 * invokeMethod returns that code, the hooks add nothing.
 */
class AbstractCachedInstanceProviderPlugin : public virtual AbstractInstanceProviderPlugin {
public:
  void getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) override;
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  void
  modifyInstance(CIMObjectPath& path, CIMInstance& instance, std::vector<std::string>& propertyList) override;
  void createInstance(CIMObjectPath& path, CIMInstance& instance) override;
  void deleteInstance(const CIMObjectPath& path) override;
  void associators(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
      std::string& resultClass, std::string& role, std::string& resultRole,
      const char** propertyList) override;
  void associatorNames(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names,
      std::string& resultClass, std::string& role, std::string& resultRole) override;
  void references(
      CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
      const std::string& role) override;
  void referencesNames(
      CIMObjectPath& path, const std::string& resultClass, const std::string& role,
      std::vector<CIMObjectPath>& names) override;
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override;

  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;

  /** Fills the cache anew. */
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
