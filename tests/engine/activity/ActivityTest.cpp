// SPDX-License-Identifier: Apache-2.0
// I/O, the counters that record it, and how the policy engine reacts to it.
#include "engine/EngineFixture.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <ctime>
#include <optional>

using namespace tvp::test;
using voltvk::IoPattern;

namespace {

class ActivityTest : public EngineTest {
protected:
  ActivityTest() {
    addDrive(TVK_DEVICE_HDD, 1000 * MIB);
    addDrive(TVK_DEVICE_SSD, 1000 * MIB);
    m_hdd = createPool(poolSpec("hdd", {0}, 1000 * MIB));
    m_ssd = createPool(poolSpec("ssd", {1}, 1000 * MIB, TVK_TIER_SSD));
  }
  std::uint32_t create(std::uint8_t type, std::uint64_t hddChunks, std::uint64_t ssdChunks) {
    return createVolume(volumeSpec("volume", type, {{m_hdd, hddChunks * MIB}, {m_ssd, ssdChunks * MIB}}));
  }
  /** @return how many transactions it took */
  int play(const IoPattern& pattern) {
    std::optional<voltvk::IoReplay> replay;
    state()->read([&](voltvk::Connection& connection) {
      replay.emplace(connection, voltvk::SnapshotReader(connection).volumes().back(), pattern);
    });
    int transactions = 0;
    for (bool more = true; more; ++transactions) {
      state()->change([&](voltvk::Connection& connection) { more = replay->recordNext(connection); });
    }
    return transactions;
  }
  /** Reads each of the first chunks of the volume the given number of times. */
  void heat(std::uint64_t chunks, std::uint64_t times) {
    for (std::uint64_t i = 0; i < times; ++i) {
      play({chunks, 0, true, 0, 1});
    }
  }
  std::uint64_t runRound() {
    std::uint64_t moved = 0;
    state()->change([&](voltvk::Connection& connection) {
      moved = voltvk::PolicyEngine(connection).runRound(volumes().last()->getVolumeId());
    });
    return moved;
  }
  d_ioctl_user_stat statistics(std::uint32_t id) {
    d_ioctl_user_stat out{};
    EXPECT_EQ(adapter().getVirtualVolumeStats(&out, id).getReturn(), TVK_OK);
    return out;
  }

  std::uint32_t m_hdd = 0;
  std::uint32_t m_ssd = 0;
};

TEST_F(ActivityTest, HotChunksOfTieredVolumesMoveToTheSsdPool) {
  const std::uint32_t id = create(TVK_VOLUME_TIERED, 100, 20);
  EXPECT_EQ(volumes()[0]->getMaxMoveChunks(), 16U);
  EXPECT_EQ(volumes()[0]->getMoveThreshold(), 4U);
  heat(24, 3);
  EXPECT_EQ(runRound(), 0U) << "not hot yet";
  heat(24, 3);
  newEvents();
  EXPECT_EQ(runRound(), 16U);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"40F Volume [volume]: [16] chunks moved to the SSD pool"});
  EXPECT_EQ(adapter().resetVirtualVolumeStats(id).getReturn(), TVK_OK);
  heat(24, 2);
  EXPECT_EQ(statistics(id).ssdReadIoCount, 32U);
  // The chunks that were moved are as hot as the rest: what is on SSDs ages no faster.
  EXPECT_EQ(runRound(), 4U) << "as many places are unused";
  const d_ioctl_user_stat counted = statistics(id);
  EXPECT_EQ(counted.ssdTotalChunks, 20U);
  EXPECT_EQ(counted.hddTotalChunks, 100U);
}

TEST_F(ActivityTest, OnlyColderChunksMakeRoomAndNothingMovesOnceNothingIsUsed) {
  create(TVK_VOLUME_TIERED, 100, 20);
  heat(120, 4);
  EXPECT_EQ(runRound(), 0U) << "all are equally hot";
  heat(120, 2);
  execute("UPDATE chunk SET heat = 3 WHERE number = 119");
  EXPECT_EQ(runRound(), 1U) << "only the one that is colder makes room";
  heat(70, 40);
  EXPECT_EQ(runRound(), 16U);
  runRound();
  for (int round = 0; round < 14; ++round) {
    EXPECT_EQ(runRound(), 0U) << round;
  }
}

