// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/Inventory.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/Listing.h"

#include <algorithm>
#include <optional>

namespace tvp::host::tvpcim {

const ObjectKind DRIVE = {"TVP_LogicalDevice", "DeviceNumber", "DeviceName", "drive", "drives"};
const ObjectKind POOL = {"TVP_VirtualPool", "VirtualPoolId", "Name", "pool", "pools"};
const ObjectKind VOLUME = {"TVP_VirtualVolume", "VirtualVolumeId", "VolumeName", "volume", "volumes"};

namespace {

constexpr std::size_t LONGEST_NUMBER = 9;  ///< digits that surely fit 32 bits

std::optional<std::uint32_t> asNumber(const std::string& text) {
  if (text.empty() || text.size() > LONGEST_NUMBER ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(std::stoul(text));
}

template <typename Test>
const Instance* find(const std::vector<Instance>& instances, Test test) {
  const auto found = std::find_if(instances.begin(), instances.end(), test);
  return found == instances.end() ? nullptr : &*found;
}

}  // namespace

const std::vector<Instance>& Inventory::enumerated(const std::string& className) {
  const auto known = m_instances.find(className);
  if (known != m_instances.end()) {
    return known->second;
  }
  return m_instances.emplace(className, m_session.enumerate(className)).first->second;
}

const Instance* Inventory::identity() {
  const std::vector<Instance>& instances = enumerated("TVP_TarvexProIdentity");
  return instances.empty() ? nullptr : &instances.front();
}

const Instance* Inventory::byNumber(const ObjectKind& kind, std::uint64_t number) {
  return find(all(kind), [&](const Instance& instance) { return numberOf(instance, kind.number) == number; });
}

const Instance* Inventory::byName(const ObjectKind& kind, const std::string& name) {
  return find(all(kind), [&](const Instance& instance) { return textOf(instance, kind.name) == name; });
}

std::uint32_t Inventory::resolve(const ObjectKind& kind, const std::string& text) {
  const std::optional<std::uint32_t> number = asNumber(text);
  if (number && byNumber(kind, *number) != nullptr) {
    return *number;
  }
  const Instance* named = byName(kind, text);
  if (named != nullptr) {
    return static_cast<std::uint32_t>(numberOf(*named, kind.number));
  }
  if (number) {
    return *number;
  }
  std::vector<std::string> names;
  for (const Instance& instance : all(kind)) {
    names.push_back(textOf(instance, kind.name));
  }
  const std::string near = printable(suggestion(text, names));
  throw OperationError(
      statusName(CMPI_RC_ERR_NOT_FOUND) + ": there is no " + kind.noun + " '" + printable(text) + "'" +
      (near.empty() ? std::string("; see 'tvpcim ") + kind.nouns + "'" : near));
}

std::vector<Instance> Inventory::members(const ObjectKind& kind, std::uint32_t number) {
  const bool ofPool = std::string(kind.className) == POOL.className;
  Arguments arguments;
  arguments.add(kind.number, Value::uint32(number));
  const MethodOutcome outcome =
      callService(ofPool ? "GetVirtualPoolMembers" : "GetVirtualVolumeMembers", arguments);
  std::vector<Instance> instances;
  const Value* members = outcome.output.find("Members");
  if (members != nullptr && !members->isNull()) {
    for (const Value& member : members->asArray()) {
      instances.push_back(member.asInstance());
    }
  }
  return instances;
}

MethodOutcome Inventory::callService(const std::string& method, const Arguments& arguments) {
  ObjectPath service = m_session.pathOf("TVP_TierService");
  service.keys = {
      {"CreationClassName", Value::string("TVP_TierService")},
      {"Name", Value::string("TVP_TierServiceInstance1")}};
  return m_session.invoke(service, method, arguments);
}

}  // namespace tvp::host::tvpcim
