// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "backend/TarvexProIdentity.h"
#include "backend/TarvexProLogicalDevice.h"
#include "backend/TarvexProVirtualPool.h"
#include "backend/TarvexProVirtualVolume.h"
#include "backend/TvkUtil.h"

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

/** "name:type" of each property, with a "!" before the keys. */
Strings shapeOf(const CIMInstance& instance) {
  Strings shape;
  for (const CIMProperty& property : instance.properties()) {
    shape.push_back(
        (property.isKey() && property.extraFlag() ? "!" : "") + property.name() + ":" +
        std::to_string(property.getType()));
  }
  return shape;
}

template <typename T>
std::vector<T> valuesOf(const CIMInstance& instance, const char* name) {
  return elementsOf<T>(instance.getPropertyByName(name));
}

class InstanceBuilders : public StorageTest {
protected:
  /** Builds the instance of the object at an index. */
  template <typename Object>
  static unsigned int build(
      unsigned int (*builder)(Object*, tvpCIMInstanceWrapper&), tvpCIMInstanceWrapper& wrapper,
      int index = 0) {
    const FilteredObjects<Object> objects(getTvkAdapter());
    for (auto object = objects.begin(); object != objects.end(); ++object) {
      if (object.index() == index) {
        return builder(&*object, wrapper);
      }
    }
    return 99;
  }
};

TEST_F(InstanceBuilders, DrivesPoolsAndVolumesHaveTheirPropertiesInOrder) {
  const unsigned int hdd = makePool("Slow", TVK_DEVICE_HDD);
  ASSERT_EQ(call("CreateVirtualVolume", volumeArguments("Data", TVK_VOLUME_TIERED, {hdd}, {GIB})), 0U);
  refreshTarvexProObjects();
  tvpCIMInstanceWrapper drive;
  tvpCIMInstanceWrapper pool;
  tvpCIMInstanceWrapper volume;
  EXPECT_EQ(build(TarvexProLogicalDevice::InsertLogicalDriveInfo, drive), 0U);
  EXPECT_EQ(
      shapeOf(drive.instance()),
      (Strings{
          "!CreationClassName:18", "!DeviceName:18", "SerialNumber:18", "WWID:18", "Vendor:18", "Model:18",
          "CapacityInSectors:24", "DeviceNumber:20", "DeviceType:26", "DeviceProperty:26", "IsBootable:0",
          "HasPartition:0", "isUsedByTarvexPro:0", "InterfaceType:26", "LD_Status:26"}));
  EXPECT_EQ(build(TarvexProVirtualPool::InsertVirtualPoolInfo, pool), 0U);
  EXPECT_EQ(
      shapeOf(pool.instance()),
      (Strings{
          "!CreationClassName:18", "!Name:18", "PoolStatus:22", "Description:18", "VirtualPoolId:22",
          "NumberOfLogicalDevice:26", "NumberOfVirtualVolume:26", "ChunkSize:24", "TierLevel:26",
          "CapacityInSectors:24", "UsedCapacityInSectors:24"}));
  EXPECT_EQ(
      valuesOf<unsigned long long>(pool.instance(), "UsedCapacityInSectors"),
      std::vector<unsigned long long>{GIB});
  EXPECT_EQ(build(TarvexProVirtualVolume::InsertVirtualVolumeInfo, volume), 0U);
  EXPECT_EQ(
      shapeOf(volume.instance()),
      (Strings{
          "!CreationClassName:18", "!VolumeName:18", "Description:18", "VirtualVolumeId:22",
          "VirtualPoolsCount:26", "Features:27", "VolumeType:26", "CacheMode:26", "MaxMoveChunks:22",
          "MoveThreshold:22", "StatsSetting:22", "NumberOfVirtualPoolsSupported:22", "DeviceNumber:20",
          "State:26", "KnobSetting:26", "CapacityInSectors:24"}));
  EXPECT_EQ(valuesOf<std::string>(volume.instance(), "VolumeName"), Strings{"Data"});
  EXPECT_EQ(valuesOf<unsigned char>(volume.instance(), "Features"), (std::vector<unsigned char>{2, 3}));
  EXPECT_EQ(TarvexProLogicalDevice::InsertLogicalDriveInfo(nullptr, drive), 3U);
  EXPECT_EQ(TarvexProVirtualVolume::InsertVirtualVolumeInfo(nullptr, volume), 3U);
}

