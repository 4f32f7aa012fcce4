// SPDX-License-Identifier: Apache-2.0
// What pools and volumes look like after their creation, and which events report their changes.
#include "engine/EngineFixture.h"

#include <atomic>
#include <thread>

using namespace tvp::test;

namespace {

class ConfigurationTest : public EngineTest {};

TEST_F(ConfigurationTest, PoolSpreadsItsCapacityOverItsDrives) {
  addDrive(TVK_DEVICE_HDD, 10 * MIB);
  addDrive(TVK_DEVICE_HDD, 100 * MIB + 5);
  addDrive(TVK_DEVICE_HDD, 100 * MIB);
  createPool(poolSpec("gold \xE2\x82\xAC %s '\"", {2, 0, 1}, 50 * MIB + 1));
  const auto listed = pools();
  ASSERT_EQ(listed.size(), 1U);
  VirtualPool* pool = listed[0];
  EXPECT_STREQ(pool->getName(), "gold \xE2\x82\xAC %s '\"");
  EXPECT_EQ(pool->getCapacityInSectors(), 51 * MIB);  // whole chunks
  EXPECT_EQ(pool->getUsedCapacityInSectors(), 0U);
  EXPECT_EQ(pool->getNumberOfLogicalDevices(), 3);
  EXPECT_EQ(pool->getTierLevel(), TVK_TIER_HDD);
  EXPECT_EQ(pool->getHardDiskFlag(), 1);
  EXPECT_FALSE(pool->isInternal());
  const std::vector<Chunk*> chunks = chunksOf(pool);
  ASSERT_EQ(chunks.size(), 3U);
  const std::uint64_t expected[][2] = {{2, 21}, {0, 10}, {1, 20}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(chunks[i]->getProviderLogical()->getDeviceNumber(), expected[i][0]);
    EXPECT_EQ(chunks[i]->getStartRange(), 0U);
    EXPECT_EQ(chunks[i]->getEndRange(), expected[i][1] * MIB - 1);
    EXPECT_TRUE(chunks[i]->getProviderLogical()->isUsed());
  }
}

TEST_F(ConfigurationTest, VolumeFillsTheGapsBetweenOtherVolumes) {
  addDrive(TVK_DEVICE_HDD, 30 * MIB);
  const std::uint32_t pool = createPool(poolSpec("pool", {0}, 30 * MIB));
  std::vector<std::uint32_t> ids;
  for (const char* name : {"a", "b", "c"}) {
    ids.push_back(createVolume(volumeSpec(name, TVK_VOLUME_TIERED, {{pool, 10 * MIB}})));
  }
  EXPECT_EQ(adapter().deleteVirtualVolume(ids[0]).getReturn(), TVK_OK);
  EXPECT_EQ(adapter().deleteVirtualVolume(ids[2]).getReturn(), TVK_OK);
  createVolume(volumeSpec("d", TVK_VOLUME_TIERED, {{pool, 15 * MIB}}));
  const auto listed = volumes();
  ASSERT_EQ(listed.size(), 2U);
  const std::vector<Chunk*> chunks = chunksOf(listed.last());
  ASSERT_EQ(chunks.size(), 2U);
  EXPECT_EQ(chunks[0]->getStartRange(), 0U);
  EXPECT_EQ(chunks[0]->getEndRange(), 10 * MIB - 1);
  EXPECT_EQ(chunks[1]->getStartRange(), 20 * MIB);
  EXPECT_EQ(chunks[1]->getEndRange(), 25 * MIB - 1);
  EXPECT_EQ(chunks[1]->getProviderVirtualPool()->getPoolId(), pool);
  EXPECT_EQ(chunks[1]->getMaxAllowedChunks(), 15U);
  EXPECT_EQ(pools()[0]->getUsedCapacityInSectors(), 25 * MIB);
  EXPECT_EQ(pools()[0]->getNumberOfVirtualVolumes(), 2);
  EXPECT_GT(listed.last()->getVolumeId(), ids[2]) << "identifiers are never given twice";
}

TEST_F(ConfigurationTest, EachKindOfVolumeTakesItsCapacityFromTheRightPool) {
  addDrive(TVK_DEVICE_HDD, 1000 * MIB);
  addDrive(TVK_DEVICE_SSD, 1000 * MIB);
  const std::uint32_t hdd = createPool(poolSpec("hdd", {0}, 500 * MIB, TVK_TIER_HDD, 8));
  const std::uint32_t ssd = createPool(poolSpec("ssd", {1}, 500 * MIB, TVK_TIER_SSD, 4 * MIB));
  // In either order, and the chunks of a tiered volume fit both pools.
  createVolume(volumeSpec("tiered", TVK_VOLUME_TIERED, {{ssd, 5 * MIB}, {hdd, 20 * MIB}}));
  createVolume(volumeSpec("cached", TVK_VOLUME_CACHED, {{hdd, 20 * MIB + 1}, {ssd, 5 * MIB}}));
  const auto listed = volumes();
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(listed[0]->getCapacityInSectors(), 28 * MIB);
  EXPECT_EQ(listed[0]->getFeatures(), 2U);
  EXPECT_EQ(listed[0]->getCacheMode(), TVK_CACHE_NONE);
  EXPECT_EQ(listed[1]->getCapacityInSectors(), 20 * MIB + 8);
  EXPECT_EQ(listed[1]->getFeatures(), 1U);
  EXPECT_EQ(listed[1]->getCacheMode(), TVK_CACHE_WRITE_BACK);
  EXPECT_EQ(listed[1]->getKnobSetting(), TVK_KNOB_NORMAL) << "none given";
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(listed[i]->getVirtualPoolsCount(), 2);
    EXPECT_EQ(chunksOf(listed[i])[0]->getProviderVirtualPool()->getPoolId(), hdd);
    EXPECT_EQ(chunksOf(listed[i])[1]->getProviderVirtualPool()->getPoolId(), ssd);
  }
  EXPECT_EQ(pools()[1]->getUsedCapacityInSectors(), 16 * MIB);
}

