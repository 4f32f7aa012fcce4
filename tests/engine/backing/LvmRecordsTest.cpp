// SPDX-License-Identifier: Apache-2.0
// What the volume manager reports means the same as the state: tags, chunks and extents, moves, differences.
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/backing/lvm/CacheCleaner.h"
#include "voltvk/engine/backing/lvm/LvmComparison.h"
#include "voltvk/engine/backing/lvm/LvmMoves.h"
#include "voltvk/engine/backing/lvm/LvmVolumes.h"
#include "voltvk/engine/backing/lvm/PoolLayout.h"
#include "voltvk/engine/state/Refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>

namespace voltvk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

PoolRecord
pool(std::uint32_t id, std::uint8_t tier, std::uint64_t chunkMib, std::vector<PoolMemberRecord> members) {
  PoolRecord made;
  made.id = id;
  made.name = "p" + std::to_string(id);
  made.tierLevel = tier;
  made.chunkSectors = chunkMib * EXTENT_SECTORS;
  made.chunks = 1;
  made.members = std::move(members);
  return made;
}

VolumeRecord tieredVolume() {
  VolumeRecord volume;
  volume.id = 4;
  volume.name = "\xC3\xA4,b=\"/";
  volume.description = std::string(62, '~') + '\n';
  volume.type = TVK_VOLUME_TIERED;
  volume.chunkSectors = 8192;
  volume.hddChunks = 6;
  volume.ssdChunks = 2;
  volume.knob = TVK_KNOB_PASSIVE;
  volume.deviceNumber = 65535;
  return volume;
}

