// SPDX-License-Identifier: Apache-2.0
#include "soak/SoakLoad.h"

#include "support/MethodArguments.h"

#include <map>

namespace tvp::soak {
namespace {

using host::Value;

constexpr char NAMESPACE[] = "root/kvs/tvp/smi_15";
constexpr std::uint64_t MEBIBYTE = 2048;  // in sectors

host::ObjectPath pathOf(const std::string& className) {
  return {NAMESPACE, className, {}, ""};
}

std::uint64_t numberOf(const host::Instance& instance, const std::string& property) {
  const Value* value = instance.property(property);
  return value == nullptr || value->isNull() ? 0 : value->asUnsigned();
}

}  // namespace

void Load::run(host::Operations& operations, unsigned int seed) {
  Random random(seed);
  while (!m_stop) {
    request(operations, random);
    ++m_done;
  }
}

void Load::note(const host::Outcome& outcome, const std::string& what) {
  if (outcome.ok()) {
    return;
  }
  ++m_refused;
  if ((outcome.rc != CMPI_RC_ERR_FAILED && outcome.rc != CMPI_RC_ERR_NOT_SUPPORTED) ||
      outcome.message.empty()) {
    m_findings.add(what + " answered " + std::to_string(outcome.rc) + " '" + outcome.message + "'");
  }
}

void Load::request(host::Operations& operations, Random& random) {
  const auto classes = m_schema.classes();
  const host::ObjectPath path = pathOf(classes[random() % classes.size()]->name);
  switch (random() % 8) {
  case 0:
  case 1:
    note(operations.enumerateInstances(path), "enumerating " + path.className);
    break;
  case 2: {
    const host::PathsOutcome names = operations.enumerateInstanceNames(path);
    note(names, "naming " + path.className);
    if (!names.paths.empty()) {
      const host::ObjectPath one = managerPath(names.paths[random() % names.paths.size()]);
      const host::InstancesOutcome found = operations.getInstance(one);
      // The providers look nothing up, and a server does not call an answer without an instance a success.
      if (m_subscribing != nullptr || found.rc != CMPI_RC_ERR_NOT_FOUND) {
        note(found, "getting " + path.className);
      }
    }
    break;
  }
  case 3:
    note(operations.associators(path, {}), "associators of " + path.className);
    break;
  case 4:
    // Rarely, as clients do: each activation of a filter keeps a thread context until the process ends, since
    // the listener may be attaching with it; that would look like growth.
    if (m_subscribing != nullptr && random() % 256 == 0) {
      subscribe(random);
    } else {
      note(operations.referenceNames(path, {}), "names of references of " + path.className);
    }
    break;
  default:
    changeConfiguration(operations, random);
  }
}

void Load::subscribe(Random& random) {
  // Evenly, so that the number of subscriptions stays about the same.
  note(m_subscribing->activateFilter({}), "activateFilter");
  note(m_subscribing->enableIndications(), "enableIndications");
  if (random() % 16 != 0) {
    request(*m_subscribing, random);
  }
  note(m_subscribing->disableIndications(), "disableIndications");
  note(m_subscribing->deActivateFilter({}), "deActivateFilter");
}

host::MethodOutcome
Load::call(host::Operations& operations, const std::string& method, const host::Arguments& arguments) {
  host::MethodOutcome outcome = operations.invokeMethod(pathOf("TVP_TierService"), method, arguments);
  note(outcome, method);
  return outcome;
}

std::uint32_t Load::anyId(
    host::Operations& operations, Random& random, const std::string& className, const std::string& key) {
  const auto instances = operations.enumerateInstances(pathOf(className)).instances;
  return instances.empty() || random() % 10 == 0
             ? static_cast<std::uint32_t>(random() % 1000)
             : static_cast<std::uint32_t>(numberOf(instances[random() % instances.size()], key));
}

void Load::changeConfiguration(host::Operations& operations, Random& random) {
  const std::vector<host::SchemaMethod>& methods = m_schema.find("TVP_TierService")->methods;
  const host::SchemaMethod& method = methods[random() % methods.size()];
  test::MethodValues values;
  values.name = "name" + std::to_string(random() % 12);
  values.drive = static_cast<std::uint8_t>(random() % 9);  // one more than there are
  values.tier = values.drive % 2 == 0 ? 1 : 3;
  values.volumeType = static_cast<std::uint8_t>(1 + random() % 2);
  values.diskPool = values.pool = anyId(operations, random, "TVP_VirtualPool", "VirtualPoolId");
  values.flashPool = anyId(operations, random, "TVP_VirtualPool", "VirtualPoolId");
  values.volume = anyId(operations, random, "TVP_VirtualVolume", "VirtualVolumeId");
  call(operations, method.name, argumentsFor(method, values));
}

void Load::checkCapacities(host::Operations& operations) {
  std::map<std::uint64_t, std::uint64_t> used;
  for (const host::Instance& volume : operations.enumerateInstances(pathOf("TVP_VirtualVolume")).instances) {
    host::Arguments arguments;
    const auto id = static_cast<std::uint32_t>(numberOf(volume, "VirtualVolumeId"));
    arguments.add("VirtualVolumeId", Value::uint32(id));
    const host::MethodOutcome outcome = call(operations, "GetVirtualVolumeMembers", arguments);
    const Value* members = outcome.output.find("Members");
    if (members == nullptr) {
      m_findings.add("volume " + std::to_string(id) + " has no members");
      continue;
    }
    // Every extent reports everything that its volume has in the pool.
    std::map<std::uint64_t, std::uint64_t> chunks;
    for (const Value& member : members->asArray()) {
      const host::Instance& extent = member.asInstance();
      chunks[numberOf(extent, "VirtualPoolId")] = numberOf(extent, "MaxAllowedChunks");
    }
    for (const auto& [pool, count] : chunks) {
      used[pool] += count * MEBIBYTE;
    }
  }
  for (const host::Instance& pool : operations.enumerateInstances(pathOf("TVP_VirtualPool")).instances) {
    const std::uint64_t id = numberOf(pool, "VirtualPoolId");
    if (used[id] != numberOf(pool, "UsedCapacityInSectors")) {
      m_findings.add(
          "pool " + std::to_string(id) + " says that " +
          std::to_string(numberOf(pool, "UsedCapacityInSectors")) + " sectors are used; its volumes use " +
          std::to_string(used[id]));
    }
    if (numberOf(pool, "UsedCapacityInSectors") > numberOf(pool, "CapacityInSectors")) {
      m_findings.add("pool " + std::to_string(id) + " is used beyond its capacity");
    }
  }
}

}  // namespace tvp::soak
