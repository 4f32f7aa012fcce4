// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Inventory.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Listing.h"
#include "host/tvpcim/output/Text.h"

#include <algorithm>
#include <optional>

namespace tvp::host::tvpcim {

const ObjectKind Drive::KIND = {
    "TVP_LogicalDevice",   "DeviceNumber", "DeviceName", "drive", "drives", nullptr,
    "LogicalDevicesCount", "LD_Status"};
const ObjectKind Pool::KIND = {"TVP_VirtualPool",       "VirtualPoolId",    "Name",      "pool", "pools",
                               "GetVirtualPoolMembers", "VirtualPoolCount", "PoolStatus"};
const ObjectKind Volume::KIND = {
    "TVP_VirtualVolume", "VirtualVolumeId",         "VolumeName",         "volume",
    "volumes",           "GetVirtualVolumeMembers", "VirtualVolumeCount", "State"};

namespace {

constexpr std::size_t LONGEST_NUMBER = 9;  ///< digits that surely fit 32 bits

std::optional<std::uint32_t> asNumber(const std::string& text) {
  if (text.empty() || text.size() > LONGEST_NUMBER ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(std::stoul(text));
}

std::uint32_t identifierOf(const Instance& instance, const char* property) {
  return static_cast<std::uint32_t>(numberOf(instance, property));
}

template <typename Test>
const Instance* firstOf(const std::vector<Instance>& instances, Test test) {
  const auto found = std::find_if(instances.begin(), instances.end(), test);
  return found == instances.end() ? nullptr : &*found;
}

}  // namespace

Drive::Drive(const Instance& instance)
    : number(identifierOf(instance, KIND.number)), name(textOf(instance, KIND.name)),
      type(numberOf(instance, "DeviceType")), status(numberOf(instance, KIND.status)),
      capacity(numberOf(instance, "CapacityInSectors")) {}

Pool::Pool(const Instance& instance)
    : number(identifierOf(instance, KIND.number)), name(textOf(instance, KIND.name)),
      description(textOf(instance, "Description")), status(numberOf(instance, KIND.status)),
      tier(numberOf(instance, "TierLevel")), capacity(numberOf(instance, "CapacityInSectors")),
      used(numberOf(instance, "UsedCapacityInSectors")) {}

Volume::Volume(const Instance& instance)
    : number(identifierOf(instance, KIND.number)), name(textOf(instance, KIND.name)),
      description(textOf(instance, "Description")), status(numberOf(instance, KIND.status)),
      type(numberOf(instance, "VolumeType")), knob(numberOf(instance, "KnobSetting")),
      capacity(numberOf(instance, "CapacityInSectors")) {}

DriveExtent::DriveExtent(const Instance& instance)
    : drive(identifierOf(instance, "DeviceNumber")), driveName(textOf(instance, "Name")),
      size(numberOf(instance, "LDEndRange") - numberOf(instance, "LDStartRange") + 1) {}

// The class of a volume's members calls the name of the pool by that of the volume.
PoolUse::PoolUse(const Instance& instance)
    : pool(identifierOf(instance, "VirtualPoolId")), poolName(textOf(instance, "VolumeName")) {}

const InstancesOutcome& Inventory::enumerated(const std::string& className) {
  const auto known = m_outcomes.find(className);
  return known != m_outcomes.end()
             ? known->second
             : m_outcomes.emplace(className, m_session.enumerate(className)).first->second;
}

const std::vector<Instance>& Inventory::instances(const ObjectKind& kind) {
  for (const bool again : {false, true}) {
    const std::vector<Instance>& found = enumerated(kind.className).instances;
    if (!found.empty() || numberOf(requireIdentity(), kind.count) == 0) {
      return found;
    }
    // The first of them may just have been created, between the two questions.
    if (!again) {
      forget();
    }
  }
  const std::string hint = remarksOf(enumerated(kind.className));
  throw OperationError(
      std::string("the ") + kind.nouns + " cannot be read", hint.empty() ? SEE_STATUS : hint);
}

const Instance* Inventory::identity() {
  const std::vector<Instance>& instances = enumerated(IDENTITY_CLASS).instances;
  return instances.empty() ? nullptr : &instances.front();
}

const Instance& Inventory::requireIdentity() {
  const Instance* found = identity();
  if (found == nullptr) {
    const std::string hint = remarksOf(enumerated(IDENTITY_CLASS));
    throw OperationError(NO_DRIVER, hint.empty() ? SEE_STATUS : hint);
  }
  return *found;
}

const Instance* Inventory::byNumber(const ObjectKind& kind, std::uint64_t number) {
  // Not confirmed: whoever names a number that is not found makes a request with it, and hears the reason.
  return firstOf(enumerated(kind.className).instances, [&](const Instance& instance) {
    return numberOf(instance, kind.number) == number;
  });
}

const Instance* Inventory::byName(const ObjectKind& kind, const std::string& name) {
  return firstOf(enumerated(kind.className).instances, [&](const Instance& instance) {
    return textOf(instance, kind.name) == name;
  });
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
  for (const Instance& instance : instances(kind)) {
    names.push_back(textOf(instance, kind.name));
  }
  const std::string near = printable(suggestion(text, names));
  throw OperationError(
      statusName(CMPI_RC_ERR_NOT_FOUND) + ": there is no " + kind.noun + " " + text::quoted(text) +
      (near.empty() ? std::string("; see 'tvpcim ") + kind.nouns + "'" : near));
}

std::vector<Instance> Inventory::members(const ObjectKind& kind, std::uint32_t number) {
  Arguments arguments;
  arguments.add(kind.number, Value::uint32(number));
  const MethodOutcome outcome = callService(kind.membersMethod, arguments);
  m_session.check(outcome);
  std::vector<Instance> found;
  const Value* members = outcome.output.find("Members");
  if (members != nullptr && !members->isNull()) {
    for (const Value& member : members->asArray()) {
      found.push_back(member.asInstance());
    }
  }
  return found;
}

bool Inventory::mayCallMethods() {
  Arguments arguments;
  arguments.add(Pool::KIND.number, Value::uint32(0));  // of no pool: only the status of the answer counts
  return callService(Pool::KIND.membersMethod, arguments).rc != CMPI_RC_ERR_ACCESS_DENIED;
}

MethodOutcome Inventory::callService(const std::string& method, const Arguments& arguments) {
  ObjectPath service = m_session.pathOf("TVP_TierService");
  service.keys = {
      {"CreationClassName", Value::string("TVP_TierService")},
      {"Name", Value::string("TVP_TierServiceInstance1")}};
  return m_session.operations().invokeMethod(service, method, arguments);
}

}  // namespace tvp::host::tvpcim