TEST(LvmTags, CarryWhatTheStateHas) {
  PoolRecord one = pool(4294967295U, TVK_TIER_SSD, 32, {{7, 11}, {9, 12}});
  one.name = std::string("\xE2\x82\xAC") + "'; rm";
  one.chunks = 20;
  one.internal = true;
  const LvmTags tags = tagsOf(one, 1);
  const std::optional<PoolTag> tag = poolTagIn(tags);
  ASSERT_TRUE(tag);
  EXPECT_EQ(tagsOf(one, 1).size(), 10U);
  EXPECT_EQ(tag->position, 1U);
  EXPECT_EQ(tag->members, 2U);
  EXPECT_EQ(tag->chunks, 12U);
  PoolRecord read = tag->pool;
  read.members = one.members;
  EXPECT_EQ(tagsOf(read, 1), tags);
  const VolumeRecord volume = tieredVolume();
  LvmTags all = tagsOf(volume);
  ASSERT_TRUE(volumeIn(all));
  EXPECT_EQ(tagsOf(*volumeIn(all)), all);
  EXPECT_EQ(volumeIn(all)->name, volume.name);
  all.insert(all.end(), tags.begin(), tags.end());
  for (const std::string& each : all) {
    EXPECT_LT(each.size(), 1024U);
    EXPECT_EQ(each.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789.=-"), std::string::npos) << each;
  }
}

TEST(LvmTags, ThatAreBrokenMeanNothing) {
  const LvmTags good = tagsOf(tieredVolume());
  for (std::size_t i = 0; i < good.size(); ++i) {
    const std::string start = good[i].substr(0, good[i].find('='));
    const bool isText = start == "tvp.name" || start == "tvp.description";
    for (const char* value : {"", "=x", "=-1", "=99999999999999999999", "=1 ", "=0x", "=c3", "=0a"}) {
      LvmTags broken = good;
      broken[i] = start + value;
      EXPECT_EQ(volumeIn(broken).has_value(), broken[i] == "tvp.description=0a") << broken[i];
    }
    EXPECT_TRUE(isText || volumeIdIn({good[i]}) == (i == 0 ? 4U : 0U));
  }
  LvmTags broken = tagsOf(pool(1, TVK_TIER_HDD, 1, {{0, 5}}), 0);
  for (std::string& one : broken) {
    one = one == "tvp.member=0" ? "tvp.member=1" : one;
  }
  EXPECT_FALSE(poolTagIn(broken)) << "there is no such position";
  EXPECT_THAT(
      tagChanges({"theirs", "tvp.a=1", "tvp.b=1"}, {"tvp.b=1", "tvp.c=1"}),
      ElementsAre("--deltag", "tvp.a=1", "--addtag", "tvp.c=1"));
  EXPECT_THAT(splitTags(",a,,b"), ElementsAre("a", "b"));
}

TEST(PoolLayout, FindsEveryChunkAgain) {
  for (const std::uint64_t chunkMib : std::vector<std::uint64_t>{1, 4, 32}) {
    const PoolLayout layout(pool(1, TVK_TIER_HDD, chunkMib, {{0, 3}, {1, 0}, {2, 5}}));
    for (std::uint64_t first = 0; first < 8; ++first) {
      for (std::uint64_t count = 1; first + count <= 8; ++count) {
        std::uint64_t next = first;
        for (const DrivePart& place : layout.placesOf({first, count})) {
          const std::optional<Extent> chunks = layout.chunksAt(place);
          ASSERT_TRUE(chunks);
          EXPECT_EQ(chunks->first, next);
          next += chunks->chunks;
        }
        EXPECT_EQ(next, first + count);
      }
    }
    EXPECT_FALSE(layout.chunksAt({0, 2 * chunkMib, 2 * chunkMib})) << "beyond the member";
    EXPECT_FALSE(layout.chunksAt({3, 0, chunkMib}));
    EXPECT_EQ(layout.chunksAt({2, 1, chunkMib}).has_value(), chunkMib == 1) << "not at a chunk";
    const std::vector<Extent> free = layout.freeChunks({{2, chunkMib, 1}, {0, 0, 2 * chunkMib}});
    ASSERT_EQ(free.size(), 2U);
    EXPECT_EQ(free[0].first, 2U);
    EXPECT_EQ(free[0].chunks, 2U);
    EXPECT_EQ(free[1].first, 5U);
    EXPECT_EQ(free[1].chunks, 3U);
  }
}

/** A group with a pool of two hard disks and one of an SSD, and volume 4 on them; as the volume manager
 * reports it. */
class LvmGroups : public testing::Test {
protected:
  void SetUp() override {
    m_configuration.drives.resize(3);
    for (std::uint16_t number = 0; number < 3; ++number) {
      m_configuration.drives[number].number = number;
      m_configuration.drives[number].name = std::string("/dev/sd") + static_cast<char>('a' + number);
    }
    setPools(4);
    VolumeRecord volume = tieredVolume();
    volume.extents = {{1, {2, 6}}, {2, {0, 2}}};
    m_configuration.volumes = {volume};
  }

  void setPools(std::uint64_t hddChunkMib) {
    const std::uint64_t scale = 4 / hddChunkMib;
    m_configuration.pools = {
        pool(1, TVK_TIER_HDD, hddChunkMib, {{0, 5 * scale}, {1, 6 * scale}}),
        pool(2, TVK_TIER_SSD, 4, {{2, 6}})};
  }

  static std::string joined(const LvmTags& tags) {
    std::string text;
    for (const std::string& tag : tags) {
      text += (text.empty() ? "" : ",") + tag;
    }
    return text;
  }

  nlohmann::json report() const {
    const auto drive = [&](const char* node, const char* uuid, std::size_t of, std::size_t position) {
      return nlohmann::json{
          {"pv_name", node},
          {"pv_uuid", uuid},
          {"pv_tags", joined(tagsOf(m_configuration.pools[of], position))},
          {"pv_pe_count", "100"},
          {"pv_missing", ""}};
    };
    const auto part = [](const char* uuid, const char* first, const char* extents, const char* logical) {
      return nlohmann::json{
          {"pv_uuid", uuid},
          {"pvseg_start", first},
          {"pvseg_size", extents},
          {"lv_name", "vol4"},
          {"seg_start_pe", logical}};
    };
    const nlohmann::json volume{
        {"lv_name", "vol4"},
        {"lv_tags", joined(tagsOf(tieredVolume()))},
        {"lv_active", "active"},
        {"lv_health_status", ""},
        {"move_pv", ""}};
    const nlohmann::json kind{{"lv_name", "vol4"}, {"segtype", "linear"}, {"cache_policy", ""}};
    const nlohmann::json group{{"vg_name", "tvp"}, {"vg_tags", "x,tvp.group"}, {"vg_extent_size", "2048"}};
    nlohmann::json ours{{"vg", {group}}, {"lv", {volume}}, {"seg", {kind}}};
    ours["pv"] = {drive("/dev/sda", "A", 0, 0), drive("/dev/sdb", "B", 0, 1), drive("/dev/sdc", "C", 1, 0)};
    ours["pvseg"] = {part("C", "0", "8", "24"), part("A", "8", "12", "0"), part("B", "0", "12", "12")};
    return nlohmann::json::array({ours});
  }

  LvmGroup group(const nlohmann::json& report) const { return LvmGroup::parse(report, "tvp"); }
  LvmGroup group() const { return group(report()); }

  Configuration m_configuration;
};

TEST_F(LvmGroups, DifferInWhatAnAdministratorIsTold) {
  EXPECT_THAT(differencesBetween(m_configuration, group()), IsEmpty());
  struct Case {
    std::function<void(nlohmann::json&)> change;
    std::vector<std::string> sentences;
    std::size_t contradictions = 0;  ///< of them, those of a configuration of another time
  };
  const std::string volume = "volume 4 (" + tieredVolume().name + ") ";
  const std::vector<Case> cases = {
      {[](auto& one) { one["vg"][0]["vg_tags"] = ""; }, {"the volume group tvp belongs to somebody else"}, 1},
      {[](auto& one) { one["pv"][1]["pv_name"] = "[unknown]"; },
       {"drive 1 (/dev/sdb) of pool 1 (p1) is missing"}},
      {[](auto& one) { one["pv"][1]["pv_missing"] = "missing"; },
       {"drive 1 (/dev/sdb) of pool 1 (p1) was missing for a time and is not used yet"}},
      {[](auto& one) { one["pv"][2]["pv_tags"] = ""; },
       {"drive 2 (/dev/sdc) of pool 2 (p2) is not in the volume group tvp",
        "/dev/sdc is in the volume group tvp without belonging to a pool",
        volume +
            "cannot be compared: the logical volume tvp/vol4 uses /dev/sdc:0-7, which is not where chunks of "
            "a pool are; see `voltvkctl check`"},
       2},
      {[](auto& one) { one["pv"][2]["pv_name"] = "/dev/sdx"; },
       {"drive 2 (/dev/sdc) of pool 2 (p2) is /dev/sdx in the volume group tvp"},
       1},
      {[](auto& one) {
         one["pv"].push_back(one["pv"][1]);
         one["pv"][3]["pv_name"] = "/dev/sdd";
         one["pv"][3]["pv_uuid"] = "D";
       },
       {"/dev/sdd has the marks of pool 1 (p1), which does not have it"},
       1},
      {[](auto& one) { one["lv"][0]["lv_active"] = ""; }, {volume + "is not active"}},
      {[](auto& one) { one["lv"][0]["lv_health_status"] = "partial"; },
       {volume + "lacks a drive that is missing"}},
      {[](auto& one) { one["lv"][0]["lv_tags"] = "tvp.volume=4"; },
       {volume + "has other marks than the state: its name, description, size or knob"},
       1},
      {[](auto& one) { one["lv"][0]["lv_tags"] = "tvp.volume=5"; },
       {volume + "has no logical volume tvp/vol4",
        "the logical volume tvp/vol4 has the marks of volume 5, which the state does not have"},
       2},
      {[](auto& one) { one["lv"][0]["lv_tags"] = "other"; },
       {volume + "has no logical volume tvp/vol4",
        "the logical volume tvp/vol4 belongs to somebody else and is left alone"},
       1},
      {[](auto& one) { one["pvseg"][0]["pvseg_start"] = "4"; },
       {volume + "has chunks elsewhere than the state says"}},
      {[](auto& one) { one["seg"][0]["cache_policy"] = "cleaner"; },
       {volume + "has a cache that only writes back"}}};
  for (const Case& one : cases) {
    nlohmann::json changed = report();
    one.change(changed[0]);
    EXPECT_EQ(differencesBetween(m_configuration, group(changed)), one.sentences);
    EXPECT_EQ(contradictionsBetween(m_configuration, group(changed)).size(), one.contradictions);
  }
  EXPECT_EQ(differencesBetween(m_configuration, LvmGroup::parse({}, "tvp")).size(), 4U);
}

TEST_F(LvmGroups, AreEnoughToRebuildTheState) {
  const Configuration found = configurationIn(group(), m_configuration.drives);
  EXPECT_THAT(differencesBetween(found, group()), IsEmpty());
  EXPECT_THAT(differencesBetween(m_configuration, group()), IsEmpty());
  const std::vector<std::function<void(nlohmann::json&)>> damages = {
      [](auto& one) { one["pv"][0]["pv_name"] = "/dev/sdx"; },
      [](auto& one) { one["pv"].erase(1), one["pvseg"].erase(2); },
      [](auto& one) { one["pv"][1]["pv_tags"] = one["pv"][0]["pv_tags"]; },
      [](auto& one) { one["pv"][1]["pv_tags"] = "tvp.pool=1"; },
      [](auto& one) { one["lv"][0]["lv_tags"] = "tvp.volume=4"; }};
  for (const auto& damage : damages) {
    nlohmann::json damaged = report();
    damage(damaged[0]);
    EXPECT_THROW(configurationIn(group(damaged), m_configuration.drives), Refusal)
        << &damage - damages.data();
  }
}

/** Moves as "0:8>2:8+4 ", one text for each command. */
std::vector<std::string> texts(const std::vector<LvmMoveBatch>& batches) {
  std::vector<std::string> result;
  for (const LvmMoveBatch& batch : batches) {
    result.emplace_back();
    for (const LvmMove& move : batch) {
      result.back() += std::to_string(move.fromDrive) + ":" + std::to_string(move.from) + ">" +
                       std::to_string(move.toDrive) + ":" + std::to_string(move.to) + "+" +
                       std::to_string(move.extents) + " ";
    }
  }
  return result;
}

TEST_F(LvmGroups, MoveChunksWithACommandForEachDriveTheyComeFrom) {
  const VolumeRecord& volume = m_configuration.volumes[0];
  const auto plan = [&](const std::vector<std::uint64_t>& chunks, std::size_t to) {
    return texts(planMoves(group(), volume, chunks, m_configuration.pools[to], m_configuration));
  };
  EXPECT_THAT(plan({4, 0, 2, 7}, 1), ElementsAre("0:8>2:8+4 0:16>2:12+4 ", "1:4>2:16+4 "));
  EXPECT_THAT(plan({7, 6, 0}, 0), ElementsAre("2:0>0:0+4 2:4>0:4+4 "));
  EXPECT_THROW(plan({0, 1, 2, 3, 4}, 1), Refusal) << "there are four free chunks";
  // Chunks that are smaller where they come from, on two drives: a command has one place to fill.
  setPools(1);
  m_configuration.volumes[0].extents = {{1, {8, 24}}, {2, {0, 2}}};
  nlohmann::json pieces = report();
  pieces[0]["pvseg"][1]["pvseg_size"] = "10";
  pieces[0]["pvseg"][2]["pvseg_size"] = "14";
  pieces[0]["pvseg"][2]["seg_start_pe"] = "10";
  EXPECT_THAT(
      texts(planMoves(group(pieces), volume, {1, 2, 3, 5}, m_configuration.pools[1], m_configuration)),
      ElementsAre("0:12>2:8+4 0:16>2:12+2 ", "1:0>2:14+2 1:2>2:16+4 1:10>2:20+4 "));
  LvmGroup crowded = group();
  crowded.volumes.resize(2);
  crowded.volumes[1].parts.resize(LvmMoves::MAX_PARTS - 5, {1, 90, 1, 0});
  EXPECT_THROW(planMoves(crowded, volume, {1}, m_configuration.pools[1], m_configuration), Refusal);
}

TEST(CacheCleaner, ChangesThePolicyAlone) {
  const std::string start = "0 204800 cache 254:5 254:4 254:6 2048 2 metadata2 writeback ";
  EXPECT_EQ(withCleaner(start + "mq 2 migration_threshold 16384\n"), start + "cleaner 0");
  for (const char* other :
       {"", "0 9 linear 8:0 0", "0 9 cache 1:1 1:2 1:3 64", "0 9 cache 1:1 1:2 1:3 64 9 a"}) {
    EXPECT_EQ(withCleaner(other), "");
  }
}

}  // namespace
}  // namespace voltvk