TEST_F(InstanceBuilders, InternalPoolsAreLeftOut) {
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  ASSERT_EQ(call("CreateDataCacheVolume", dataCacheArguments("Cached", ssd, {addDrive(TVK_DEVICE_HDD)})), 0U);
  ASSERT_EQ(answered("RetStat"), 0U);
  const Strings names = pools();
  ASSERT_EQ(names.size(), 2U);
  tvpCIMInstanceWrapper wrapper;
  log.clear();
  EXPECT_EQ(build(TarvexProVirtualPool::InsertVirtualPoolInfo, wrapper, 1), 3U);
  EXPECT_EQ(wrapper.instance().getPropertyCount(), 0U);
  EXPECT_TRUE(log.has(LogCapture::message(
      4, "The Pool " + names[1] + " is an internal pool created for CachedLD, hence ignoring it")));
}

TEST_F(InstanceBuilders, TheIdentityPublishesItsTablesWithTheirEndMarkers) {
  tvpCIMInstanceWrapper identity;
  ASSERT_EQ(InsertFeatureIdentityInfo(identity), 0U);
  EXPECT_EQ(
      shapeOf(identity.instance()), (Strings{
                                        "!CreationClassName:18",
                                        "!Name:18",
                                        "MajorRevision:20",
                                        "MinorRevision:20",
                                        "BuildRevision:20",
                                        "PolicyEngineStatus:26",
                                        "SupportedFeatureNames:19",
                                        "SupportedFeaturesValues:27",
                                        "SupportedAdjustmentValues:27",
                                        "SupportedAdjustmentNames:19",
                                        "SupportedChunkSizeValues:27",
                                        "SupportedChunkSizeNames:19",
                                        "SupportedMaxVolumeSizeInSectors:25",
                                        "MaxTierLevels:26",
                                        "MaxVolumesSupported:26",
                                        "MaxTiersSupported:26",
                                        "MaxLogicalDevicesSupported:26",
                                        "MaxLogicalDevicesPerPoolSupported:26",
                                        "MinTotalPoolSizeInSectors:24",
                                        "MinRequiredSizeFromPoolInSectors:24",
                                        "TarvexPlusEnabled:26",
                                        "LogicalDevicesCount:26",
                                        "VirtualPoolCount:26",
                                        "VirtualVolumeCount:26"}));
  const struct {
    const char* names;
    const char* last;
    std::size_t count;
  } tables[] = {
      {"SupportedFeatureNames", "featMaxIndex", 7},
      {"SupportedAdjustmentNames", "SuppAdjMaxIndex", 8},
      {"SupportedChunkSizeNames", "SuppChunkMaxIndex", 10}};
  for (const auto& table : tables) {
    const Strings names = valuesOf<std::string>(identity.instance(), table.names);
    ASSERT_EQ(names.size(), table.count);
    EXPECT_EQ(names.back(), table.last);
  }
  TvkAdapterIdentity expected = {};
  ASSERT_EQ(getTvkAdapter()->getIdentity(expected).getReturn(), 0U);
  const auto sizes = valuesOf<unsigned long long>(identity.instance(), "SupportedMaxVolumeSizeInSectors");
  ASSERT_EQ(sizes.size(), 10U);
  EXPECT_EQ(sizes.front(), expected.maxVolumeSizeInSectors[1]);
  EXPECT_EQ(sizes.back(), expected.maxVolumeSizeInSectors[0]) << "the end marker shows element 0";
}

