// SPDX-License-Identifier: Apache-2.0
// The command voltvkctl.
#include "engine/ctl/VoltvkctlFixture.h"

#include <regex>

using namespace tvp::test;

namespace {

const std::regex ISO_TIME("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ");

TEST_F(VoltvkctlTest, WrongUsageAndFailuresAreExplainedInOneLine) {
  struct Case {
    int status;
    std::vector<std::string> arguments;
    const char* message;
  };
  const std::vector<Case> cases = {
      {2, {}, "--help"},
      {2, {"frobnicate"}, "frobnicate"},
      {2, {"drive", "frobnicate"}, "frobnicate"},
      {2, {"status", "-o", "xml"}, "xml"},
      {2, {"drive", "add", "--type", "hdd"}, "--size is required"},
      {2, {"drive", "add", "--type", "tape", "--size", "1G"}, "tape"},
      {2, {"drive", "add", "--type", "hdd", "--size", "1Q"}, "'1Q' cannot be read"},
      {1, {"drive", "add", "--type", "hdd", "--size", "512"}, "1 MiB"},
      {1, {"drive", "add", "--type", "hdd", "--size", "1G", "--serial", "same"}, "another"},
      {1, {"drive", "add", "--type", "hdd", "--size", "1G", "--model", "a\nb"}, "printable"},
      {2, {"drive", "remove", "256"}, "256"},
      {1, {"drive", "remove", "255"}, "no drive 255"},
      {1, {"drive", "remove", "0"}, "pool gold"},
      {1, {"drive", "remove", "99"}, "no drive 99"},
      {2, {"fault", "set", "explode"}, "explode"},
      {2, {"fault", "set", "fail", "nothing"}, "createVirtualPool"},
      {2, {"fault", "set", "slow", "getEvents", "--milliseconds", "0"}, "milliseconds"},
      {2, {"fault", "clear", "nothing"}, "driver-absent"},
      {2, {"io", "gold"}, "--reads"},
      {2, {"io", "gold", "--reads", "1", "--random", "--sequential"}, "excludes"},
      {2, {"io", "gold", "--reads", "1000001"}, "1000001"},
      {1, {"heat", "nowhere"}, "no volume 'nowhere'"},
      {2, {"heat", "gold", "--svg", "-", "-o", "json"}, "--svg the name of a file"},
      {1, {"io", "nowhere\x1b[2J", "--reads", "1"}, "no volume 'nowhere\\x1B[2J'"},
  };
  addDrive(TVK_DEVICE_HDD, 100 * MIB);
  createPool(poolSpec("gold", {0}, 100 * MIB));
  text({"drive", "add", "--type", "hdd", "--size", "1G", "--serial", "same"});
  for (const Case& one : cases) {
    const CommandResult result = ctl(one.arguments);
    EXPECT_EQ(result.exitStatus, one.status) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("voltvkctl: ", 0), 0U) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(one.message), std::string::npos) << result.err;
  }
}

TEST_F(VoltvkctlTest, OutputThatCannotBeWrittenIsAFailure) {
  for (const std::string words : {"--help", "status", "drive list"}) {
    const CommandResult full =
        Command({"/bin/sh", "-c", "exec " TVP_BINARY_DIR "/bin/voltvkctl " + words + " > /dev/full"}).run();
    EXPECT_EQ(full.exitStatus, 1) << words;
    EXPECT_NE(full.err.find("could not be written"), std::string::npos) << full.err;
  }
}

TEST_F(VoltvkctlTest, DrivesAreAddedListedAndRemovedWithTheirEvents) {
  EXPECT_EQ(text({"drive", "list"}), "No drives.\n");
  EXPECT_EQ(json({"drive", "list"}), Json::array());
  EXPECT_EQ(text({"drive", "add", "--type", "hdd", "--size", "100GiB"}), "0\n");
  EXPECT_EQ(text({"drive", "add", "--type", "ssd", "--size", "1536M", "--model", "Fast \xC3\xA9"}), "1\n");
  const Json drives = json({"drive", "list"});
  ASSERT_EQ(drives.size(), 2U);
  EXPECT_EQ(drives[0]["sectors"], 209715200);
  EXPECT_EQ(drives[0]["type"], "hdd");
  EXPECT_EQ(drives[1]["size"], "1.5 GiB");
  EXPECT_EQ(drives[1]["free"], true);
  EXPECT_EQ(drives[1]["obstacle"], nullptr);
  EXPECT_EQ(drives[1]["model"], "Fast \xC3\xA9");
  EXPECT_EQ(json({"drive", "remove", "0"})["number"], 0);
  EXPECT_EQ(json({"drive", "list"}).size(), 1U);
  EXPECT_EQ(text({"drive", "add", "--type", "hdd", "--size", "8T"}), "2\n") << "numbers are not given again";
  const Json events = json({"events", "--count", "2"});
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0]["description"], "Drive [/dev/tvk0] was removed");
  EXPECT_EQ(events[1]["id"], 4);
  EXPECT_EQ(events[1]["code"], 0x601);
  EXPECT_EQ(events[1]["hex"], "601");
  EXPECT_TRUE(std::regex_match(events[1]["time"].get<std::string>(), ISO_TIME));
}

TEST_F(VoltvkctlTest, StatusShowsWhatIsWrongWithDrives) {
  createPool(poolSpec("pool", {addDrive(TVK_DEVICE_HDD, 10 * MIB)}, 10 * MIB));
  EXPECT_EQ(text({"status"}).find("trouble"), std::string::npos);
  execute("UPDATE drive SET present = 0");
  EXPECT_NE(text({"status"}).find("trouble:  drive 0 (/dev/tvk0) is missing\n"), std::string::npos);
}

