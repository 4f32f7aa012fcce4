// SPDX-License-Identifier: Apache-2.0
// The parts of a volume cover it, however large it is, and hold what is remembered of its chunks.
#include "host/tvpcim/remote/VolumeHeat.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace tvp::test {
namespace {

using Json = nlohmann::ordered_json;

/** @param onSsd the parts that are laid on SSD: first chunk and number of chunks */
Json heatOf(std::uint64_t total, const std::vector<std::pair<std::uint64_t, std::uint64_t>>& onSsd) {
  Json laidOnSsd = Json::array();
  for (const auto& [first, chunks] : onSsd) {
    laidOnSsd.push_back({{"first", first}, {"chunks", chunks}});
  }
  const auto chunk = [](std::uint64_t number, std::uint64_t heat, bool ssd) {
    return Json{{"number", number}, {"heat", heat}, {"ssd", ssd}, {"dirty", false}};
  };
  return {
      {"number", 1},
      {"totalChunks", total},
      {"laidOnSsd", laidOnSsd},
      {"threshold", 4},
      {"chunks", {chunk(0, 9, true), chunk(1, 3, false), chunk(total - 1, 4, false)}}};
}

TEST(VolumeHeat, PartsHoldWhatIsRemembered) {
  // The first chunk was moved to the SSDs, the last one away from them.
  const Json cells = host::tvpcim::heatCells(heatOf(10, {{6, 4}}), 5).at("cells");
  EXPECT_EQ(
      cells,
      Json::parse(R"([{"chunks":2,"ssd":1,"hot":1,"hottest":9},{"chunks":2,"ssd":0,"hot":0,"hottest":0},
        {"chunks":2,"ssd":0,"hot":0,"hottest":0},{"chunks":2,"ssd":2,"hot":0,"hottest":0},
        {"chunks":2,"ssd":1,"hot":1,"hottest":4}])"));
}

TEST(VolumeHeat, PartsAreWhereTheyWereLaid) {
  const struct {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> onSsd;
    std::vector<std::uint64_t> ssd;  // chunks on SSD, of which the first is there and the last is not
  } cases[] = {
      {{}, {1, 0, 0, 0}},
      {{{4, 4}}, {1, 2, 2, 0}},          // grown on hard disks
      {{{2, 3}, {9, 3}}, {2, 2, 0, 2}},  // on those, then on SSDs
      {{{0, 12}}, {2, 3, 3, 2}},
  };
  for (const auto& [onSsd, ssd] : cases) {
    std::vector<std::uint64_t> found;
    const Json cells = host::tvpcim::heatCells(heatOf(12, onSsd), 4).at("cells");
    for (const Json& cell : cells) {
      found.push_back(cell.at("ssd"));
    }
    EXPECT_EQ(found, ssd);
  }
}

TEST(VolumeHeat, PartsCoverVolumesOfAnySize) {
  for (const std::uint64_t total : {3U, 128U, 129U, 1000001U}) {
    const Json cells = host::tvpcim::heatCells(heatOf(total, {{2, total - 2}}), 128).at("cells");
    EXPECT_LE(cells.size(), 128U);
    std::uint64_t chunks = 0;
    for (const Json& cell : cells) {
      chunks += cell.at("chunks").get<std::uint64_t>();
    }
    EXPECT_EQ(chunks, total);
  }
}

}  // namespace
}  // namespace tvp::test
