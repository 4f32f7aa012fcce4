// SPDX-License-Identifier: Apache-2.0
#include "life/Requests.h"

#include <gtest/gtest.h>

namespace tvp::test {
namespace {

using host::Arguments;
using host::AssociationFilter;
using host::Instance;
using host::Value;

constexpr std::uint64_t CHUNK = MIB;
constexpr std::uint32_t NORMAL = 2;

template <typename Number>
Value list(CMPIType type, const std::vector<Number>& numbers) {
  Value::List elements;
  for (const Number number : numbers) {
    elements.push_back(Value::unsignedInteger(type, number));
  }
  return Value::array(type, std::move(elements));
}

}  // namespace

MethodCall createPool(const std::string& name, const std::vector<std::uint8_t>& drives, std::uint8_t tier) {
  return {
      "CreateVirtualPool",
      Arguments()
          .add("Name", Value::string(name))
          .add("Description", Value::string("pool " + name))
          .add("NumberOfLogicalDevice", Value::uint8(static_cast<std::uint8_t>(drives.size())))
          .add("LDDeviceNumbers", list(CMPI_uint8, drives))
          .add("CapacityInSectors", Value::uint64(600 * MIB))
          .add("ChunkSize", Value::uint64(CHUNK))
          .add("TierLevel", Value::uint8(tier))};
}

MethodCall createVolume(const std::string& name, std::uint8_t type, const std::vector<std::uint32_t>& pools) {
  const std::vector<std::uint64_t> sizes(pools.size(), 40 * MIB);
  return {
      "CreateVirtualVolume",
      Arguments()
          .add("VolumeName", Value::string(name))
          .add("Description", Value::string("volume " + name))
          .add("VolumeType", Value::uint8(type))
          .add("VirtualPoolsCount", Value::uint8(static_cast<std::uint8_t>(pools.size())))
          .add("ListOfVirtualPoolIds", list(CMPI_uint32, pools))
          .add("UsedSizeInSectors", list(CMPI_uint64, sizes))
          .add("KnobSetting", Value::uint32(NORMAL))};
}

MethodCall createCachedDrive(const std::string& name, std::uint32_t pool, std::uint8_t drive) {
  return {
      "CreateDataCacheVolume", Arguments()
                                   .add("VolumeName", Value::string(name))
                                   .add("Description", Value::string("cached drive " + name))
                                   .add("VolumeType", Value::uint8(2))
                                   .add("SSDPoolId", Value::uint32(pool))
                                   .add("reqCapacityFromSSDPool", Value::uint64(10 * MIB))
                                   .add("LDDeviceNumber", list<std::uint8_t>(CMPI_uint8, {drive}))
                                   .add("LDCapacityInSectors", Value::uint64(50 * MIB))
                                   .add("ChunkSize", Value::uint64(CHUNK))
                                   .add("KnobSetting", Value::uint32(NORMAL))};
}

MethodCall modifyPool(std::uint32_t pool, const std::string& name, std::uint8_t tier) {
  return {
      "ModifyVirtualPool", Arguments()
                               .add("VirtualPoolId", Value::uint32(pool))
                               .add("Name", Value::string(name))
                               .add("TierLevel", Value::uint8(tier))
                               .add("Description", Value::string("changed"))};
}

MethodCall modifyVolume(std::uint32_t volume, const std::string& name, std::uint32_t knob) {
  return {
      "ModifyVirtualVolume", Arguments()
                                 .add("VirtualVolumeId", Value::uint32(volume))
                                 .add("VolumeName", Value::string(name))
                                 .add("Description", Value::string("changed"))
                                 .add("KnobSetting", Value::uint32(knob))};
}

MethodCall ofVolume(const std::string& method, std::uint32_t volume) {
  return {method, Arguments().add("VirtualVolumeId", Value::uint32(volume))};
}

MethodCall ofPool(const std::string& method, std::uint32_t pool) {
  return {method, Arguments().add("VirtualPoolId", Value::uint32(pool))};
}

namespace {

void askInstances(Life& life, const std::string& className) {
  const host::ObjectPath path = classPath(className);
  const host::ObjectPath one =
      classPath(className, {{"CreationClassName", Value::string(className)}, {"Number", Value::uint32(7)}});
  const std::string of = " of " + className;
  host::CallOptions nobody;
  nobody.principal = "nobody";
  Instance given{one, {{"CreationClassName", Value::string(className)}}};
  life.enumerate(className, "all");
  life.step("enumerateInstances" + of + ": one property, as nobody", [&] {
    return life.provider().enumerateInstances(path, std::vector<std::string>{"CreationClassName"}, &nobody);
  });
  life.step("enumerateInstanceNames" + of, [&] { return life.provider().enumerateInstanceNames(path); });
  life.step("getInstance" + of + " with keys", [&] { return life.provider().getInstance(one); });
  life.step("getInstance" + of + " without keys, one property, as nobody", [&] {
    return life.provider().getInstance(path, std::vector<std::string>{"Name"}, &nobody);
  });
  life.step("createInstance" + of, [&] { return life.provider().createInstance(one, given); });
  life.step("modifyInstance" + of, [&] { return life.provider().modifyInstance(one, given); });
  life.step("modifyInstance" + of + " as nobody", [&] {
    return life.provider().modifyInstance(one, given, {}, &nobody);
  });
  life.step("deleteInstance" + of, [&] { return life.provider().deleteInstance(one); });
  life.step(
      "execQuery" + of, [&] { return life.provider().execQuery(path, "SELECT * FROM " + className, "WQL"); });
}

void askAssociations(Life& life, const std::string& className, const AssociationFilter& filter) {
  const host::ObjectPath path = classPath(className, {{"CreationClassName", Value::string(className)}});
  const AssociationFilter result{"", filter.associationClass, filter.role, ""};
  const std::string of =
      " of " + className + " through " + (filter.associationClass.empty() ? "any" : filter.associationClass);
  life.step("associators" + of, [&] { return life.provider().associators(path, filter); });
  life.step("associatorNames" + of, [&] { return life.provider().associatorNames(path, filter); });
  life.step("references" + of, [&] { return life.provider().references(path, result); });
  life.step("referenceNames" + of, [&] { return life.provider().referenceNames(path, result); });
}

}  // namespace

void askEverything(Life& life, const std::string& className) {
  askInstances(life, className);
  askAssociations(life, className, {"", "", "", ""});
}

void askNamedAssociations(Life& life, const std::string& className) {
  askAssociations(life, className, {"TVP_VirtualPool", "", "", ""});
  askAssociations(life, className, {"TVP_NoSuchAssociation", "TVP_VirtualVolume", "Antecedent", "Dependent"});
}

}  // namespace tvp::test