TEST_F(ConfigurationTest, EventsReportRealChangesAndKeepTheirBracketsForThemselves) {
  addDrive(TVK_DEVICE_HDD, 50 * MIB);
  const std::uint32_t pool = createPool(poolSpec("a[b]c", {0}, 50 * MIB));
  auto spec = poolSpec("a[b]c", {}, 0, 0);
  tvkSetText(spec.description, sizeof spec.description, "two\nlines");
  newEvents();
  EXPECT_EQ(adapter().modifyVirtualPool(pool, spec).getReturn(), TVK_OK);
  EXPECT_STREQ(pools()[0]->getDescription(), "two\nlines");
  EXPECT_EQ(newEvents(), std::vector<std::string>{"20C Pool [a(b)c] got a new description"});
  EXPECT_EQ(adapter().modifyVirtualPool(pool, spec).getReturn(), TVK_OK);
  EXPECT_TRUE(newEvents().empty()) << "nothing new to report";
}

TEST_F(ConfigurationTest, EventsNameThePoolOrVolumeThatTheyAreAbout) {
  addDrive(TVK_DEVICE_HDD, 50 * MIB);
  const std::uint32_t pool = createPool(poolSpec("pool", {0}, 50 * MIB));
  createVolume(volumeSpec("first", TVK_VOLUME_TIERED, {{pool, MIB}}));
  const std::uint32_t volume = createVolume(volumeSpec("second", TVK_VOLUME_TIERED, {{pool, MIB}}));
  auto taken = poolSpec("pool", {0}, 50 * MIB);
  adapter().createVirtualPool(taken);
  adapter().deleteVirtualPool(pool);
  adapter().resetVirtualVolumeStats(volume);
  adapter().deleteVirtualVolume(volume);
  adapter().deleteVirtualVolume(77);
  VolEventCollection events(0, 8, 0);
  EXPECT_EQ(adapter().getEvents(events).getReturn(), TVK_OK);
  using Identifiers = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
  Identifiers identifiers;
  for (long i = 0; i < events.count(); ++i) {
    identifiers.emplace_back(events.Obj_P(i)->code, events.Obj_P(i)->actionId);
  }
  const Identifiers expected = {{0x601, 0},    {0x201, pool},   {0x401, 1},      {0x401, volume}, {0x203, 0},
                                {0x207, pool}, {0x40E, volume}, {0x405, volume}, {0x407, 77}};
  EXPECT_EQ(identifiers, expected);
}

