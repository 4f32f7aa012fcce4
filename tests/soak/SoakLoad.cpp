// SPDX-License-Identifier: Apache-2.0
#include "soak/SoakLoad.h"

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

void Findings::add(const std::string& finding) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_findings.size() < 100) {
    m_findings.push_back(finding);
  }
}

std::vector<std::string> Findings::all() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_findings;
}

void Load::run(unsigned int seed) {
  Random random(seed);
  while (!m_stop) {
    request(random);
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

void Load::request(Random& random) {
  const auto classes = m_provider.broker().schema().classes();
  const host::ObjectPath path = pathOf(classes[random() % classes.size()]->name);
  switch (random() % 8) {
  case 0:
  case 1:
    note(m_provider.enumerateInstances(path), "enumerating " + path.className);
    break;
  case 2: {
    const host::PathsOutcome names = m_provider.enumerateInstanceNames(path);
    note(names, "naming " + path.className);
    if (!names.paths.empty()) {
      const host::ObjectPath one = managerPath(names.paths[random() % names.paths.size()]);
      note(m_provider.getInstance(one), "getting " + path.className);
    }
    break;
  }
  case 3:
    note(m_provider.associators(path, {}), "associators of " + path.className);
    break;
  case 4:
    // Rarely, as clients do: each activation of a filter keeps a thread context until the process ends, since
    // the listener may be attaching with it; that would look like growth.
    if (random() % 256 == 0) {
      subscribe(random);
    } else {
      note(m_provider.referenceNames(path, {}), "names of references of " + path.className);
    }
    break;
  default:
    changeConfiguration(random);
  }
}

void Load::subscribe(Random& random) {
  // Evenly, so that the number of subscriptions stays about the same.
  note(m_provider.activateFilter({}), "activateFilter");
  note(m_provider.enableIndications(), "enableIndications");
  if (random() % 16 != 0) {
    request(random);
  }
  note(m_provider.disableIndications(), "disableIndications");
  note(m_provider.deActivateFilter({}), "deActivateFilter");
}

host::MethodOutcome Load::call(const std::string& method, const host::Arguments& arguments) {
  host::MethodOutcome outcome = m_provider.invokeMethod(pathOf("TVP_TierService"), method, arguments);
  note(outcome, method);
  return outcome;
}

std::uint32_t Load::anyId(Random& random, const std::string& className, const std::string& key) {
  const auto instances = m_provider.enumerateInstances(pathOf(className)).instances;
  return instances.empty() || random() % 10 == 0
             ? static_cast<std::uint32_t>(random() % 1000)
             : static_cast<std::uint32_t>(numberOf(instances[random() % instances.size()], key));
}

void Load::changeConfiguration(Random& random) {
  const auto drive = static_cast<std::uint8_t>(random() % 9);  // one more than there are
  const std::string name = "name" + std::to_string(random() % 12);
  const Value pool = Value::uint32(anyId(random, "TVP_VirtualPool", "VirtualPoolId"));
  const Value volume = Value::uint32(anyId(random, "TVP_VirtualVolume", "VirtualVolumeId"));
  host::Arguments arguments;
  switch (random() % 8) {
  case 0:
    arguments.add("Name", Value::string(name)).add("Description", Value::string("%s%n"));
    arguments.add("NumberOfLogicalDevice", Value::uint8(1));
    arguments.add("LDDeviceNumbers", Value::array(CMPI_uint8, {Value::uint8(drive)}));
    arguments.add("CapacityInSectors", Value::uint64(500 * MEBIBYTE));
    arguments.add("ChunkSize", Value::uint64(MEBIBYTE))
        .add("TierLevel", Value::uint8(drive % 2 == 0 ? 1 : 3));
    call("CreateVirtualPool", arguments);
    break;
  case 1:
  case 2: {
    const auto type = static_cast<std::uint8_t>(1 + random() % 2);
    arguments.add("VolumeName", Value::string(name)).add("Description", Value::string(""));
    arguments.add("VolumeType", Value::uint8(type)).add("VirtualPoolsCount", Value::uint8(1));
    arguments.add("ListOfVirtualPoolIds", Value::array(CMPI_uint32, {pool}));
    arguments.add("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(random() % 200 * MEBIBYTE)}));
    call("CreateVirtualVolume", arguments.add("KnobSetting", Value::uint32(2)));
    break;
  }
  case 3:
    call("DeleteVirtualPool", arguments.add("VirtualPoolId", pool));
    break;
  case 4:
    call("DeleteVirtualVolume", arguments.add("VirtualVolumeId", volume));
    break;
  case 5:
    call("GetVirtualVolumeMembers", arguments.add("VirtualVolumeId", volume));
    break;
  case 6:
    call("GetVirtualVolumeStats", arguments.add("VirtualVolumeId", volume));
    break;
  default:
    call("GetVirtualPoolMembers", arguments.add("VirtualPoolId", pool));
  }
}

void Load::checkCapacities() {
  std::map<std::uint64_t, std::uint64_t> used;
  for (const host::Instance& volume : m_provider.enumerateInstances(pathOf("TVP_VirtualVolume")).instances) {
    host::Arguments arguments;
    const auto id = static_cast<std::uint32_t>(numberOf(volume, "VirtualVolumeId"));
    arguments.add("VirtualVolumeId", Value::uint32(id));
    const host::MethodOutcome outcome = call("GetVirtualVolumeMembers", arguments);
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
  for (const host::Instance& pool : m_provider.enumerateInstances(pathOf("TVP_VirtualPool")).instances) {
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
