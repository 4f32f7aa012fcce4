// SPDX-License-Identifier: Apache-2.0
#include "tvpcim/Tvpcim.h"
#include "voltvk/Limits.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tvp::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

constexpr std::uint64_t GIB = 2097152;  // sectors

class TvpcimStorage : public TvpcimTest {
protected:
  /** What the provider says about the reason of a refusal. */
  std::string hintOf(const Words& words) const {
    const CommandResult result = tvpcim(words);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("CIM_ERR_FAILED: :: Operation Failed\n"));
    const std::string mark = "tvpcim: hint: ";
    const std::size_t start = result.err.find(mark);
    return start == std::string::npos ? result.err : result.err.substr(start + mark.size());
  }

  const std::string m_hardDisk = addDrive("hdd", "100GiB");
  const std::string m_ssd = addDrive("ssd", "50GiB");
};

TEST_F(TvpcimStorage, ATieredVolumeLivesThroughAllItsVerbs) {
  const Json slow = answer(
      {"pool", "create", "slow", "--drives", m_hardDisk, "--size", "50GiB", "--description", "a \"b\""});
  EXPECT_EQ(slow.at("RetStat"), 0);
  // A name stands for the number, and the pool of SSDs may be named first.
  answer(
      {"pool", "create", "fast", "--drives", "/dev/tvk" + m_ssd, "--tier", "ssd", "--size", "20G", "--chunk",
       "1MiB"});
  answer(
      {"volume", "create", "data", "--pool", "fast:2097152s", "--pool",
       slow.at("VirtualPoolId").dump() + ":10GiB"});

  EXPECT_EQ(answer({"drives"}), answer({"ei", "TVP_LogicalDevice"}));
  const Json pools = answer({"pools"});
  const Json fast = findIn(pools, "Name", "fast");
  EXPECT_EQ(findIn(pools, "Name", "slow").at("Description"), "a \"b\"");
  EXPECT_EQ(fast.at("TierLevel"), 3);
  EXPECT_EQ(fast.at("CapacityInSectors"), 20 * GIB);
  EXPECT_EQ(fast.at("UsedCapacityInSectors"), GIB);
  const Json volume = answer({"volumes"}).at(0);
  EXPECT_EQ(volume.at("CapacityInSectors"), 11 * GIB) << "the capacities of a tiered volume add up";
  EXPECT_EQ(volume.at("KnobSetting"), 2);

  answer({"volume", "modify", "data", "--name", "records", "--knob", "aggressive"});
  EXPECT_EQ(answer({"volumes"}).at(0).at("KnobSetting"), 1);
  answer({"pool", "modify", "slow", "--description", "changed"});
  EXPECT_EQ(findIn(answer({"pools"}), "Name", "slow").at("Description"), "changed") << "the name stays";

  voltvkctl({"io", "records", "--reads", "100", "--writes", "50"});
  EXPECT_EQ(answer({"volume", "reset-stats", "records"}).at("ReturnCode"), 0);
  EXPECT_EQ(answer({"volume", "stats", "records"}).at("WriteIO_Count"), 0);

  const Json member = answer({"pool", "members", "fast"}).at(0);
  Json shown = fast;
  shown["Members"] = Json::array({member});
  EXPECT_EQ(answer({"pool", "show", "fast"}), shown);
  EXPECT_THAT(tvpcim({"volume", "show", "records"}).out, HasSubstr("CAPACITY        11 GiB\n"));
  EXPECT_EQ(answer({"volume", "list"}), answer({"volumes"}));
  EXPECT_EQ(answer({"pool", "list"}), answer({"pools"}));
  EXPECT_EQ(member.at("DeviceNumber").dump(), m_ssd);
  EXPECT_EQ(answer({"volume", "members", "records"}).size(), 2U);
  const Json whole = answer({"tree"});
  const Json& root = whole.at(0);
  EXPECT_EQ(whole.size(), 1U);
  EXPECT_EQ(root.at("SizeInSectors"), 11 * GIB);
  EXPECT_TRUE(root.at("UsedInSectors").is_null());
  const Json& below = root.at("Children").at(0);
  EXPECT_EQ(below.at("Name"), "slow");
  EXPECT_EQ(below.at("SizeInSectors"), 50 * GIB);
  EXPECT_EQ(below.at("UsedInSectors"), 10 * GIB);
  EXPECT_EQ(below.at("Children").at(0).at("SizeInSectors"), 100 * GIB);
  EXPECT_EQ(below.at("Children").at(0).at("UsedInSectors"), 50 * GIB);
}

