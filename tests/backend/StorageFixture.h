// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BACKEND_STORAGEFIXTURE_H
#define TESTS_BACKEND_STORAGEFIXTURE_H

#include "CIM/Framework/PropertyLookup.h"
#include "backend/LibraryAccess.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/State.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

constexpr unsigned long long MEBIBYTE = 2048;  // in sectors
constexpr unsigned long long GIBIBYTE = 1024 * MEBIBYTE;

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
  StorageTest() {
    ::setenv("VOLTVK_STATE", m_state.file("state.db").c_str(), 1);
    gateway().initialize(false);
  }
  ~StorageTest() override { ::unsetenv("VOLTVK_STATE"); }

  static cim::fwf::TVPInterface& gateway() { return *cim::fwf::TVPInterface::getInstance(); }

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
  unsigned int call(const char* routine, const cim::fwf::CIMMethodParam& in) {
    out.clearArgument();
    return gateway().execute(
        cim::fwf::CIMObjectPath("", "root/test", "TVP_TierService", {}), routine, in, out);
  }

  /** A uint32 of the output; fails the test when it is not there. */
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
        cim::fwf::makeProperty<unsigned long long>("CapacityInSectors", 10 * GIBIBYTE),
        cim::fwf::makeProperty<unsigned long long>("ChunkSize", MEBIBYTE),
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
        cim::fwf::makeProperty<unsigned long long>("reqCapacityFromSSDPool", GIBIBYTE),
        cim::fwf::makeProperty("LDDeviceNumber", drives),
        cim::fwf::makeProperty<unsigned long long>("LDCapacityInSectors", 4 * GIBIBYTE),
        cim::fwf::makeProperty<unsigned long long>("ChunkSize", MEBIBYTE),
        cim::fwf::makeProperty<unsigned int>("KnobSetting", 2));
  }

  /** Makes a pool of one drive. @return its identifier */
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
  TemporaryFolder m_state;
};

}  // namespace tvp::test

#endif