TEST_F(ConfigurationTest, CollectionsShowOneConsistentMoment) {
  addDrive(TVK_DEVICE_HDD, 100 * MIB);
  const std::uint32_t pool = createPool(poolSpec("pool", {0}, 100 * MIB));
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    while (!stop) {
      VirtualVolumeSpec spec = volumeSpec("volume", TVK_VOLUME_TIERED, {{pool, 10 * MIB}});
      adapter().createVirtualVolume(spec);
      adapter().deleteVirtualVolume(spec.volumeId);
    }
  });
  std::vector<std::thread> readers;
  readers.reserve(3);
  std::atomic<int> with{0};
  std::atomic<int> without{0};
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while ((with < 20 || without < 20) && std::chrono::steady_clock::now() < end) {
        m_lib->refreshConfiguration();
        FilterCollection all(&adapter());
        std::unique_ptr<FilterCollection> some(all.filterByType("VirtualVolume", 0));
        std::unique_ptr<FilterCollection> under(all.filterByType("VirtualPool", 0));
        const auto* first = dynamic_cast<VirtualPool*>(under->elementAt(0));
        const int count = some->size();
        EXPECT_EQ(first->getUsedCapacityInSectors(), static_cast<std::uint64_t>(count) * 10 * MIB);
        EXPECT_EQ(first->getNumberOfVirtualVolumes(), count);
        if (count > 0) {
          EXPECT_STREQ(dynamic_cast<VirtualVolume*>(some->elementAt(0))->getName(), "volume");
        }
        ++(count > 0 ? with : without);
      }
    });
  }
  for (std::thread& reader : readers) {
    reader.join();
  }
  stop = true;
  writer.join();
  EXPECT_GE(with, 20);
  EXPECT_GE(without, 20);
}

TEST_F(ConfigurationTest, CollectionsOfNothingAreNullOrEmpty) {
  addDrive(TVK_DEVICE_HDD, 50 * MIB);
  FilterCollection none(nullptr);
  EXPECT_EQ(none.size(), 0);
  EXPECT_EQ(none.elementAt(0), nullptr);
  EXPECT_EQ(none.filterByType("LogicalDevice", 0), nullptr);
  FilterCollection all(m_lib->getRootObject());
  EXPECT_EQ(all.size(), 1);
  EXPECT_EQ(all.elementAt(-1), nullptr);
  EXPECT_EQ(all.elementAt(1), nullptr);
  std::unique_ptr<FilterCollection> unknown(all.filterByType("Nothing", 0));
  ASSERT_NE(unknown, nullptr);
  EXPECT_EQ(unknown->size(), 0);
  EXPECT_EQ(m_lib->getRootObject()->getObject(1), nullptr);
}

TEST_F(ConfigurationTest, VolumesHaveDifferentDeviceNumbersWhateverTheirIdentifiers) {
  const std::uint32_t pool = createPool(poolSpec("devices", {addDrive(TVK_DEVICE_HDD, 10 * MIB)}, 10 * MIB));
  const auto create = [&](const char* name) {
    createVolume(volumeSpec(name, TVK_VOLUME_TIERED, {{pool, MIB}}));
    return std::pair(volumes().last()->getVolumeId(), volumes().last()->getDeviceNumber());
  };
  EXPECT_EQ(create("first"), std::pair(1U, std::uint16_t{1}));
  execute("UPDATE sqlite_sequence SET seq = 65535 WHERE name = 'volume'");
  EXPECT_EQ(create("second"), std::pair(65536U, std::uint16_t{2}));
  EXPECT_EQ(create("third"), std::pair(65537U, std::uint16_t{3}));
}

}  // namespace
