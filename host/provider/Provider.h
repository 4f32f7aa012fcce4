// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_PROVIDER_PROVIDER_H
#define HOST_PROVIDER_PROVIDER_H

#include "host/provider/ProviderLibrary.h"
#include "host/provider/Request.h"
#include "host/schema/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvp::host {

/** The outcome of a call: the provider's status, and its message. */
struct [[nodiscard]] Outcome {
  CMPIrc rc = CMPI_RC_OK;
  std::string message;  ///< empty if the status had none
  /** What the provider logged through the broker on the thread of the request, in order. */
  std::vector<std::string> remarks;

  bool ok() const { return rc == CMPI_RC_OK; }
};

struct InstancesOutcome : Outcome {
  std::vector<Instance> instances;
};

struct PathsOutcome : Outcome {
  std::vector<ObjectPath> paths;
};

struct MethodOutcome : Outcome {
  Value returnValue;  ///< null without a type if the provider returned none
  Arguments output;
};

/** The names that restrict an association request; an empty name is passed as null. */
struct AssociationFilter {
  std::string associationClass;
  std::string resultClass;
  std::string role;
  std::string resultRole;
};

/** A path as an object manager passes it to a provider: whole numbers as CMPI_sint64. */
ObjectPath managerPath(ObjectPath path);

/** The list of properties that a request asks for; without a value, all of them. */
using PropertyList = std::optional<std::vector<std::string>>;

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
class Provider {
public:
  /** Creates the interfaces. The broker must outlive this object. */
  Provider(Broker& broker, const ProviderFactories& factories, CallOptions defaults = {});
  /** The same for a loaded library; unless cleaned up before destruction, it stays in the process. */
  Provider(Broker& broker, std::shared_ptr<ProviderLibrary> library, CallOptions defaults = {});
  /** Does not clean up: a one-shot host exits without waiting for the provider's threads. */
  ~Provider();
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;

  InstancesOutcome enumerateInstances(
      const ObjectPath& path, const PropertyList& properties = {}, const CallOptions* options = nullptr);
  PathsOutcome enumerateInstanceNames(const ObjectPath& path, const CallOptions* options = nullptr);
  /** Success without an instance stays success here; a client of an object manager sees "not found". */
  InstancesOutcome getInstance(
      const ObjectPath& path, const PropertyList& properties = {}, const CallOptions* options = nullptr);
  PathsOutcome
  createInstance(const ObjectPath& path, const Instance& instance, const CallOptions* options = nullptr);
  /** Without a list, the names of all properties that are set are passed; as SFCB, a null list. */
  Outcome modifyInstance(
      const ObjectPath& path, const Instance& instance, const PropertyList& properties = {},
      const CallOptions* options = nullptr);
  Outcome deleteInstance(const ObjectPath& path, const CallOptions* options = nullptr);
  InstancesOutcome execQuery(
      const ObjectPath& path, const std::string& query, const std::string& language,
      const CallOptions* options = nullptr);
  /** The arguments are passed with the types they have. */
  MethodOutcome invokeMethod(
      const ObjectPath& path, const std::string& method, const Arguments& input,
      const CallOptions* options = nullptr);
  InstancesOutcome associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {},
      const CallOptions* options = nullptr);
  PathsOutcome associatorNames(
      const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options = nullptr);
  InstancesOutcome references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {},
      const CallOptions* options = nullptr);
  PathsOutcome referenceNames(
      const ObjectPath& path, const AssociationFilter& filter, const CallOptions* options = nullptr);

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
