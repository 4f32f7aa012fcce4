// SPDX-License-Identifier: Apache-2.0
// What the kernel counts for real volumes: how it gets into the state and is shown before it is there, which
// chunks a round then chooses, and how the state learns where they went.
#include "voltvk/engine/activity/KernelActivity.h"

#include "engine/EngineFixture.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/changes/LayoutAdoption.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <random>
#include <set>

using namespace tvp::test;
using voltvk::Connection;
using voltvk::KernelCounters;
using voltvk::PolicyEngine;
using voltvk::VolumeRecord;

namespace {

constexpr const char* CHUNK_ROWS = "SELECT number, heat, ssd FROM chunk ORDER BY number";

class KernelActivityTest : public EngineTest {
protected:
  KernelActivityTest() {
    addDrive(TVK_DEVICE_HDD, 1000 * MIB);
    addDrive(TVK_DEVICE_SSD, 1000 * MIB);
    m_hdd = createPool(poolSpec("hdd", {0}, 1000 * MIB));
    m_ssd = createPool(poolSpec("ssd", {1}, 1000 * MIB, TVK_TIER_SSD, MIB / 2));
  }
  /** @param hdd and ssd chunks of 1 MiB; those of the SSD pool have half of that */
  std::uint32_t create(std::uint8_t type, std::uint64_t hdd, std::uint64_t ssd) {
    return createVolume(volumeSpec("volume", type, {{m_hdd, hdd * MIB}, {m_ssd, ssd * MIB}}));
  }
  static VolumeRecord volume() {
    VolumeRecord found;
    state()->read(
        [&](Connection& connection) { found = voltvk::SnapshotReader(connection).volumes().back(); });
    return found;
  }
  static void collect(const KernelCounters& counters) {
    state()->change([&](Connection& connection) {
      voltvk::KernelActivity(connection, volume(), counters).collect(connection);
    });
  }
  /** The statistics: reads, writes, sequential and random, reads and writes on SSD, chunks on SSD. */
  static std::vector<std::uint64_t> statistics(const KernelCounters& counters) {
    d_ioctl_user_stat out{};
    const VolumeRecord shown = volume();
    state()->read([&](Connection& connection) { voltvk::readStatistics(connection, shown, counters, out); });
    return {out.readIoCount,    out.writeIoCount,    out.sequentialIoCount, out.randomIoCount,
            out.ssdReadIoCount, out.ssdWriteIoCount, out.ssdTotalChunks};
  }
  static void withEngine(const std::function<void(PolicyEngine&)>& work) {
    state()->change([&](Connection& connection) {
      PolicyEngine engine(connection);
      work(engine);
    });
  }
  static std::set<std::uint64_t> chunksOnSsd(const VolumeRecord& volume) {
    std::set<std::uint64_t> found;
    for (std::uint64_t chunk = 0; chunk < volume.capacityChunks(); ++chunk) {
      const std::string row = Storage::rows("SELECT ssd FROM chunk WHERE number = " + std::to_string(chunk));
      if (row.empty() ? volume.wasLaidOnSsd(chunk) : row == "1|\n") {
        found.insert(chunk);
      }
    }
    return found;
  }
  bool adopt(const std::vector<voltvk::VolumeExtentRecord>& layout) {
    bool changed = false;
    state()->change(
        [&](Connection& connection) { changed = voltvk::adoptLayout(connection, volume(), layout); });
    return changed;
  }

