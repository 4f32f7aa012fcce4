// SPDX-License-Identifier: Apache-2.0
// The classes with the real storage library: the order of their properties, names of methods, and threads.
// What they show is recorded in tests/life, which they are is compared in tests/packaging.
#include "ProviderTest.h"
#include "backend/tvpCIMInstanceWrapper.h"

#include <atomic>
#include <thread>

using namespace tvp::cim::fwf;
using namespace tvp::test;

namespace {

class Classes : public ProviderTest {
protected:
  static unsigned char addDrive(TvkDeviceType kind) { return Storage::addDrive(kind, 100 * GIB); }

  /** Past the provider. */
  void createPoolAndVolume() {
    m_pool = Storage::createPool(poolSpec("pool", {addDrive(TVK_DEVICE_HDD)}, 50 * GIB));
    m_volume = Storage::createVolume(volumeSpec("volume", TVK_VOLUME_TIERED, {{m_pool, GIB}}));
  }
  CIMMethodParam pool() const { return identifier("VirtualPoolId", m_pool); }
  CIMMethodParam volume() const { return identifier("VirtualVolumeId", m_volume); }

  static CIMMethodParam identifier(const char* name, unsigned int id) {
    CIMMethodParam in;
    in.addArgument(makeProperty(name, id));
    return in;
  }

  unsigned int m_pool = 0;
  unsigned int m_volume = 0;
};

/** The names of the properties, in order, with blanks between them. */
std::string namesIn(const CIMInstance& instance) {
  std::string names;
  for (const CIMProperty& property : instance.properties()) {
    names += (names.empty() ? "" : " ") + property.name();
  }
  return names;
}

}  // namespace

TEST_F(Classes, HaveNoMethodsOfOtherNames) {
  const LogCapture log;
  for (const std::string method : {"createvirtualpool", "%s%n"}) {
    EXPECT_EQ(
        1U, m_facade->getPlugIn("TVP_TierService")
                ->invokeMethod(classPath("TVP_TierService"), method, CIMMethodParam(), m_out));
    EXPECT_TRUE(
        log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - Unsupported Method: " + method)));
  }
}

// An object manager shows the properties in the order of its schema, so that the recorded life cannot tell.
TEST_F(Classes, HaveTheirPropertiesInOrder) {
  createPoolAndVolume();
  const struct {
    const char* className;
    const char* names;
  } cases[] = {
      {"TVP_LogicalDevice",
       "CreationClassName DeviceName SerialNumber WWID Vendor Model CapacityInSectors DeviceNumber "
       "DeviceType "
       "DeviceProperty IsBootable HasPartition isUsedByTarvexPro InterfaceType LD_Status"},
      {"TVP_VirtualPool",
       "CreationClassName Name PoolStatus Description VirtualPoolId NumberOfLogicalDevice "
       "NumberOfVirtualVolume ChunkSize TierLevel CapacityInSectors UsedCapacityInSectors"},
      {"TVP_VirtualVolume",
       "CreationClassName VolumeName Description VirtualVolumeId VirtualPoolsCount Features VolumeType "
       "CacheMode MaxMoveChunks MoveThreshold StatsSetting NumberOfVirtualPoolsSupported DeviceNumber State "
       "KnobSetting CapacityInSectors"},
      {"TVP_TarvexProIdentity",
       "CreationClassName Name MajorRevision MinorRevision BuildRevision PolicyEngineStatus "
       "SupportedFeatureNames SupportedFeaturesValues SupportedAdjustmentValues SupportedAdjustmentNames "
       "SupportedChunkSizeValues SupportedChunkSizeNames SupportedMaxVolumeSizeInSectors MaxTierLevels "
       "MaxVolumesSupported MaxTiersSupported MaxLogicalDevicesSupported MaxLogicalDevicesPerPoolSupported "
       "MinTotalPoolSizeInSectors MinRequiredSizeFromPoolInSectors TarvexPlusEnabled LogicalDevicesCount "
       "VirtualPoolCount VirtualVolumeCount"},
      {"TVP_VirtualPoolMember", "CreationClassName SerialNumber StartRange EndRange NumberOfValidLDExtn"}};
  for (const auto& tested : cases) {
    EXPECT_EQ(tested.names, namesIn(enumerate(tested.className).at(0)));
  }
  const auto members = [this](const char* method, const CIMMethodParam& in) {
    invoke("TVP_TierService", method, in);
    return namesIn(m_out.getArgumentByName("Members")->instanceSlot().m_values.at(0));
  };
  EXPECT_EQ("Name DeviceNumber LDStartRange LDEndRange", members("GetVirtualPoolMembers", pool()));
  EXPECT_EQ("VolumeName VirtualPoolId MaxAllowedChunks", members("GetVirtualVolumeMembers", volume()));
}

TEST_F(Classes, OfPoolsAndVolumesDeleteNothing) {
  createPoolAndVolume();
  EXPECT_EQ(0U, invoke("TVP_VirtualVolume", "DeleteVirtualVolume", volume()));
  EXPECT_EQ(1U, enumerate("TVP_VirtualVolume").size());
  TvkAdapter().deleteVirtualVolume(m_volume);
  EXPECT_EQ(0U, invoke("TVP_VirtualPool", "DeleteVirtualPool", pool()));
  EXPECT_EQ(1U, enumerate("TVP_VirtualPool").size());
}

TEST_F(Classes, StaySoundWhileTheStateChanges) {
  const unsigned char disk = addDrive(TVK_DEVICE_HDD);
  const unsigned char ssd = addDrive(TVK_DEVICE_SSD);
  addDrive(TVK_DEVICE_HDD);
  Storage::createPool(poolSpec("lasting", {disk}, 50 * GIB));
  std::atomic<bool> finished{false};
  std::atomic<unsigned int> rounds{0};
  std::vector<std::thread> readers;
  for (const char* name : {"TVP_LogicalDevice", "TVP_VirtualPool", "TVP_VirtualPool"}) {
    readers.emplace_back([&, name] {
      while (!finished.load()) {
        const std::vector<CIMInstance> found = enumerate(name);
        ASSERT_FALSE(found.empty());
        if (std::string(name) == "TVP_LogicalDevice") {
          EXPECT_EQ(3U, found.size());
        } else {
          EXPECT_EQ("lasting", found[0].getPropertyByName("Name")->stringSlot().m_values.at(0));
          EXPECT_GE(2U, found.size());
        }
        ++rounds;
      }
    });
  }
  for (int i = 0; i < 25 || (rounds.load() < 25 && i < 1000); ++i) {
    const unsigned int passing = Storage::createPool(poolSpec("passing", {ssd}, 50 * GIB, TVK_TIER_SSD));
    EXPECT_EQ(2U, enumerate("TVP_VirtualPool").size());
    EXPECT_EQ(0U, invoke("TVP_TierService", "DeleteVirtualPool", identifier("VirtualPoolId", passing)));
  }
  finished.store(true);
  for (std::thread& reader : readers) {
    reader.join();
  }
}
