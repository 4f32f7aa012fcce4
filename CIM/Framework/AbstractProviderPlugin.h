// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTPROVIDERPLUGIN_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** A job that has finished. */
struct _CompletedJob {
  std::string jobId;
};

/**
 * The root of all provider plugins: every operation that a client can request from a CIM class. One plugin
 * object serves one class, is created and owned by PluginsManager, and lives until the provider is unloaded.
 *
 * Plugins have no mutable state and may be entered from several threads at once. Output vectors are appended
 * to, never cleared. Operations report failure by throwing CIMException; invokeMethod also does so by its
 * return code. Empty text arguments do not restrict the result.
 */
class AbstractProviderPlugin {
public:
  AbstractProviderPlugin() = default;
  virtual ~AbstractProviderPlugin();
  AbstractProviderPlugin(const AbstractProviderPlugin&) = delete;
  AbstractProviderPlugin& operator=(const AbstractProviderPlugin&) = delete;

  /** Appends the instance that the path names, if it exists. */
  virtual void getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) = 0;
  /** Appends every instance of the class. @param flag always false, read by no plugin */
  virtual void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) = 0;
  /** Appends the path of every instance of the class. */
  virtual void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) = 0;
  /** Changes the named properties of the instance that the path names. */
  virtual void
  modifyInstance(CIMObjectPath& path, CIMInstance& instance, std::vector<std::string>& propertyList) = 0;
  virtual void createInstance(CIMObjectPath& path, CIMInstance& instance) = 0;
  virtual void deleteInstance(const CIMObjectPath& path) = 0;

  /**
   * Appends the instances at the far ends of the associations of the path.
   * @param resultClass class of the far end
   * @param role name of the association's reference that points at the path
   * @param resultRole name of the reference that points at the far end
   * @param propertyList names of the wanted properties, terminated by a null pointer; null means all
   */
  virtual void associators(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
      std::string& resultClass, std::string& role, std::string& resultRole, const char** propertyList) = 0;
  /** Appends the paths of the far ends; arguments as for associators. */
  virtual void associatorNames(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names,
      std::string& resultClass, std::string& role, std::string& resultRole) = 0;
  /** Appends the association instances that point at the path. @param resultClass their class */
  virtual void references(
      CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
      const std::string& role) = 0;
  /** Appends the paths of the association instances that point at the path. */
  virtual void referencesNames(
      CIMObjectPath& path, const std::string& resultClass, const std::string& role,
      std::vector<CIMObjectPath>& names) = 0;

  /**
   * Runs an extrinsic method.
   * @param out receives the output arguments
   * @return the method's return value; 7 (FW_RC_NOT_SUPPORTED) for plugins without methods
   */
  virtual unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) = 0;

  virtual void pushCompletedJobObject(_CompletedJob job) = 0;
  virtual void popCompletedJobObject(std::string jobId) = 0;
};

}  // namespace tvp::cim::fwf

#endif
