// SPDX-License-Identifier: Apache-2.0
// The command voltvkctl.
#include "engine/ctl/VoltvkctlFixture.h"

#include <filesystem>
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

TEST_F(VoltvkctlTest, PoolsAndVolumesGrow) {
  for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_SSD}) {
    addDrive(type, 1000 * MIB);
  }
  createPool(poolSpec("slow", {0}, 1000 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 900 * MIB}}));
  EXPECT_EQ(
      text({"pool", "add-drive", "slow", "/dev/tvk1"}),
      "drive 1 (/dev/tvk1) added to pool 1 (slow), which has 1.95 GiB (4096000 sectors) now\n");
  EXPECT_EQ(json({"pool", "replace-drive", "1", "0", "2"})["replacement"], 2);
  EXPECT_EQ(
      text({"volume", "grow", "data", "1000MiB"}),
      "volume 1 (data): made larger, from 900 MiB to 1000 MiB\n");
  EXPECT_EQ(json({"volume", "grow", "1", "50%"})["sectors"], 1500 * MIB);
  EXPECT_EQ(json({"volume", "grow", "data", "max", "--pool", "slow"})["sectors"], 2000 * MIB);
  const std::vector<std::pair<std::vector<std::string>, const char*>> refused = {
      {{"volume", "grow", "data", "1G"}, "more than the 1 GiB asked for; a volume cannot be made smaller"},
      {{"volume", "grow", "data", "101%"}, "'101%' cannot be read"},
      {{"volume", "grow", "data", "max"}, "add a drive to it"},
      {{"pool", "add-drive", "slow", "3"}, "is an SSD"},
      {{"pool", "add-drive", "slow", "9"}, "no drive '9'"},
      {{"pool", "replace-drive", "gold", "2", "1"}, "no pool 'gold'"},
  };
  execute("UPDATE drive SET present = 0 WHERE number = 1");
  EXPECT_NE(ctl({"pool", "add-drive", "slow", "0"}).err.find("slow) is degraded"), std::string::npos);
  EXPECT_EQ(json({"pool", "replace-drive", "slow", "1", "0"})["replacement"], 0) << "nothing is stored on it";
  for (const auto& [arguments, message] : refused) {
    const CommandResult result = ctl(arguments);
    EXPECT_NE(result.exitStatus, 0);
    EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
  }
}

/**
 * What there is in a directory, but for what SQLite shares with others; by another process, since closing a
 * file here would give up the locks that this one has on it.
 */
std::string contentsOf(const std::string& directory) {
  const char* const script = "cd \"$1\" && ls -R && for file in $(ls | grep -v shm); do stat -c '%n %a %y' "
                             "$file; cksum <$file; done";
  return Command({"/bin/sh", "-c", script, "sh", directory}).run().out;
}

TEST_F(VoltvkctlTest, DryRunsShowWhatWouldBeAndChangeNothing) {
  addDrive(TVK_DEVICE_HDD, 1000 * MIB);
  addDrive(TVK_DEVICE_HDD, 1000 * MIB);
  createPool(poolSpec("slow", {0}, 1000 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 900 * MIB}}));
  const std::string added =
      "drive 1 (/dev/tvk1) added to pool 1 (slow), which has 1.95 GiB (4096000 sectors) now\n";
  const TemporaryDirectory temporary;
  const auto dryRun = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {TVP_BINARY_DIR "/bin/voltvkctl", "-n"});
    return Command(arguments).with("TMPDIR", temporary.path()).run();
  };
  // In use by this process, then by nobody, then left behind by one that was killed, then not there.
  for (const std::string users : {"one", "none", "killed", "no state"}) {
    SCOPED_TRACE(users);
    if (users != "one") {
      m_lib.reset();
    }
    if (users == "killed") {
      m_directory.write("state.db-wal", "x");
    }
    if (users == "no state") {
      Command({"/bin/sh", "-c", "rm $VOLTVK_STATE*"}).run();
    }
    const std::string before = contentsOf(m_directory.path());
    if (users == "no state") {
      EXPECT_EQ(
          dryRun({"drive", "add", "--type", "ssd", "--size", "1G"}).out,
          "dry run, nothing was changed; otherwise:\n0\n");
    } else {
      EXPECT_EQ(
          dryRun({"pool", "add-drive", "slow", "1"}).out,
          "dry run, nothing was changed; otherwise:\n" + added);
      EXPECT_EQ(dryRun({"drive", "remove", "1"}).exitStatus, 0);
      EXPECT_EQ(dryRun({"policy", "stop"}).exitStatus, 0);
      const CommandResult refused = dryRun({"drive", "remove", "0"});
      EXPECT_EQ(refused.exitStatus, 1);
      EXPECT_NE(refused.err.find("pool slow"), std::string::npos) << refused.err;
    }
    EXPECT_EQ(contentsOf(m_directory.path()), before);
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
  }
}