TEST_F(VoltvkctlTest, StatusSaysWhyThereIsNoDriver) {
  Json status = json({"status"});
  EXPECT_EQ(status["driver"], "available");
  EXPECT_EQ(status["policy"], "running");
  EXPECT_EQ(status["state"], m_directory.file("state.db"));
  text({"fault", "set", "driver-absent"});
  const auto failure = [&] {
    const CommandResult result = ctl({"status", "-o", "json"});
    EXPECT_EQ(result.exitStatus, 1) << "a failure is never 0";
    EXPECT_EQ(result.err, "voltvkctl: the storage driver is not available; the status shows the reason\n");
    return Json::parse(result.out);
  };
  EXPECT_NE(failure()["reason"].get<std::string>().find("fault clear"), std::string::npos);
  m_lib.reset();
  m_directory.write(
      "state.db", "this is not a database, whatever its name says: it is a text of some length. "
                  "A header has a hundred bytes.");
  status = failure();
  EXPECT_EQ(status["driver"], "not available");
  EXPECT_NE(status["reason"].get<std::string>().find("not a database"), std::string::npos);
  EXPECT_EQ(ctl({"drive", "list"}).exitStatus, 1);
}

TEST_F(VoltvkctlTest, StatusShowsTheLastRefusalOfAnyProcess) {
  EXPECT_EQ(json({"status"})["refusal"], nullptr);
  EXPECT_EQ(text({"status"}).find("refusal"), std::string::npos);
  EXPECT_EQ(adapter().deleteVirtualVolume(9).getReturn(), TVK_NO_SUCH_VOLUME);
  Json refusal = json({"status"})["refusal"];
  EXPECT_TRUE(std::regex_match(refusal["time"].get<std::string>(), ISO_TIME));
  refusal.erase("time");
  EXPECT_EQ(
      refusal, (Json{
                   {"operation", "deleteVirtualVolume"},
                   {"status", 50},
                   {"text", Ret(TVK_NO_SUCH_VOLUME).getText()},
                   {"detail", "no volume has the number 9"}}));
  EXPECT_NE(
      text({"status"})
          .find(" deleteVirtualVolume: There is no such volume (50): no volume has the number 9\n"),
      std::string::npos);
  text({"fault", "set", "throw", "getIdentity"});
  TvkAdapterIdentity identity{};
  EXPECT_THROW(adapter().getIdentity(identity), std::runtime_error);
  m_lib.reset();
  refusal = json({"status"})["refusal"];
  EXPECT_EQ(refusal["operation"], "getIdentity") << "the last one";
  EXPECT_EQ(refusal["status"], nullptr);
  EXPECT_EQ(refusal["detail"], "injected fault in getIdentity");
}

TEST_F(VoltvkctlTest, FaultsReachOtherProcesses) {
  text({"fault", "set", "fail", "createVirtualPool", "--status", "35"});
  text({"fault", "set", "throw", "getIdentity"});
  text({"fault", "set", "slow", "getEvents", "--milliseconds", "7"});
  EXPECT_EQ(newEvents().front(), "801 A fault was injected: [fail createVirtualPool with status 35]");
  const Json faults = json({"fault", "list"});
  ASSERT_EQ(faults.size(), 3U);
  EXPECT_EQ(
      faults[0],
      (Json{
          {"kind", "fail"}, {"operation", "createVirtualPool"}, {"status", 35}, {"milliseconds", nullptr}}));
  EXPECT_EQ(faults[2]["milliseconds"], 7);
  VirtualPoolSpec spec;
  const Ret refused = adapter().createVirtualPool(spec);
  EXPECT_EQ(refused.getReturn(), 35U);
  EXPECT_STREQ(
      refused.getDetail(), "an injected fault has refused this call: fail createVirtualPool with status 35");
  EXPECT_EQ(json({"fault", "clear", "throw", "getIdentity"})["cleared"], 1);
  EXPECT_EQ(json({"fault", "clear"})["cleared"], 1);
  EXPECT_EQ(text({"fault", "list"}), "No faults.\n");
}

TEST_F(VoltvkctlTest, IoAndPolicyMoveTheHotArea) {
  addDrive(TVK_DEVICE_HDD, 1000 * MIB);
  addDrive(TVK_DEVICE_SSD, 1000 * MIB);
  const std::uint32_t hdd = createPool(poolSpec("hdd", {0}, 1000 * MIB));
  const std::uint32_t ssd = createPool(poolSpec("ssd", {1}, 1000 * MIB, TVK_TIER_SSD));
  const std::uint32_t id =
      createVolume(volumeSpec("data", TVK_VOLUME_CACHED, {{hdd, 900 * MIB}, {ssd, 100 * MIB}}));
  text({"io", "data", "--reads", "500", "--writes", "500", "--hot", "90", "--seed", "5"});
  EXPECT_EQ(text({"policy", "stop"}), "the policy engine is stopped\n");
  EXPECT_EQ(text({"policy", "status"}), "stopped\n");
  EXPECT_NE(text({"policy", "run"}).find("stopped"), std::string::npos);
  EXPECT_EQ(json({"policy", "run"})["moved"], Json::array());
  text({"policy", "start"});
  EXPECT_EQ(text({"policy", "status"}), "running\n");
  EXPECT_EQ(
      json({"policy", "run"})["moved"], (Json::array({{{"volume", "data"}, {"id", id}, {"chunks", 16}}})));
  const Json counted = json({"io", std::to_string(id), "--reads", "100", "--sequential", "--hot", "100"});
  EXPECT_EQ(counted["totalSsdReads"], 100);
  EXPECT_EQ(counted["totalReads"], 600);
}

}  // namespace
