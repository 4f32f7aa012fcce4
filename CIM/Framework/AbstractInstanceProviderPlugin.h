// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTINSTANCEPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTINSTANCEPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractProviderPlugin.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * A plugin that serves instances. Getting and enumerating are built from three hooks: the objects that match
 * a path, and the key and other properties of each. A class that can enumerate in a better way overrides the
 * operation.
 *
 * Modifying, creating, deleting and the association operations throw CIMException with code
 * FW_RC_NOT_SUPPORTED; invokeMethod returns that code. The job operations do nothing.
 */
class AbstractInstanceProviderPlugin : public virtual AbstractProviderPlugin {
public:
  /** Appends one instance for every repository object; logs and rethrows what the hooks throw. */
  void getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) override;
  /** Same as getCIMInstance, with the path of the class. @param flag ignored */
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  /** Appends, for every repository object, the path of the request with the object's keys. */
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
  void pushCompletedJobObject(_CompletedJob job) override;
  void popCompletedJobObject(std::string jobId) override;

  /** Appends the key properties of one repository object. */
  virtual void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) = 0;
  /** Appends the other properties of one repository object. */
  virtual void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) = 0;
  /** Appends the objects that match the path. */
  virtual void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) = 0;

protected:
  /** Throws the FW_RC_NOT_SUPPORTED exception of the named operation. */
  [[noreturn]] static void throwNotSupported(const char* operation);

private:
  struct TemplateOperation;

  template <typename Append>
  void answerFromRepository(const TemplateOperation& operation, const CIMObjectPath& path, Append append);
  CIMInstance composeInstance(const CIMInstance& object, const CIMObjectPath& path);
};

}  // namespace tvp::cim::fwf

#endif