TEST_F(TvpcimStorage, ACachedVolumeTakesAndFreesItsDrive) {
  answer({"pool", "create", "fast", "--drives", m_ssd, "--size", "20GiB"});
  answer(
      {"volume", "cache", "quick", "--drive", m_hardDisk, "--size", "40GiB", "--ssd-pool", "fast",
       "--ssd-size", "4GiB", "--knob", "passive"});
  const Json volume = answer({"volumes"}).at(0);
  EXPECT_EQ(volume.at("VolumeType"), 2);
  EXPECT_EQ(volume.at("CapacityInSectors"), 40 * GIB);
  EXPECT_EQ(volume.at("KnobSetting"), 3);
  EXPECT_EQ(answer({"pools"}).size(), 1U) << "the internal pool is not listed";
  EXPECT_THAT(voltvkctl({"status"}), HasSubstr("\npools:    1 and 1 internal\nvolumes:  1\n"));

  voltvkctl({"io", "quick", "--writes", "20", "--hot", "100"});
  EXPECT_EQ(answer({"volume", "flush", "quick"}).at("RetStat"), 0);
  answer({"volume", "delete", "quick"});
  EXPECT_EQ(findIn(answer({"drives"}), "DeviceNumber", std::stoi(m_hardDisk)).at("isUsedByTarvexPro"), false);

  const std::string kept(30, 'n');
  EXPECT_EQ(
      answer({"volume", "cache", kept + "ä", "--drive", m_hardDisk, "--size", "1GiB", "--ssd-pool", "fast",
              "--ssd-size", "1GiB"})
          .at("VolumeName"),
      kept)
      << "the end of the name is cut before the character that does not fit";
}

TEST_F(TvpcimStorage, ARefusalIsExplained) {
  const std::string other = addDrive("hdd", "10GiB");
  answer({"pool", "create", "slow", "--drives", m_hardDisk, "--size", "50GiB"});
  answer({"pool", "create", "fast", "--drives", m_ssd, "--size", "20GiB"});
  answer({"volume", "create", "data", "--pool", "slow:1GiB"});
  const struct {
    Words words;
    std::string hint;
  } cases[] = {
      {{"pool", "create", "bad\xff", "--drives", other, "--size", "1G"}, "the name 'bad\\xFF' is not UTF-8"},
      {{"pool", "create", "new", "--drives", other, "--size", "1G", "--chunk", "2MiB"},
       "chunks of 2 MiB are not supported; supported are 4 KiB, 64 KiB,"},
      {{"pool", "modify", "fast", "--tier", "hdd"},
       "drive " + m_ssd + " (/dev/tvk" + m_ssd +
           ") is an SSD, which the tier level 1 (hard disks) does not fit"},
      {{"pool", "modify", "fast", "--description", std::string(TVK_LONGEST_DESCRIPTION + 1, 'd')},
       "the description has " + std::to_string(TVK_LONGEST_DESCRIPTION + 1) + " bytes; "},
      {{"pool", "create", "p", "--drives", "255", "--size", "1GiB"}, "no drive has the number 255"},
      {{"pool", "delete", "99"}, "no pool has the number 99"},
      {{"volume", "create", "v", "--pool", "slow:60GiB"},
       "pool 1 (slow) has 49 GiB free, less than the 60 GiB asked for"},
      {{"volume", "create", "v", "--pool", "slow:1G", "--type", "cached"}, "a cached volume needs"},
      {{"volume", "cache", "c", "--drive", other, "--size", "1G", "--ssd-pool", "slow", "--ssd-size", "1G"},
       "pool 1 (slow) is a pool of hard disks; a cache is taken from a pool of SSDs"},
      {{"volume", "modify", "77", "--name", "x"}, "no volume has the number 77"},
      {{"volume", "delete", "77"}, "no volume has the number 77"},
  };
  EXPECT_EQ(
      findIn(Json::parse(voltvkctl({"drive", "list", "-o", "json"})), "number", std::stoi(m_hardDisk))
          .at("obstacle"),
      "belongs to pool 1 (slow)")
      << "as the first hint says";
  const Json before = answer({"tree"});
  for (const auto& [words, hint] : cases) {
    SCOPED_TRACE(hint);
    EXPECT_THAT(hintOf(words), HasSubstr(hint));
  }
  EXPECT_EQ(answer({"tree"}), before);
}

