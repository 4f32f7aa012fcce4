// SPDX-License-Identifier: Apache-2.0
// A volume's chunks summed up in cells, whatever its size.
#include "voltvk/engine/activity/HeatMap.h"

#include "voltvk/VirtualVolume.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace voltvk;
using Place = HeatCell::Place;

constexpr std::uint64_t MOST = std::numeric_limits<std::int64_t>::max();

VolumeRecord volumeOf(TvkVolumeType type, std::uint64_t hddChunks, std::uint64_t ssdChunks) {
  VolumeRecord volume;
  volume.type = type;
  volume.chunkSectors = 2048;
  volume.hddChunks = hddChunks;
  volume.ssdChunks = ssdChunks;
  volume.knob = TVK_KNOB_NORMAL;
  volume.layAsNew();
  return volume;
}

TEST(HeatMapTest, CellsSumUpWhereChunksAreAndHowHot) {
  struct Case {
    VolumeRecord volume;
    std::vector<RememberedChunk> chunks;
    std::size_t maxCells;
    std::vector<Place> places;
    std::vector<std::uint64_t> onSsd;
    std::vector<std::uint64_t> hottest;
  };
  const Case cases[] = {
      {volumeOf(TVK_VOLUME_TIERED, 2, 1),
       {},
       9,
       {Place::Disk, Place::Disk, Place::Ssd},
       {0, 0, 1},
       {0, 0, 0}},
      {volumeOf(TVK_VOLUME_TIERED, 10, 7),
       {{0, 9, true, false}, {1, 8, false, false}, {15, 3, false, false}},
       5,
       {Place::Both, Place::Disk, Place::Both, Place::Both, Place::Ssd},
       {1, 0, 2, 3, 1},
       {9, 0, 0, 3, 0}},
      {volumeOf(TVK_VOLUME_CACHED, 8, 2),
       {{2, 5, true, false}, {3, 4, true, false}, {4, 1, true, true}},
       4,
       {Place::Disk, Place::Ssd, Place::Dirty, Place::Disk},
       {0, 2, 1, 0},
       {0, 5, 1, 0}},
      {volumeOf(TVK_VOLUME_TIERED, std::uint64_t{1} << 32U, 0),
       {{0, MOST, false, false}, {1, MOST, false, false}, {(std::uint64_t{1} << 32U) - 1, MOST, true, false}},
       3,
       {Place::Disk, Place::Both},
       {0, 1},
       {MOST, MOST}},
  };
  for (const Case& one : cases) {
    const HeatMap map(one.volume, one.chunks, one.maxCells);
    ASSERT_EQ(map.cells().size(), one.places.size());
    std::uint64_t next = 0;
    for (std::size_t i = 0; i < one.places.size(); ++i) {
      const HeatCell& cell = map.cells()[i];
      EXPECT_EQ(cell.first, next);
      EXPECT_EQ(cell.place(), one.places[i]) << cell.first;
      EXPECT_EQ(cell.onSsd, one.onSsd[i]) << cell.first;
      EXPECT_EQ(cell.hottest, one.hottest[i]) << cell.first;
      next += cell.chunks;
    }
    EXPECT_EQ(next, one.volume.capacityChunks());
    EXPECT_EQ(map.total().chunks, next);
  }
  const HeatCell total = HeatMap(cases[1].volume, cases[1].chunks, 1).total();
  EXPECT_EQ(total.hot, 2U);
  EXPECT_EQ(total.hotOnSsd, 1U);
  EXPECT_EQ(total.heat, 20U);
  EXPECT_EQ(total.heatOnSsd, 9U);
  EXPECT_EQ(
      HeatMap(cases[3].volume, cases[3].chunks, 1).total().heat, std::numeric_limits<std::uint64_t>::max())
      << "no overflow";
}

TEST(HeatMapTest, LevelsTellTheHotAndTheHottestApart) {
  const std::pair<std::uint64_t, std::vector<std::uint64_t>> cases[] = {
      {0, {0, 1, 4, 5}}, {5, {0, 1, 4, 5}}, {100, {0, 1, 4, 20}}, {MOST, {0, 1, 4, 6074001000}}};
  for (const auto& [hottest, lowest] : cases) {
    const HeatMap map(volumeOf(TVK_VOLUME_TIERED, 4, 0), {{1, hottest, false, false}}, 4);
    for (unsigned level = 0; level < HeatMap::LEVELS; ++level) {
      EXPECT_EQ(map.lowestOf(level), lowest[level]) << hottest;
      EXPECT_EQ(map.levelOf(lowest[level]), level) << hottest;
      EXPECT_EQ(map.levelOf(lowest[level] + 1) >= level, true) << hottest;
    }
    EXPECT_EQ(map.levelOf(3), 1U) << "not hot";
  }
}

}  // namespace