TEST_F(ActivityTest, EventsOfThePolicyHaveTheirTimeAndTheirVolume) {
  const std::uint32_t id = create(TVK_VOLUME_TIERED, 100, 20);
  heat(1, 10);
  newEvents();
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  EXPECT_EQ(runRound(), 1U);
  const auto after = static_cast<std::uint32_t>(std::time(nullptr));
  VolEventCollection events(0, 8, 0);
  EXPECT_EQ(adapter().getEvents(events).getReturn(), TVK_OK);
  ASSERT_EQ(events.count(), 1);
  EXPECT_EQ(events.Obj_P(0)->code, 0x40FU);
  EXPECT_EQ(events.Obj_P(0)->actionId, id);
  EXPECT_GE(events.Obj_P(0)->time, before);
  EXPECT_LE(events.Obj_P(0)->time, after);
}

TEST_F(ActivityTest, CacheFillsTakesWritesAndIsFlushedOnRequest) {
  const std::uint32_t id = create(TVK_VOLUME_CACHED, 100, 10);
  heat(12, 4);
  EXPECT_EQ(runRound(), 10U) << "the cache is full";
  d_ioctl_user_stat counted = statistics(id);
  EXPECT_EQ(counted.ssdTotalChunks, 10U);
  EXPECT_EQ(counted.ssdExtraChunks, 0U);
  EXPECT_EQ(counted.totalChunks, 100U);
  EXPECT_EQ(counted.ssdReadIoCount, 0U);
  play({0, 5, true, 0, 1});
  EXPECT_EQ(statistics(id).ssdWriteIoCount, 5U);
  newEvents();
  EXPECT_EQ(adapter().flushVirtualVolume(id).getReturn(), TVK_OK);
  EXPECT_EQ(adapter().flushVirtualVolume(id).getReturn(), TVK_OK);
  const std::vector<std::string> expected = {
      "40D Volume [volume] was flushed: [5] chunks written back",
      "40D Volume [volume] was flushed: [0] chunks written back"};
  EXPECT_EQ(newEvents(), expected);
}

TEST_F(ActivityTest, KnobDecidesHowManyChunksMovePerRound) {
  const std::uint32_t id = create(TVK_VOLUME_TIERED, 200, 100);
  struct Case {
    TvkKnob knob;
    std::uint64_t accesses;
    std::uint64_t moved;
  };
  for (const Case& one :
       {Case{TVK_KNOB_PASSIVE, 7, 0}, Case{TVK_KNOB_AGGRESSIVE, 0, 32}, Case{TVK_KNOB_NORMAL, 4, 16},
        Case{TVK_KNOB_PASSIVE, 8, 8}}) {
    auto change = volumeSpec("", 0, {});
    change.knobSetting = one.knob;
    ASSERT_EQ(adapter().modifyVirtualVolume(id, change).getReturn(), TVK_OK);
    heat(100, one.accesses);
    EXPECT_EQ(runRound(), one.moved) << "knob " << one.knob;
    EXPECT_EQ(volumes()[0]->getKnobSetting(), one.knob);
  }
}

TEST_F(ActivityTest, OnlyTheHottestChunksOfAHugeVolumeAreRemembered) {
  create(TVK_VOLUME_TIERED, 900, 900);
  addDrive(TVK_DEVICE_HDD, 100000 * MIB);
  const std::uint32_t large = createPool(poolSpec("large", {2}, 100000 * MIB, TVK_TIER_HDD, 8));
  createVolume(volumeSpec("huge", TVK_VOLUME_TIERED, {{large, 100000 * MIB}}));
  EXPECT_GT(play({200000, 0, false, 20, 3}), 16) << "others have to wait for all of it";
  std::int64_t rows = 0;
  std::int64_t hot = 0;
  state()->read([&](voltvk::Connection& connection) {
    rows = connection.number("SELECT count(*) FROM chunk");
    hot = connection.number("SELECT count(*) FROM chunk WHERE number < 16 AND heat > 1000");
  });
  EXPECT_EQ(static_cast<std::size_t>(rows), voltvk::TouchRecorder::REMEMBERED_CHUNKS);
  EXPECT_EQ(hot, 16);
}

}  // namespace
