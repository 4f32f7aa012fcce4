// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BACKEND_STORAGEFIXTURE_H
#define TESTS_BACKEND_STORAGEFIXTURE_H

#include "backend/LibraryAccess.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/Faults.h"
#include "voltvk/engine/state/State.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

using namespace tvp::cim::fwf;

constexpr unsigned long long MEBIBYTE = 2048;  // in sectors
constexpr unsigned long long GIBIBYTE = 1024 * MEBIBYTE;

/** The arguments of a routine, in order. */
template <typename... Properties>
CIMMethodParam arguments(Properties... properties) {
  CIMMethodParam list;
  (list.addArgument(std::move(properties)), ...);
  return list;
}

/** The storage library on a state of its own, reached through the gateway, with the log captured. */
class StorageTest : public ::testing::Test {
protected:
  StorageTest() {
    ::setenv("VOLTVK_STATE", m_state.file("state.db").c_str(), 1);
    gateway().initialize(false);
  }
  ~StorageTest() override { ::unsetenv("VOLTVK_STATE"); }

  static TVPInterface& gateway() { return *TVPInterface::getInstance(); }

  /** Adds a virtual drive of 20 GiB. @return its number */
  static unsigned char addDrive(TvkDeviceType type) {
    voltvk::VirtualDriveSpec drive;
    drive.type = type;
    drive.sectors = 20 * GIBIBYTE;
    std::uint16_t number = 0;
    voltvk::State::forProcess()->change([&](voltvk::Connection& connection) {
      number = voltvk::DriveRegistry(connection).addVirtual(drive);
    });
    return static_cast<unsigned char>(number);
  }

  /** Runs a routine on a path in the namespace "root/test"; its output is in out. */
  unsigned int call(const char* routine, const CIMMethodParam& in) {
    out.clearArgument();
    return gateway().execute(CIMObjectPath("", "root/test", "TVP_TierService", {}), routine, in, out);
  }

  /** A uint32 of the output; fails the test when it is not there. */
  unsigned int answered(const char* name) const {
    const CIMProperty* argument = out.getArgumentByName(name);
    if (argument == nullptr || argument->uint32Slot().m_values.size() != 1) {
      ADD_FAILURE() << "no uint32 " << name << " in the output " << out.toString();
      return 0xFFFFFFFF;
    }
    return argument->uint32Slot().m_values.front();
  }

  static CIMMethodParam
  poolArguments(const std::string& name, const std::vector<unsigned char>& drives, unsigned char tierLevel) {
    return arguments(
        makeProperty<std::string>("Name", name), makeProperty<std::string>("Description", "of a test"),
        makeProperty<unsigned char>("NumberOfLogicalDevice", static_cast<unsigned char>(drives.size())),
        makeProperty("LDDeviceNumbers", drives),
        makeProperty<unsigned long long>("CapacityInSectors", 10 * GIBIBYTE),
        makeProperty<unsigned long long>("ChunkSize", MEBIBYTE),
        makeProperty<unsigned char>("TierLevel", tierLevel));
  }

  static CIMMethodParam volumeArguments(
      const std::string& name, unsigned char type, const std::vector<unsigned int>& pools,
      const std::vector<unsigned long long>& sizes) {
    return arguments(
        makeProperty<std::string>("VolumeName", name), makeProperty<std::string>("Description", "of a test"),
        makeProperty<unsigned char>("VolumeType", type),
        makeProperty<unsigned char>("VirtualPoolsCount", static_cast<unsigned char>(pools.size())),
        makeProperty("ListOfVirtualPoolIds", pools), makeProperty("UsedSizeInSectors", sizes),
        makeProperty<unsigned int>("KnobSetting", 2));
  }

  static CIMMethodParam dataCacheArguments(
      const std::string& name, unsigned int ssdPool, const std::vector<unsigned char>& drives) {
    return arguments(
        makeProperty<std::string>("VolumeName", name), makeProperty<std::string>("Description", "cached"),
        makeProperty<unsigned char>("VolumeType", TVK_VOLUME_CACHED),
        makeProperty<unsigned int>("SSDPoolId", ssdPool),
        makeProperty<unsigned long long>("reqCapacityFromSSDPool", GIBIBYTE),
        makeProperty("LDDeviceNumber", drives),
        makeProperty<unsigned long long>("LDCapacityInSectors", 4 * GIBIBYTE),
        makeProperty<unsigned long long>("ChunkSize", MEBIBYTE),
        makeProperty<unsigned int>("KnobSetting", 2));
  }

  /** Makes a pool of one drive. @return its identifier */
  unsigned int makePool(const std::string& name, TvkDeviceType type) {
    const unsigned char tierLevel = type == TVK_DEVICE_HDD ? TVK_TIER_HDD : TVK_TIER_SSD;
    EXPECT_EQ(call("CreateVirtualPool", poolArguments(name, {addDrive(type)}, tierLevel)), 0U);
    EXPECT_EQ(answered("RetStat"), 0U);
    return idOf<VirtualPool>("VirtualPool", name, &VirtualPool::getPoolId);
  }

  /** The objects of a type, by name. */
  template <typename Object>
  static std::vector<std::string> namesOf(const char* type) {
    std::vector<std::string> names;
    refreshTarvexProObjects();
    FilteredObjects<Object>(getTvkAdapter(), type).visitAll([&](Object& object) {
      names.emplace_back(object.getName());
    });
    return names;
  }
  static std::vector<std::string> pools() { return namesOf<VirtualPool>("VirtualPool"); }
  static std::vector<std::string> volumes() { return namesOf<VirtualVolume>("VirtualVolume"); }

  template <typename Object>
  static unsigned int
  idOf(const char* type, const std::string& name, std::uint32_t (Object::*identifier)() const) {
    unsigned int result = TVK_NO_ID;
    refreshTarvexProObjects();
    FilteredObjects<Object>(getTvkAdapter(), type).visitAll([&](Object& object) {
      if (name == object.getName()) {
        result = (object.*identifier)();
      }
    });
    return result;
  }
  static unsigned int volumeId(const std::string& name) {
    return idOf<VirtualVolume>("VirtualVolume", name, &VirtualVolume::getVolumeId);
  }

  LogCapture log;
  CIMMethodParam out;

private:
  TemporaryFolder m_state;
};

}  // namespace tvp::test

#endif
