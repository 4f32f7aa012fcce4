// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_REQUESTS_H
#define TESTS_LIFE_REQUESTS_H

#include "life/Life.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvp::test {

inline constexpr std::uint64_t MIB = 2048;  ///< sectors

inline host::ObjectPath classPath(const std::string& className, std::vector<host::NamedValue> keys = {}) {
  return {"root/kvs/tvp/smi_15", className, std::move(keys), ""};
}

/** A filter for the indications of the provider. */
inline host::IndicationFilter tieringFilter() {
  host::IndicationFilter filter;
  filter.className = "TVP_CIMIndication";
  filter.query = "SELECT * FROM TVP_CIMIndication";
  return filter;
}

/** A method call on the tier service: its name and good arguments, which a test changes as it needs. */
struct MethodCall {
  std::string method;
  host::Arguments arguments;

  /** The same call with another argument. */
  MethodCall with(const std::string& name, host::Value value) const {
    MethodCall changed = *this;
    changed.arguments.add(name, std::move(value));
    return changed;
  }
};

MethodCall createPool(const std::string& name, const std::vector<std::uint8_t>& drives, std::uint8_t tier);
MethodCall createVolume(const std::string& name, std::uint8_t type, const std::vector<std::uint32_t>& pools);
MethodCall createCachedDrive(const std::string& name, std::uint32_t pool, std::uint8_t drive);
MethodCall modifyPool(std::uint32_t pool, const std::string& name, std::uint8_t tier);
MethodCall modifyVolume(std::uint32_t volume, const std::string& name, std::uint32_t knob);
/** A method whose one argument is the identifier of a volume, or of a pool. */
MethodCall ofVolume(const std::string& method, std::uint32_t volume);
MethodCall ofPool(const std::string& method, std::uint32_t pool);

/** Makes the call as one step. @param why stands in the title */
host::MethodOutcome invoke(
    Life& life, const MethodCall& call, const std::string& why,
    const std::string& className = "TVP_TierService");

/** Every instance of a class, as one step. */
host::InstancesOutcome enumerate(Life& life, const std::string& className, const std::string& why);

/** The identifier of a pool or a volume in what an enumeration gave. */
std::uint32_t identifierOf(const host::InstancesOutcome& outcome, const std::string& name);

/** Every operation of the instance and association interfaces on a class. */
void askEverything(Life& life, const std::string& className);

/** The association operations with filters. */
void askNamedAssociations(Life& life, const std::string& className);

}  // namespace tvp::test

#endif
