// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_PROVIDER_PROVIDER_H
#define HOST_PROVIDER_PROVIDER_H

#include "host/provider/Operations.h"
#include "host/provider/ProviderLibrary.h"
#include "host/provider/Request.h"
#include "host/schema/Value.h"

#include <memory>
#include <string>

namespace tvp::host {

/** A path as an object manager passes it to a provider: whole numbers as CMPI_sint64. */
ObjectPath managerPath(ObjectPath path);

/** An indication filter as a subscription passes it; all indications by default. */
struct IndicationFilter {
  std::string query = "SELECT * FROM CIM_Indication";
  std::string language = "WQL";
  std::string className = "CIM_Indication";
  ObjectPath path;
  std::string owner = "root";
};

/**
 * A provider and its four management interfaces, called as an object manager calls it. Each operation is a
 * request of its own, with the given options or else the defaults.
 *
 * Success without the end mark of the result is noted as a breach for the enumerations, getInstance,
 * createInstance, invokeMethod, references, referenceNames and associators; modifyInstance, deleteInstance,
 * associatorNames and execQuery of this system return without one. An operation of an interface that the
 * provider lacks returns CMPI_RC_ERR_NOT_SUPPORTED.
 *
 * Thread-safe: several threads may make requests at once; cleanup() must come after them.
 */
class Provider : public Operations {
public:
  /** Creates the interfaces. The broker must outlive this object. */
  Provider(Broker& broker, const ProviderFactories& factories, CallOptions defaults = {});
  /** The same for a loaded library; unless cleaned up before destruction, it stays in the process. */
  Provider(Broker& broker, std::shared_ptr<ProviderLibrary> library, CallOptions defaults = {});
  /** Does not clean up: a one-shot host exits without waiting for the provider's threads. */
  ~Provider() override;
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;

  // The operations, with the default options and with given ones; null stands for the defaults.
  InstancesOutcome enumerateInstances(const ObjectPath& path, const PropertyList& properties = {}) override {
    return enumerateInstances(path, properties, nullptr);
  }
  InstancesOutcome
  enumerateInstances(const ObjectPath& path, const PropertyList& properties, const CallOptions* options);
  PathsOutcome enumerateInstanceNames(const ObjectPath& path) override {
    return enumerateInstanceNames(path, nullptr);
  }
  PathsOutcome enumerateInstanceNames(const ObjectPath& path, const CallOptions* options);
  InstancesOutcome getInstance(const ObjectPath& path, const PropertyList& properties = {}) override {
    return getInstance(path, properties, nullptr);
  }
  InstancesOutcome
  getInstance(const ObjectPath& path, const PropertyList& properties, const CallOptions* options);
  PathsOutcome createInstance(const ObjectPath& path, const Instance& instance) override {
    return createInstance(path, instance, nullptr);
  }
  PathsOutcome createInstance(const ObjectPath& path, const Instance& instance, const CallOptions* options);
  /** As SFCB, a null list is passed on as it is. */
  Outcome modifyInstance(
      const ObjectPath& path, const Instance& instance, const PropertyList& properties = {}) override {
    return modifyInstance(path, instance, properties, nullptr);
  }
  Outcome modifyInstance(
      const ObjectPath& path, const Instance& instance, const PropertyList& properties,
      const CallOptions* options);
  Outcome deleteInstance(const ObjectPath& path) override { return deleteInstance(path, nullptr); }
  Outcome deleteInstance(const ObjectPath& path, const CallOptions* options);
  InstancesOutcome
  execQuery(const ObjectPath& path, const std::string& query, const std::string& language) override {
    return execQuery(path, query, language, nullptr);
  }
  InstancesOutcome execQuery(
      const ObjectPath& path, const std::string& query, const std::string& language,
      const CallOptions* options);
  MethodOutcome
  invokeMethod(const ObjectPath& path, const std::string& method, const Arguments& input) override {
    return invokeMethod(path, method, input, nullptr);
  }
  MethodOutcome invokeMethod(
      const ObjectPath& path, const std::string& method, const Arguments& input, const CallOptions* options);
  InstancesOutcome associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) override {
    return associators(path, filter, properties, nullptr);
  }
  InstancesOutcome associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const CallOptions* options);
  PathsOutcome associatorNames(const ObjectPath& path, const AssociationFilter& filter) override {
    return associatorNames(path, filter, nullptr);
  }
  PathsOutcome
  associatorNames(const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options);
  InstancesOutcome references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) override {
    return references(path, filter, properties, nullptr);
  }
  InstancesOutcome references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties,
      const CallOptions* options);
  PathsOutcome referenceNames(const ObjectPath& path, const AssociationFilter& filter) override {
    return referenceNames(path, filter, nullptr);
  }
  PathsOutcome
  referenceNames(const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options);

  Outcome authorizeFilter(const IndicationFilter& filter, const CallOptions* options = nullptr);
  Outcome mustPoll(const IndicationFilter& filter, const CallOptions* options = nullptr);
  Outcome activateFilter(
      const IndicationFilter& filter, bool firstActivation = true, const CallOptions* options = nullptr);
  Outcome deActivateFilter(
      const IndicationFilter& filter, bool lastActivation = true, const CallOptions* options = nullptr);
  Outcome enableIndications(const CallOptions* options = nullptr);
  Outcome disableIndications(const CallOptions* options = nullptr);

  /**
   * Cleans up every interface, in the order instance, method, association, indication; as SFCB, on two
   * threads at once.
   * @return the first status that is not success (CMPI_RC_NEVER_UNLOAD if the provider refuses).
   */
  Outcome cleanup(bool terminating);

  Broker& broker() const { return m_broker; }
  /** The interfaces themselves, for tests of their tables; null if the provider lacks one. */
  CMPIInstanceMI* instanceMI() const { return m_instanceMI; }
  CMPIMethodMI* methodMI() const { return m_methodMI; }
  CMPIAssociationMI* associationMI() const { return m_associationMI; }
  CMPIIndicationMI* indicationMI() const { return m_indicationMI; }

private:
  Outcome cleanupInterfaces(bool terminating);
  void createInterfaces(const ProviderFactories& factories);
  const CallOptions& optionsOr(const CallOptions* options) const;

  Broker& m_broker;
  std::shared_ptr<ProviderLibrary> m_library;
  CallOptions m_defaults;
  bool m_cleanedUp = false;
  CMPIInstanceMI* m_instanceMI = nullptr;
  CMPIMethodMI* m_methodMI = nullptr;
  CMPIAssociationMI* m_associationMI = nullptr;
  CMPIIndicationMI* m_indicationMI = nullptr;
};

}  // namespace tvp::host

#endif