TEST_F(TvpcimStorage, WhatIsNotFreeAndWhatIsInTroubleCanBeSeen) {
  const std::filesystem::path machine = directory().path() / "machine";
  std::filesystem::copy(
      TVP_SOURCE_DIR "/tests/docs/machine", machine, std::filesystem::copy_options::recursive);
  const auto shown = [&](const Words& words, unsigned short columns = 80) {
    return command("tvpcim", words).with("VOLTVK_HOST_ROOT", machine.string()).terminal(columns).run().out;
  };
  shown({"pool", "create", "slow", "--drives", "/dev/sdb", "--size", "1GiB"});
  shown({"volume", "create", "data", "--pool", "slow:1GiB"});
  std::filesystem::remove_all(machine / "sys/block/sdb");
  const std::string drives = shown({"drives"});
  for (const char* text :
       {"yes", "no: boots this machine", "no: belongs to a pool", " hidden, --wide shows them"}) {
    EXPECT_THAT(drives, HasSubstr(text));
  }
  EXPECT_THAT(
      shown({"tree"}),
      AllOf(
          HasSubstr("\033[33mvolume 1 data (Tiered, Degraded)"), HasSubstr(" slow (Hard Disk, Degraded)"),
          HasSubstr("\033[31m  └─ drive "), HasSubstr("/dev/sdb (Hard Disk, Missing)")));
  EXPECT_THAT(shown({"pools"}, 45), HasSubstr("NAME  TIER       CAPACITY  USED%  STATUS\033[0m"));
}

TEST_F(TvpcimStorage, TheIdentityHasItsListsInRowsWithoutTheirEndMarks) {
  const std::string identity = tvpcim({"identity"}).out;
  const std::string indent(35, ' ');
  EXPECT_THAT(
      identity, HasSubstr(
                    "\nFeatures                           TVP_FEATURE_CACHE: yes\n" + indent +
                    "TVP_FEATURE_TIER: yes\n"));
  EXPECT_THAT(
      identity, HasSubstr("TVP_CHUNKSZ_1MB: yes, volumes up to 4 PiB\n" + indent + "TVP_CHUNKSZ_4MB: yes"));
  EXPECT_THAT(identity, testing::Not(HasSubstr("MaxIndex")));
}

TEST_F(TvpcimStorage, ANumberIsAnIdentifierBeforeItIsAName) {
  answer({"pool", "create", "2", "--drives", m_hardDisk, "--size", "1GiB"});
  answer({"pool", "create", "1", "--drives", m_ssd, "--size", "2GiB"});
  answer({"pool", "create", "77", "--drives", addDrive("ssd", "10GiB"), "--size", "3GiB"});
  EXPECT_EQ(answer({"pool", "modify", "1", "--description", "first"}).at("VirtualPoolId"), 1);
  EXPECT_EQ(findIn(answer({"pools"}), "Description", "first").at("Name"), "2");
  EXPECT_EQ(answer({"pool", "delete", "77"}).at("VirtualPoolId"), 3) << "no pool has that identifier";
}

TEST_F(TvpcimStorage, AMissingDriverIsAFailureOfTheStorageVerbsAndANoteOfTheCimVerbs) {
  const auto failsEverywhere = [&](const char* why) {
    for (const Words& words : std::vector<Words>{
             {"drives"},
             {"pools", "-o", "json"},
             {"volumes"},
             {"identity"},
             {"tree", "-o", "mof"},
             {"pool", "members", "1"},
             {"volume", "stats", "data"}}) {
      const CommandResult result = tvpcim(words);
      EXPECT_EQ(result.exitStatus, 1) << why << words[0];
      EXPECT_EQ(result.out, "") << why << words[0];
      EXPECT_THAT(
          result.err, EndsWith(": no storage driver answers\ntvpcim: hint: 'voltvkctl status' shows why\n"));
    }
    const CommandResult cim = tvpcim({"ei", "TVP_LogicalDevice", "-o", "json"});
    EXPECT_EQ(cim.exitStatus, 0) << why;
    EXPECT_EQ(cim.out, "[]\n") << why;
    EXPECT_EQ(cim.err, "tvpcim: note: no storage driver answers; 'voltvkctl status' shows why\n") << why;
  };
  std::filesystem::rename(directory().file("state.db"), directory().file("kept.db"));
  directory().write("state.db", std::string(200, 'x'));
  failsEverywhere("unreadable");
  std::filesystem::rename(directory().file("kept.db"), directory().file("state.db"));
  voltvkctl({"fault", "set", "driver-absent"});
  failsEverywhere("absent");
  EXPECT_THAT(hintOf({"pool", "delete", "1"}), HasSubstr("the driver is switched off by an injected fault"));
  voltvkctl({"fault", "clear"});
  voltvkctl({"fault", "set", "adapter-absent"});
  EXPECT_THAT(hintOf({"pool", "delete", "1"}), HasSubstr("the storage library has no adapter"));
}

TEST_F(TvpcimStorage, SuccessWithoutEffectIsAFailure) {
  // An exception inside the storage library reaches a client as success.
  voltvkctl({"fault", "set", "throw", "createVirtualPool"});
  const CommandResult result = tvpcim({"pool", "create", "gone", "--drives", m_ssd, "--size", "1GiB"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("the provider reported success, but the change did not take effect"));
}

}  // namespace
}  // namespace tvp::test
