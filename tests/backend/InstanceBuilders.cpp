// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "backend/TarvexProLogicalDevice.h"
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

using InstanceBuilders = StorageTest;

TEST_F(InstanceBuilders, WithoutAnObjectThereIsNoInstance) {
  tvpCIMInstanceWrapper wrapper;
  EXPECT_EQ(TarvexProLogicalDevice::InsertLogicalDriveInfo(nullptr, wrapper), 3U);
  EXPECT_EQ(TarvexProVirtualVolume::InsertVirtualVolumeInfo(nullptr, wrapper), 3U);
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
  makePool(first, TVK_DEVICE_HDD);
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