  std::mt19937_64 m_random{20261122};
  std::uint32_t m_hdd = 0;
  std::uint32_t m_ssd = 0;
};

TEST_F(KernelActivityTest, CountsOfAreasOfAnySizeAreShownAtOnceAndCollectedOnce) {
  create(TVK_VOLUME_TIERED, 300, 100);
  std::uint64_t heat = 0;
  for (const std::uint64_t size : {1U, 7U, 64U, 400U}) {
    withEngine([&](PolicyEngine& engine) {
      engine.place(volume(), {m_random() % 300, m_random() % 300}, true);
      engine.place(volume(), {300 + m_random() % 100, 300 + m_random() % 100}, false);
    });
    KernelCounters counters;
    for (std::uint64_t first = 0; first < 400; first += size) {
      counters.areas.push_back({first, std::min(size, 400 - first), m_random() % 100, m_random() % 10});
      heat += counters.areas.back().reads + counters.areas.back().writes;
    }
    const std::string before = Storage::rows(CHUNK_ROWS);
    const std::vector<std::uint64_t> shown = statistics(counters);
    EXPECT_EQ(Storage::rows(CHUNK_ROWS), before) << "reading wrote";
    collect(counters);
    EXPECT_EQ(statistics({}), shown) << "areas of " << size;
    EXPECT_EQ(Storage::rows("SELECT sum(heat) FROM chunk"), std::to_string(heat) + "|\n");
  }
  execute("UPDATE chunk SET heat = 0");
  collect({{{10, 4, 9, 0}, {296, 8, 8, 8}}, {}});
  EXPECT_EQ(
      Storage::rows("SELECT group_concat(heat) FROM chunk WHERE number BETWEEN 10 AND 13"), "2,2,2,3|\n");
  EXPECT_EQ(
      Storage::rows("SELECT min(heat), max(heat) FROM chunk WHERE number BETWEEN 296 AND 303"), "2|2|\n");
  EXPECT_EQ(adapter().resetVirtualVolumeStats(volume().id).getReturn(), TVK_OK);
  EXPECT_EQ(statistics({}), (std::vector<std::uint64_t>{0, 0, 0, 0, 0, 0, 100}));
  EXPECT_EQ(statistics({{{0, 1, 0, 2}}, {}}), (std::vector<std::uint64_t>{0, 2, 0, 2, 0, 0, 100}));
}

TEST_F(KernelActivityTest, LargeAreasHeatNoMoreChunksThanAreRemembered) {
  addDrive(TVK_DEVICE_HDD, 100000 * MIB);
  const std::uint32_t large = createPool(poolSpec("large", {2}, 100000 * MIB, TVK_TIER_HDD, 8));
  createVolume(volumeSpec("huge", TVK_VOLUME_TIERED, {{large, 100000 * MIB}}));
  constexpr std::uint64_t HALF = 12800000;
  execute("INSERT INTO chunk VALUES(" + std::to_string(volume().id) + ", 12800007, 5, 0, 0)");
  const KernelCounters counters{{{0, HALF, HALF, 0}, {HALF, 10, 100, 100}, {HALF + 10, 100, 0, 300}}, {}};
  const std::vector<std::uint64_t> shown = statistics(counters);
  collect(counters);
  EXPECT_EQ(statistics({}), shown);
  EXPECT_EQ(shown, (std::vector<std::uint64_t>{HALF + 100, 400, 0, HALF + 500, 0, 0, 0}));
  EXPECT_EQ(Storage::rows("SELECT count(*), sum(heat) FROM chunk WHERE number >= 12800000"), "110|505|\n");
  EXPECT_EQ(
      Storage::rows("SELECT count(*) FROM chunk"),
      std::to_string(voltvk::TouchRecorder::REMEMBERED_CHUNKS) + "|\n");
}

TEST_F(KernelActivityTest, CountersOfACacheAreAddedAsTheyGrow) {
  create(TVK_VOLUME_CACHED, 100, 10);
  constexpr std::uint64_t WRAP = std::uint64_t{1} << 32U;
  struct Case {
    const char* what;
    voltvk::CacheCounters cache;  // read hits and misses, write hits and misses, the size and use of blocks
    std::vector<std::uint64_t> shown;
  };
  const auto full = [](std::uint64_t readHits) {
    return voltvk::CacheCounters{readHits, 0, 0, 0, 1024, 30, 30, 0};
  };
  const std::vector<Case> cases = {
      {"unreadable", {}, {0, 0, 0, 0, 0, 0, 0}},
      {"first seen", {5, 7, 11, 13, 1024, 3, 20, 1}, {12, 24, 0, 36, 5, 11, 2}},
      {"growing", {6, 7, 11, 20, 1024, 4, 20, 1}, {13, 31, 0, 44, 6, 11, 2}},
      {"unreadable for a while", {}, {13, 31, 0, 44, 6, 11, 0}},
      {"continued from earlier values", {4, 1, 2, 3, 1024, 4, 20, 1}, {13, 31, 0, 44, 6, 11, 2}},
      {"growing again", {5, 1, 2, 4, 1024, 4, 20, 1}, {14, 32, 0, 46, 7, 11, 2}},
      {"more blocks than are shown",
       full(WRAP / 2),
       {WRAP / 2 + 9, 32, 0, WRAP / 2 + 41, WRAP / 2 + 2, 11, 10}},
      {"almost at the end", full(WRAP - 1), {WRAP + 8, 32, 0, WRAP + 40, WRAP + 1, 11, 10}},
      {"starting over from 0", full(4), {WRAP + 13, 32, 0, WRAP + 45, WRAP + 6, 11, 10}},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(statistics({{}, one.cache}), one.shown) << one.what;
    collect({{}, one.cache});
    collect({{}, one.cache});
    EXPECT_EQ(statistics({{}, one.cache}), one.shown) << one.what << ", collected";
  }
  EXPECT_EQ(adapter().deleteVirtualVolume(volume().id).getReturn(), TVK_OK);
}

TEST_F(KernelActivityTest, ChoiceIsWhatARoundMovesAndWritesNothing) {
  for (const std::uint8_t type : {TVK_VOLUME_TIERED, TVK_VOLUME_CACHED}) {
    const std::uint32_t id = create(type, 60, 20);
    std::uint64_t moved = 0;
    for (int round = 0; round < 20; ++round) {
      KernelCounters counters;
      for (std::uint64_t chunk = m_random() % 4; chunk < volume().capacityChunks();
           chunk += 1 + m_random() % 4) {
        counters.areas.push_back({chunk, 1, m_random() % 12, 0});
      }
      collect(counters);
      const std::string rows = Storage::rows(CHUNK_ROWS);
      std::set<std::uint64_t> expected = chunksOnSsd(volume());
      voltvk::PolicyChoice choice;
      withEngine([&](PolicyEngine& engine) { choice = engine.choose(volume()); });
      EXPECT_EQ(Storage::rows(CHUNK_ROWS), rows);
      for (const std::uint64_t chunk : choice.demoted) {
        EXPECT_EQ(expected.erase(chunk), 1U) << chunk;
      }
      expected.insert(choice.promoted.begin(), choice.promoted.end());
      withEngine([&](PolicyEngine& engine) { EXPECT_EQ(engine.runRound(id), choice.promoted.size()); });
      moved += choice.promoted.size();
      EXPECT_EQ(chunksOnSsd(volume()), expected) << "round " << round;
      EXPECT_LE(expected.size(), 20U);
    }
    EXPECT_GT(moved, 40U);
    EXPECT_EQ(adapter().deleteVirtualVolume(id).getReturn(), TVK_OK);
  }
}

TEST_F(KernelActivityTest, MovesThatWereCutOffAreMadeUpFor) {
  create(TVK_VOLUME_TIERED, 60, 20);
  collect({{{3, 4, 400, 0}}, {}});
  voltvk::PolicyChoice choice;
  withEngine([&](PolicyEngine& engine) {
    choice = engine.choose(volume());
    engine.place(volume(), choice.demoted, false);
  });
  withEngine([&](PolicyEngine& engine) {
    const voltvk::PolicyChoice rest = engine.choose(volume());
    EXPECT_TRUE(rest.demoted.empty());
    EXPECT_EQ(rest.promoted, choice.promoted);
    engine.setRunning(false);
    EXPECT_TRUE(engine.choose(volume()).promoted.empty());
  });
}

TEST_F(KernelActivityTest, StateLearnsWhereChunksAre) {
  create(TVK_VOLUME_TIERED, 10, 2);
  collect({{{1, 1, 7, 0}, {11, 1, 3, 0}}, {}});
  const std::string rows = Storage::rows(CHUNK_ROWS);
  const auto laid = volume().extents;
  EXPECT_FALSE(adopt(laid));
  // Chunk 1 is on SSD in two pieces, chunk 5 only in part; 10 is on hard disk now, 11 still on SSD.
  EXPECT_TRUE(adopt(
      {{m_hdd, {0, 1}},
       {m_ssd, {9, 1}},
       {m_ssd, {4, 1}},
       {m_hdd, {2, 2}},
       {m_hdd, {4, 5}},
       {m_hdd, {20, 2}},
       {m_ssd, {2, 2}}}));
  EXPECT_EQ(Storage::rows(CHUNK_ROWS), "1|7|1|\n10|0|0|\n11|3|1|\n");
  EXPECT_EQ(
      Storage::rows("SELECT group_concat(pool || ' ' || first || '+' || chunks) FROM volume_extent"),
      "1 0+1,2 9+1,2 4+1,1 2+7,1 20+2,2 2+2|\n");
  EXPECT_FALSE(adopt(volume().extents));
  for (const auto& wrong : {std::vector<voltvk::VolumeExtentRecord>{{m_hdd, {0, 11}}}, {{77, {0, 12}}}}) {
    EXPECT_THROW(adopt(wrong), voltvk::Refusal);
  }
  EXPECT_TRUE(adopt(laid));
  EXPECT_EQ(Storage::rows(CHUNK_ROWS), "1|7|0|\n10|0|1|\n11|3|1|\n");
  EXPECT_EQ(rows, "1|7|0|\n11|3|1|\n");
}

TEST_F(KernelActivityTest, ChunksThatAreOnlyPartlyOnSsdCountAsOnHardDisk) {
  create(TVK_VOLUME_TIERED, 3, 2);
  EXPECT_TRUE(adopt({{m_hdd, {0, 1}}, {m_ssd, {0, 1}}, {m_ssd, {1, 4}}, {m_ssd, {7, 1}}, {m_hdd, {5, 1}}}));
  EXPECT_EQ(Storage::rows(CHUNK_ROWS), "1|0|1|\n2|0|1|\n4|0|0|\n");
}

}  // namespace
