// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BACKEND_STORAGEFIXTURE_H
#define TESTS_BACKEND_STORAGEFIXTURE_H

#include "CIM/Framework/PropertyLookup.h"
#include "backend/LibraryAccess.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "support/LogCapture.h"
#include "support/Storage.h"
#include "support/TemporaryDirectory.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/contract/Faults.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

/** The arguments of a routine, in order. */
template <typename... Properties>
cim::fwf::CIMMethodParam arguments(Properties... properties) {
  cim::fwf::CIMMethodParam list;
  (list.addArgument(std::move(properties)), ...);
  return list;
}

/** The storage library on a state of its own, reached through the gateway, with the log captured. */
class StorageTest : public ::testing::Test {
protected:
  StorageTest() : m_storage(m_directory) { gateway().initialize(false); }

  static cim::fwf::TVPInterface& gateway() { return *cim::fwf::TVPInterface::getInstance(); }

  /** Adds a virtual drive of 20 GiB. @return its number */
  static unsigned char addDrive(TvkDeviceType type) { return Storage::addDrive(type, 20 * GIB); }

  /** Runs a routine on a path in the namespace "root/test"; its output is in out. */
  unsigned int call(const char* routine, const cim::fwf::CIMMethodParam& in) {
    out.clearArgument();
    return gateway().execute(
        cim::fwf::CIMObjectPath("", "root/test", "TVP_TierService", {}), routine, in, out);
  }

  /** A uint32 of the output; the test fails if there is none. */
  unsigned int answered(const char* name) const {
    const auto values = cim::fwf::elementsOf<unsigned int>(out.getArgumentByName(name));
    if (values.size() != 1) {
      ADD_FAILURE() << "no uint32 " << name << " in the output " << out.toString();
      return 0xFFFFFFFF;
    }
    return values.front();
  }

  static cim::fwf::CIMMethodParam
  poolArguments(const std::string& name, const std::vector<unsigned char>& drives, unsigned char tierLevel) {
    return arguments(
        cim::fwf::makeProperty<std::string>("Name", name),
        cim::fwf::makeProperty<std::string>("Description", "of a test"),
        cim::fwf::makeProperty<unsigned char>(
            "NumberOfLogicalDevice", static_cast<unsigned char>(drives.size())),
        cim::fwf::makeProperty("LDDeviceNumbers", drives),
        cim::fwf::makeProperty<unsigned long long>("CapacityInSectors", 10 * GIB),
        cim::fwf::makeProperty<unsigned long long>("ChunkSize", MIB),
        cim::fwf::makeProperty<unsigned char>("TierLevel", tierLevel));
  }

  static cim::fwf::CIMMethodParam volumeArguments(
      const std::string& name, unsigned char type, const std::vector<unsigned int>& pools,
      const std::vector<unsigned long long>& sizes) {
    return arguments(
        cim::fwf::makeProperty<std::string>("VolumeName", name),
        cim::fwf::makeProperty<std::string>("Description", "of a test"),
        cim::fwf::makeProperty<unsigned char>("VolumeType", type),
        cim::fwf::makeProperty<unsigned char>("VirtualPoolsCount", static_cast<unsigned char>(pools.size())),
        cim::fwf::makeProperty("ListOfVirtualPoolIds", pools),
        cim::fwf::makeProperty("UsedSizeInSectors", sizes),
        cim::fwf::makeProperty<unsigned int>("KnobSetting", 2));
  }

  static cim::fwf::CIMMethodParam dataCacheArguments(
      const std::string& name, unsigned int ssdPool, const std::vector<unsigned char>& drives) {
    return arguments(
        cim::fwf::makeProperty<std::string>("VolumeName", name),
        cim::fwf::makeProperty<std::string>("Description", "cached"),
        cim::fwf::makeProperty<unsigned char>("VolumeType", TVK_VOLUME_CACHED),
        cim::fwf::makeProperty<unsigned int>("SSDPoolId", ssdPool),
        cim::fwf::makeProperty<unsigned long long>("reqCapacityFromSSDPool", GIB),
        cim::fwf::makeProperty("LDDeviceNumber", drives),
        cim::fwf::makeProperty<unsigned long long>("LDCapacityInSectors", 4 * GIB),
        cim::fwf::makeProperty<unsigned long long>("ChunkSize", MIB),
        cim::fwf::makeProperty<unsigned int>("KnobSetting", 2));
  }

  /** Creates a pool on one new drive. @return its identifier */
  unsigned int makePool(const std::string& name, TvkDeviceType type) {
    const unsigned char tierLevel = type == TVK_DEVICE_HDD ? TVK_TIER_HDD : TVK_TIER_SSD;
    EXPECT_EQ(call("CreateVirtualPool", poolArguments(name, {addDrive(type)}, tierLevel)), 0U);
    EXPECT_EQ(answered("RetStat"), 0U);
    return idOf(name, &VirtualPool::getPoolId);
  }

  /** The names of the objects of a type. */
  template <typename Object>
  static std::vector<std::string> namesOf() {
    std::vector<std::string> names;
    cim::fwf::refreshTarvexProObjects();
    for (const Object& object : cim::fwf::FilteredObjects<Object>(cim::fwf::getTvkAdapter())) {
      names.emplace_back(object.getName());
    }
    return names;
  }
  static std::vector<std::string> pools() { return namesOf<VirtualPool>(); }
  static std::vector<std::string> volumes() { return namesOf<VirtualVolume>(); }

  template <typename Object>
  static unsigned int idOf(const std::string& name, std::uint32_t (Object::*identifier)() const) {
    cim::fwf::refreshTarvexProObjects();
    for (const Object& object : cim::fwf::FilteredObjects<Object>(cim::fwf::getTvkAdapter())) {
      if (name == object.getName()) {
        return (object.*identifier)();
      }
    }
    return TVK_NO_ID;
  }
  static unsigned int volumeId(const std::string& name) { return idOf(name, &VirtualVolume::getVolumeId); }

  LogCapture log;
  cim::fwf::CIMMethodParam out;

private:
  TemporaryDirectory m_directory;
  Storage m_storage;
};

}  // namespace tvp::test

#endif
