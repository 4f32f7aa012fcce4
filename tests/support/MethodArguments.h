// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_METHODARGUMENTS_H
#define TESTS_SUPPORT_METHODARGUMENTS_H

#include "host/provider/Provider.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tvp::test {

/** What the methods of the product are called with. */
struct MethodValues {
  std::string name;
  std::uint8_t drive = 0;
  std::uint8_t tier = 1;        ///< hard disks
  std::uint8_t volumeType = 2;  ///< cached
  std::uint32_t pool = 0;       ///< that a method is about
  std::uint32_t volume = 0;
  std::uint32_t diskPool = 0;  ///< that capacity is taken from
  std::uint32_t flashPool = 0;
};

/** An argument for each input parameter of a method. @throws std::runtime_error when no value is known for
 * one
 */
inline host::Arguments argumentsFor(const host::SchemaMethod& method, const MethodValues& values) {
  using host::Value;
  constexpr std::uint64_t MEBIBYTE = 2048;  // in sectors
  const std::vector<host::NamedValue> known = {
      {"Name", Value::string(values.name)},
      {"VolumeName", Value::string(values.name)},
      {"Description", Value::string("made by a test: %s%n")},
      {"NumberOfLogicalDevice", Value::uint8(1)},
      {"LDDeviceNumbers", Value::array(CMPI_uint8, {Value::uint8(values.drive)})},
      {"LDDeviceNumber", Value::array(CMPI_uint8, {Value::uint8(values.drive)})},
      {"CapacityInSectors", Value::uint64(50 * MEBIBYTE)},
      {"LDCapacityInSectors", Value::uint64(50 * MEBIBYTE)},
      {"ChunkSize", Value::uint64(MEBIBYTE)},
      {"TierLevel", Value::uint8(values.tier)},
      {"VirtualPoolId", Value::uint32(values.pool)},
      {"VirtualVolumeId", Value::uint32(values.volume)},
      {"VolumeType", Value::uint8(values.volumeType)},
      {"VirtualPoolsCount", Value::uint8(2)},
      {"ListOfVirtualPoolIds",
       Value::array(CMPI_uint32, {Value::uint32(values.diskPool), Value::uint32(values.flashPool)})},
      {"UsedSizeInSectors",
       Value::array(CMPI_uint64, {Value::uint64(20 * MEBIBYTE), Value::uint64(10 * MEBIBYTE)})},
      {"KnobSetting", Value::uint32(2)},
      {"SSDPoolId", Value::uint32(values.flashPool)},
      {"reqCapacityFromSSDPool", Value::uint64(10 * MEBIBYTE)}};
  host::Arguments arguments;
  for (const host::SchemaParameter& parameter : method.parameters) {
    if (parameter.in) {
      const Value* value = findValue(known, parameter.name);
      if (value == nullptr) {
        throw std::runtime_error("no value is known for " + method.name + "." + parameter.name);
      }
      arguments.add(parameter.name, *value);
    }
  }
  return arguments;
}

/** The identifier of a pool or a volume in what an enumeration gave. @throws std::runtime_error when there is
 * none of the name */
inline std::uint32_t identifierOf(const host::InstancesOutcome& outcome, const std::string& name) {
  for (const host::Instance& instance : outcome.instances) {
    const bool isPool = instance.property("VirtualPoolId") != nullptr;
    const host::Value* found = instance.property(isPool ? "Name" : "VolumeName");
    if (found != nullptr && *found == host::Value::string(name)) {
      return static_cast<std::uint32_t>(
          instance.property(isPool ? "VirtualPoolId" : "VirtualVolumeId")->asUnsigned());
    }
  }
  throw std::runtime_error("there is no " + name);
}

}  // namespace tvp::test

#endif
