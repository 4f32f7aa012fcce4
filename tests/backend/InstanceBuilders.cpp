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

// The smallest number that is no pool's identifier, then the next whose name is not taken.
TEST_F(InstanceBuilders, DefaultNamesAreNotInUse) {
  EXPECT_EQ(TvkUtil::buildDeviceName(nullptr, TVK_NAME_VOLUME), "Volume0");
  EXPECT_EQ(makePool("Other", TVK_DEVICE_HDD), 1U);
  for (const std::string number : {"0", "1", "2", "3"}) {
    for (const auto& [kind, name] :
         {std::pair(TVK_NAME_POOL, "Pool" + number), {TVK_NAME_INTERNAL_POOL, "InternalPool" + number}}) {
      EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), kind), name);
      makePool(name, TVK_DEVICE_HDD);
    }
  }
  EXPECT_EQ(TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_VOLUME), "Volume0");
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