TEST_F(InstanceBuilders, WithoutAnAdapterThereIsNoIdentity) {
  tvpCIMInstanceWrapper identity;
  voltvk::Faults().throwFrom("getIdentity");
  EXPECT_EQ(InsertFeatureIdentityInfo(identity), 3U);
  voltvk::Faults().fail("getIdentity", TVK_BUSY);
  EXPECT_EQ(InsertFeatureIdentityInfo(identity), 3U);
  EXPECT_TRUE(log.has(LogCapture::message(
      2, "TvkAdapter::getIdentity() was refused: an injected fault has refused this call: fail getIdentity "
         "with status 4")));
  voltvk::Faults().adapterAbsent();
  refreshTarvexProObjects();
  EXPECT_EQ(InsertFeatureIdentityInfo(identity), 3U);
  EXPECT_EQ(identity.instance().getPropertyCount(), 0U);
  EXPECT_TRUE(
      log.has(LogCapture::message(4, "InsertFeatureIdentityInfo() - !!ERROR!! - TvkAdapter object is NULL")));
}

TEST_F(InstanceBuilders, DefaultNamesAreNotInUse) {
  EXPECT_EQ(TvkUtil::buildDeviceName(nullptr, TVK_NAME_VOLUME), "Volume0");
  std::vector<unsigned int> identifiers;
  for (const char* name : {"Other", "Another"}) {
    identifiers.push_back(makePool(name, TVK_DEVICE_HDD));
  }
  unsigned int free = 0;
  while (std::count(identifiers.begin(), identifiers.end(), free) != 0) {
    ++free;
  }
  const std::string first = "Pool" + std::to_string(free);
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_POOL), first);
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_INTERNAL_POOL), "Internal" + first);
  ASSERT_EQ(
      call(
          "ModifyVirtualPool",
          arguments(
              makeProperty<unsigned int>("VirtualPoolId", identifiers[0]),
              makeProperty<std::string>("Name", first), makeProperty<unsigned char>("TierLevel", 0),
              makeProperty<std::string>("Description", ""))),
      0U);
  refreshTarvexProObjects();
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_POOL), "Pool" + std::to_string(free + 1));
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_VOLUME), "Volume0");
}

TEST_F(InstanceBuilders, NamesOfInternalPoolsSkipThoseThatAreTaken) {
  const unsigned int first = makePool("First", TVK_DEVICE_HDD);
  unsigned int number = 0;
  const auto name = [&number] { return "InternalPool" + std::to_string(number); };
  while (number == first) {
    ++number;
  }
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_INTERNAL_POOL), name());
  for (int taken = 0; taken < 3; ++taken) {
    makePool(name(), TVK_DEVICE_HDD);
    // The smallest number that is not an identifier, then the next whose name is not taken.
    number = 0;
    const Strings names = pools();
    std::vector<unsigned int> identifiers;
    for (const VirtualPool& pool : FilteredObjects<VirtualPool>(getTvkAdapter())) {
      identifiers.push_back(pool.getPoolId());
    }
    while (std::count(identifiers.begin(), identifiers.end(), number) != 0) {
      ++number;
    }
    while (std::count(names.begin(), names.end(), name()) != 0) {
      ++number;
    }
    EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_INTERNAL_POOL), name());
  }
}

TEST(InstanceWrapper, ElementsAreAppendedToArraysAndToNothingElse) {
  tvpCIMInstanceWrapper wrapper;
  wrapper.tvpAddProp("Names", Strings{"a"}, true, true);
  EXPECT_TRUE(wrapper.tvpPushBack<std::string>("Names", "b"));
  EXPECT_EQ(valuesOf<std::string>(wrapper.instance(), "Names"), (Strings{"a", "b"}));
  EXPECT_EQ(wrapper.instance().keyProperties().front().stringSlot().m_values, (Strings{"a", "b"}));
  EXPECT_TRUE(wrapper.tvpPushBack<unsigned char>("Bytes", 4));
  EXPECT_TRUE(wrapper.tvpPushBack<unsigned char>("Bytes", 5));
  EXPECT_EQ(valuesOf<unsigned char>(wrapper.instance(), "Bytes"), (std::vector<unsigned char>{4, 5}));
  EXPECT_FALSE(wrapper.tvpPushBack<unsigned int>("Bytes", 6));
  wrapper.tvpAddProp("When", DateAndTime("20240131120000.000000+000"), false, false);
  wrapper.tvpAddProp<short>("Offset", -5, false, false);
  EXPECT_EQ(shapeOf(wrapper.instance()), (Strings{"!Names:19", "Bytes:27", "When:4", "Offset:10"}));
}

}  // namespace
}  // namespace tvp::test
