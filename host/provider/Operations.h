// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_PROVIDER_OPERATIONS_H
#define HOST_PROVIDER_OPERATIONS_H

#include "host/schema/Value.h"

#include <optional>
#include <string>
#include <vector>

namespace tvp::host {

/** The outcome of an operation: its status, and the message that came with it. */
struct [[nodiscard]] Outcome {
  CMPIrc rc = CMPI_RC_OK;
  std::string message;  ///< empty if the status had none
  /** What a provider in this process logged through the broker on the thread of the request, in order. */
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
  Value returnValue;  ///< null without a type if there was none
  Arguments output;
};

/** The names that restrict an association request; an empty name restricts nothing. */
struct AssociationFilter {
  std::string associationClass;
  std::string resultClass;
  std::string role;
  std::string resultRole;
};

/** The list of properties that a request asks for; without a value, all of them. */
using PropertyList = std::optional<std::vector<std::string>>;

/**
 * The operations on instances, associations and methods, whoever carries them out: a provider in this
 * process, or a server that is asked over the network.
 */
class Operations {
public:
  Operations() = default;
  virtual ~Operations() = default;
  Operations(const Operations&) = delete;
  Operations& operator=(const Operations&) = delete;

  virtual InstancesOutcome
  enumerateInstances(const ObjectPath& path, const PropertyList& properties = {}) = 0;
  virtual PathsOutcome enumerateInstanceNames(const ObjectPath& path) = 0;
  /** A provider's success without an instance stays success; a server answers "not found" instead. */
  virtual InstancesOutcome getInstance(const ObjectPath& path, const PropertyList& properties = {}) = 0;
  /** @return the path of what was created; a provider may return none */
  virtual PathsOutcome createInstance(const ObjectPath& path, const Instance& instance) = 0;
  /** Without a list, the names of all properties that are set are passed. */
  virtual Outcome
  modifyInstance(const ObjectPath& path, const Instance& instance, const PropertyList& properties = {}) = 0;
  virtual Outcome deleteInstance(const ObjectPath& path) = 0;
  virtual InstancesOutcome
  execQuery(const ObjectPath& path, const std::string& query, const std::string& language) = 0;
  /** The arguments are passed with the types they have. */
  virtual MethodOutcome
  invokeMethod(const ObjectPath& path, const std::string& method, const Arguments& input) = 0;
  virtual InstancesOutcome associators(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) = 0;
  virtual PathsOutcome associatorNames(const ObjectPath& path, const AssociationFilter& filter) = 0;
  virtual InstancesOutcome references(
      const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties = {}) = 0;
  virtual PathsOutcome referenceNames(const ObjectPath& path, const AssociationFilter& filter) = 0;
};

}  // namespace tvp::host

#endif