TEST_F(VoltvkctlTest, ADryRunShowsTheStepsOfRealVolumesWithoutTheVolumeManager) {
  addDrive(TVK_DEVICE_HDD, 1000 * MIB);
  createPool(poolSpec("slow", {0}, 1000 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 900 * MIB}}));
  execute("UPDATE backing SET kind = 2");
  const std::string called = m_directory.file("called");
  m_directory.write("lvm", "#!/bin/sh\necho \"$@\" >>" + called + "\n");
  std::filesystem::permissions(m_directory.file("lvm"), std::filesystem::perms::owner_all);
  const CommandResult result = Command({std::string(TVP_BINARY_DIR) + "/bin/voltvkctl", "-n", "volume",
                                        "grow", "data", "max", "-o", "json"})
                                   .with("VOLTVK_LVM", m_directory.file("lvm"))
                                   .run();
  const Json document = Json::parse(result.out);
  EXPECT_EQ(document["dryRun"], true);
  EXPECT_EQ(document["steps"], Json::array({"extend volume 1 (data) to 1000 MiB of pool 1 (slow)"}));
  EXPECT_FALSE(std::filesystem::exists(called));
  EXPECT_FALSE(std::filesystem::exists(m_directory.file("state.db-changes")));
  EXPECT_EQ(Storage::rows("SELECT hdd_chunks FROM volume"), "900|\n");
  execute("UPDATE backing SET kind = 1");
}

TEST_F(VoltvkctlTest, AnotherBackingIsChosenWhenTheLastChangeIsSettled) {
  execute("INSERT INTO intent(step, object, drives) VALUES(1, 1, '0 ')");
  EXPECT_EQ(json({"status"})["findings"][0]["kind"], "changes");
  text({"backing", "books"});
  EXPECT_EQ(json({"status"})["findings"], Json::array());
}

TEST_F(VoltvkctlTest, CompletionsNameWhatFits) {
  for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_SSD}) {
    addDrive(type, 100 * MIB);
  }
  createPool(poolSpec("slow", {0, 2}, 100 * MIB));
  createPool(poolSpec("fast", {3}, 100 * MIB, TVK_TIER_SSD));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 50 * MIB}}));
  const std::vector<std::pair<std::vector<std::string>, const char*>> cases = {
      {{"heat", ""}, "data\n"},
      {{"-o", "json", "volume", "grow", "d"}, "data\n"},
      {{"volume", "--output=json", "flush", "x"}, ""},
      {{"volume", "grow", "data", "max", "--pool", ""}, "slow\nfast\n"},
      {{"volume", "grow", "--pool", "f"}, "fast\n"},
      {{"volume", "grow", "--pool", "fast", ""}, "data\n"},
      {{"heat", "-o", ""}, ""},
      {{"-n", "drive", "remove", ""}, "0\n1\n2\n3\n"},
      {{"-n", "pool", "add-drive", "s"}, "slow\n"},
      {{"--dry-run", "pool", "add-drive", "slow", ""}, "1\n"},
      {{"pool", "replace-drive", ""}, "slow\nfast\n"},
      {{"pool", "replace-drive", "slow", ""}, "0\n2\n"},
      {{"pool", "replace-drive", "2", ""}, "3\n"},
      {{"pool", "replace-drive", "slow", "0", ""}, "1\n"},
  };
  for (std::pair<std::vector<std::string>, const char*> one : cases) {
    one.first.insert(one.first.begin(), "__complete");
    EXPECT_EQ(text(one.first), one.second) << testing::PrintToString(one.first);
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

TEST_F(VoltvkctlTest, DriveListShowsWhyADriveIsNotFreeOnAnyTerminal) {
  createPool(poolSpec("pool", {addDrive(TVK_DEVICE_HDD, 10 * MIB)}, 10 * MIB));
  const std::string shown =
      Command({TVP_BINARY_DIR "/bin/voltvkctl", "drive", "list"}).terminal(72).run().out;
  EXPECT_NE(shown.find("STATUS  FREE  WHY NOT"), std::string::npos) << shown;
  EXPECT_NE(shown.find("online  no    belongs to pool 1 (pool)"), std::string::npos) << shown;
  EXPECT_NE(shown.find("3 columns hidden, -o json shows them"), std::string::npos) << shown;
}

TEST_F(VoltvkctlTest, StatusShowsWhatIsWrongWithDrives) {
  addDrive(TVK_DEVICE_HDD, 10 * MIB);
  addDrive(TVK_DEVICE_HDD, 10 * MIB);
  createPool(poolSpec("pool", {0, 1}, 20 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 5 * MIB}}));
  EXPECT_EQ(text({"status"}).find("trouble"), std::string::npos);
  execute("UPDATE drive SET present = 0 WHERE number = 0");
  EXPECT_NE(text({"status"}).find("trouble:  drive 0 (/dev/tvk0) is missing\n"), std::string::npos);
  // With real drives, another one can take its place only if nothing is stored on it.
  const auto remedy = [&](const char* sql) {
    execute(sql);
    return json({"status"})["findings"][0]["remedy"].get<std::string>();
  };
  EXPECT_NE(
      remedy("UPDATE backing SET kind = 1").find("`voltvkctl pool replace-drive 1 0 DRIVE`"),
      std::string::npos);
  EXPECT_NE(remedy("UPDATE backing SET kind = 2").find("`voltvkctl check --repair`"), std::string::npos);
  EXPECT_NE(
      remedy("UPDATE drive SET present = 1 - number").find("`voltvkctl pool replace-drive 1 1 DRIVE`"),
      std::string::npos);
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
  EXPECT_EQ(failure()["findings"][0]["kind"], "driver");
  EXPECT_EQ(ctl({"status"}).out.find("findings"), std::string::npos) << "the reason is there already";
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
