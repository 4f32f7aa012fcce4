// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_FRAMEWORKFACADE_H
#define CIM_FRAMEWORK_FRAMEWORKFACADE_H

#include "CIM/Framework/AbstractProviderPlugin.h"
#include "oslib/KVSMutex.h"

#include <atomic>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * The single entry point of the provider framework, free of any object manager's types. Requests pass through
 * it to the plugin of their class, indications to the object manager's adapter.
 *
 * A class without a plugin is not an error: the result is empty. Operations throw CIMException: what a plugin
 * throws, after logging it, and code FW_RC_FAILED if there is no registry. Output vectors are appended to.
 * Operations take no lock and may be called from several threads at once.
 *
 * The object itself has no fields: an event that arrives while the provider is torn down finds no callback
 * and touches nothing that has been destroyed.
 */
class FrameworkFacade {
public:
  /** Delivers an indication. @return true when delivered */
  using DeliverIndication = bool (*)(CIMInstance& indication);

  /**
   * The facade, created on the first call. Null if the lock cannot be taken or memory runs out. The pointer
   * is kept after the facade is deleted.
   */
  static FrameworkFacade* getInstance();

  /** Deletes the registry, and the plugins with it. */
  ~FrameworkFacade();
  FrameworkFacade(const FrameworkFacade&) = delete;
  FrameworkFacade& operator=(const FrameworkFacade&) = delete;

  /** Creates the registry and its plugins; called once. @return false if there is no registry */
  bool initialize();

  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances);
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names);
  void getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances);
  void createInstance(CIMObjectPath& path, CIMInstance& instance);
  void modifyInstance(CIMObjectPath& path, CIMInstance& instance, std::vector<std::string>& propertyList);
  void deleteInstance(const CIMObjectPath& path);

  /** @return the method's return value; 0, without output, for a class without a plugin */
  unsigned int
  invokeMethod(const CIMObjectPath& path, std::string methodName, CIMMethodParam& in, CIMMethodParam& out);

  /**
   * The association operations; arguments as in AbstractProviderPlugin. The plugin is that of the path's
   * class for references and referencesNames, that of assocClass for the other two. The result is empty if it
   * is not an association plugin.
   */
  void references(
      CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
      const std::string& role);
  void referencesNames(
      CIMObjectPath& path, const std::string& resultClass, const std::string& role,
      std::vector<CIMObjectPath>& names);
  void associators(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
      std::string& resultClass, std::string& role, std::string& resultRole, const char** propertyList);
  void associatorsNames(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names,
      std::string& resultClass, std::string& role, std::string& resultRole);

  /** The plugin of the class, owned by the registry; null if there is none. */
  AbstractProviderPlugin* getPlugIn(const std::string& className);
  /** Replaces names with the classes that are visible in the namespace. */
  void getAllPluginNames(std::vector<std::string>& names, std::string nameSpace);
  /** Sets the classes at the two ends of an association class; leaves them unchanged for any other class. */
  void getAntecedentAndDependentNames(std::string className, std::string& antecedent, std::string& dependent);

  /**
   * Sets the callback that delivers indications. @return false, keeping the earlier one, for a null callback
   */
  bool registerForEvent(DeliverIndication callback);
  void deRegisterForEvent();
  /** Passes an indication to the registered callback. @return whether it was delivered */
  bool notify(CIMInstance instance);

private:
  struct Operation;

  FrameworkFacade();

  template <typename Call>
  static void withPlugin(const Operation& operation, const std::string& className, Call call);
  template <typename Call>
  static void withPluginAfterEntry(const Operation& operation, const std::string& className, Call call);

  static std::atomic<FrameworkFacade*> m_ins;
  static KvsMutexHandle m_mutexObject;
  static std::atomic<DeliverIndication> m_deliverIndication;
};

}  // namespace tvp::cim::fwf

#endif
