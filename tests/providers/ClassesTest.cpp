// SPDX-License-Identifier: Apache-2.0
// The classes with the real storage library: which there are, what their methods serve, and threads. What
// they show is recorded in tests/life.
#include "ProviderTest.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "host/schema/MofReader.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace tvp::cim::fwf;
using namespace tvp::test;
using testing::ElementsAre;

namespace {

class Classes : public ProviderTest {
protected:
  static unsigned char addDrive(TvkDeviceType kind) { return Storage::addDrive(kind, 100 * GIB); }

  unsigned int createPool(const std::string& name, unsigned char drive, TvkTierLevel level) {
    CIMMethodParam in;
    in.addArgument(makeProperty("Name", name));
    in.addArgument(makeProperty("Description", std::string("made by a test")));
    in.addArgument(makeProperty<unsigned char>("NumberOfLogicalDevice", 1));
    in.addArgument(makeProperty("LDDeviceNumbers", std::vector<unsigned char>{drive}));
    in.addArgument(makeProperty<unsigned long long>("CapacityInSectors", 50 * GIB));
    in.addArgument(makeProperty<unsigned long long>("ChunkSize", CHUNK));
    in.addArgument(makeProperty<unsigned char>("TierLevel", level));
    return invoke("TVP_TierService", "CreateVirtualPool", in);
  }

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

/** The value that an object manager ends with when it applies properties in order: the last of the name. */
template <typename T>
T last(const CIMInstance& instance, const std::string& name) {
  T value{};
  for (const CIMProperty& property : instance.properties()) {
    if (property.name() == name) {
      value = property.slot<T>().m_values.at(0);
    }
  }
  return value;
}

/** The names of the properties, in order, with blanks between them. */
std::string namesIn(const CIMInstance& instance) {
  std::string names;
  for (const CIMProperty& property : instance.properties()) {
    names += (names.empty() ? "" : " ") + property.name();
  }
  return names;
}

}  // namespace

TEST_F(Classes, AreTheSameInEveryNamespace) {
  for (const char* nameSpace : {"root/kvs/tvp/smi_15", "root/PG_InterOp", "ROOT/KVS/TVP/SMI_15"}) {
    std::vector<std::string> names;
    m_facade->getAllPluginNames(names, nameSpace);
    EXPECT_THAT(
        names, ElementsAre(
                   "tvp_logicaldevice", "tvp_logicaldevices", "tvp_tarvexproidentity", "tvp_tierservice",
                   "tvp_virtualpool", "tvp_virtualpoolmember", "tvp_virtualpools", "tvp_virtualvolume",
                   "tvp_virtualvolumes", "tvp_virtualvolumesource"));
  }
}

TEST_F(Classes, ServeTheMethodsOfTheSchemaByTheirExactNames) {
  const LogCapture log;
  const auto schema = tvp::host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  const auto& declared = schema->find("TVP_TierService")->methods;
  EXPECT_GE(declared.size(), 12U);
  for (const tvp::host::SchemaMethod& method : declared) {
    EXPECT_EQ(4U, invoke("TVP_TierService", method.name)) << method.name;
    EXPECT_TRUE(log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - calling " + method.name)));
  }
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
  ASSERT_EQ(0U, createPool("lasting", disk, TVK_TIER_HDD));
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
          EXPECT_EQ("lasting", last<std::string>(found[0], "Name"));
          EXPECT_GE(2U, found.size());
        }
        ++rounds;
      }
    });
  }
  for (int i = 0; i < 25 || (rounds.load() < 25 && i < 1000); ++i) {
    EXPECT_EQ(0U, createPool("passing", ssd, TVK_TIER_SSD));
    const std::vector<CIMInstance> pools = enumerate("TVP_VirtualPool");
    EXPECT_EQ(2U, pools.size());
    EXPECT_EQ(
        0U, invoke(
                "TVP_TierService", "DeleteVirtualPool",
                identifier("VirtualPoolId", last<unsigned int>(pools.back(), "VirtualPoolId"))));
  }
  finished.store(true);
  for (std::thread& reader : readers) {
    reader.join();
  }
}
