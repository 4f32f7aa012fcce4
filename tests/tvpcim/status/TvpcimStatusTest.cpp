// SPDX-License-Identifier: Apache-2.0
// 'tvpcim status' tells a monitor and an administrator the truth, and what it advises helps.
#include "support/Lines.h"
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <sstream>

namespace tvp::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/** On a recorded machine with an SSD, a drive that boots it and two hard disks, one of which is free. */
class TvpcimStatus : public TvpcimTest {
protected:
  void SetUp() override {
    fs::copy(TVP_SOURCE_DIR "/tests/docs/machine", m_machine, fs::copy_options::recursive);
    run("tvpcim pool create slow --drives /dev/sdb --size 1GiB");
    run("tvpcim pool create fast --drives /dev/nvme0n1 --size 1GiB");
    run("tvpcim volume create data --pool slow:100MiB --pool fast:8MiB");
  }

  Command prepared(const std::string& line) const {
    std::istringstream stream(line);
    std::string program;
    stream >> program;
    Words words{std::istream_iterator<std::string>(stream), {}};
    Command result = command(program, words);
    result.with("VOLTVK_HOST_ROOT", m_machine.string());
    return result;
  }
  /** Runs a command, which must succeed. */
  void run(const std::string& line) const {
    const CommandResult result = prepared(line).run();
    EXPECT_EQ(result.exitStatus, 0) << line << ": " << result.err;
  }
  /** The one finding that there must be. */
  Json finding(int exitStatus) const {
    const CommandResult result = prepared("tvpcim status -x -o json").run();
    EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
    EXPECT_EQ(result.err, "");
    const Json found = Json::parse(result.out).at("Findings");
    EXPECT_EQ(found.size(), 1U) << found;
    return found.empty() ? Json() : found.at(0);
  }

  /** A server that listens. */
  RunningCommand served(const std::string& options) const {
    RunningCommand server = prepared("tvpcim serve --listen 127.0.0.1:0 --auth none" + options).start();
    EXPECT_TRUE(server.waitFor("Listening on ")) << server.soFar().err;
    EXPECT_TRUE(server.waitFor("\n"));
    return server;
  }
  static std::string urlOf(const RunningCommand& server) {
    const std::string& said = server.soFar().out;
    const std::size_t start = said.find("http://");
    return said.substr(start, said.find_first_of(" \n", start) - start);
  }

  void unplug(const std::string& drive) const { fs::remove_all(m_machine / "sys/block" / drive); }

  const fs::path m_machine = directory().path() / "machine";
};

TEST_F(TvpcimStatus, NamesEachTroubleAndItsRemedyMendsIt) {
  const CommandResult well = prepared("tvpcim status -x").run();
  EXPECT_EQ(well.out, "all is well: 4 drives, 2 pools, 1 volume\n") << well.err;
  EXPECT_EQ(well.exitStatus, 0);
  const struct {
    std::function<void()> cause;
    int exitStatus;
    const char* object;
    const char* kind;
    const char* reason;
  } cases[] = {
      {[&] { run("voltvkctl policy stop"); }, 3, "policy engine", "policy", "it is stopped"},
      {[&] {
         run("tvpcim volume create filler --pool fast:max");
         run("voltvkctl io data --reads 100 --hot 100");
       },
       3, "volume 1 (data)", "tier", " chunks used at least 4 times lately, and room for 8"},
      {[&] {
         run("tvpcim volume delete filler");
         run("voltvkctl io data --reads 1000 --hot 100");
       },
       3, "volume 1 (data)", "tier",
       "its SSD tier is full: 16 chunks used at least 8 times lately, and room for 8"},
      {[&] { run("voltvkctl fault set driver-absent"); }, 4, "storage driver", "driver",
       "the driver is switched off by an injected fault"},
      {[&] { run("voltvkctl fault set adapter-absent"); }, 4, "storage driver", "driver",
       "the adapter is switched off by an injected fault"},
      {[&] { run("voltvkctl fault set slow getEvents --milliseconds 1"); }, 3, "faults", "faults",
       "1 injected fault set: slow getEvents by 1 ms"},
      {[&] { unplug("sdb"); }, 3, "pool 1 (slow)", "pool",
       "drive 2 (/dev/sdb) is missing, which degrades volume 1 (data)"},
  };
  for (const auto& [cause, exitStatus, object, kind, reason] : cases) {
    cause();
    const Json found = finding(exitStatus);
    EXPECT_EQ(found.at("Object"), object);
    EXPECT_EQ(found.at("Kind"), kind);
    EXPECT_THAT(found.at("Cause").get<std::string>(), HasSubstr(reason));
    const CommandResult shown = prepared("tvpcim status -x").run();
    EXPECT_EQ(shown.exitStatus, exitStatus);
    const std::string remedy = found.at("Remedy");
    EXPECT_THAT(
        shown.out, AllOf(HasSubstr(object), HasSubstr(reason), HasSubstr("\n  remedy: " + remedy + "\n")));
    const std::size_t start = remedy.find('`') + 1;
    run(remedy.substr(start, remedy.find('`', start) - start));
    const CommandResult mended = prepared("tvpcim status -x").run();
    EXPECT_EQ(mended.exitStatus, 0) << remedy;
    EXPECT_THAT(mended.out, HasSubstr("all is well: ")) << remedy;
  }
}

TEST_F(TvpcimStatus, IsOneScreenOfAnyWidthAndCompleteForPrograms) {
  run("voltvkctl policy stop");
  const Json all = Json::parse(prepared("tvpcim status -o json").run().out);
  const Json expected =
      Json::parse(R"({"Health": "degraded", "Drives": 4, "MissingDrives": 0, "FreeDrives": 1,
    "Pools": 2, "DegradedPools": 0, "Volumes": 1, "DegradedVolumes": 0, "VolumeSizeInSectors": 221184,
    "SSDTier": {"CapacityInSectors": 2097152, "UsedInSectors": 16384},
    "HardDiskTier": {"CapacityInSectors": 2097152, "UsedInSectors": 204800},
    "PolicyEngine": "Stopped", "Server": null, "Subscriptions": 0})");
  for (const auto& [name, value] : expected.items()) {
    EXPECT_EQ(all.at(name), value) << name;
  }
  EXPECT_EQ(all.at("Findings").size(), 1U);
  EXPECT_THAT(all.at("Events").back().at("Description").get<std::string>(), HasSubstr("[data] was created"));
  for (const char* line : {"tvpcim status", "tvpcim status -x"}) {
    const std::string whole = prepared(line).run().out;
    EXPECT_THAT(
        whole, HasSubstr(
                   std::string(line) == "tvpcim status" ? "SSD tier        8 MiB of 1 GiB used, 1%\n"
                                                        : "`voltvkctl policy start`"));
    const CommandResult narrow = prepared(line).terminal(20).with("LC_ALL", "C.UTF-8").run();
    EXPECT_EQ(narrow.exitStatus, 3);
    const std::vector<std::string> lines = linesOf(narrow.out);
    EXPECT_LE(lines.size(), 20U) << narrow.out;
    for (const std::string& each : lines) {
      EXPECT_LE(each.size(), 20U + 1 + 2) << each;  // \r, and an ellipsis of three bytes
    }
  }
}

TEST_F(TvpcimStatus, SeesTheServerOfThisMachineAndAsksOthers) {
  const RunningCommand server = served("");
  const std::string url = urlOf(server);
  run("tvpcim --url " + url + " subscriptions add --to http://127.0.0.1:1");
  const Json local = Json::parse(prepared("tvpcim status -o json").run().out);
  EXPECT_EQ(local.at("Server"), "process " + std::to_string(server.id()));
  EXPECT_EQ(local.at("Subscriptions"), 1);

  unplug("sdb");
  run("voltvkctl policy stop");
  const CommandResult asked = prepared("tvpcim --url " + url + " status -o json").run();
  EXPECT_EQ(asked.exitStatus, 3) << asked.err;
  const Json remote = Json::parse(asked.out);
  EXPECT_EQ(remote.at("Server"), url);
  EXPECT_EQ(remote.at("Subscriptions"), 1);
  EXPECT_EQ(remote.at("Findings").at(0).at("Cause"), "drive 2 (/dev/sdb) is missing");
  EXPECT_EQ(remote.at("Findings").at(1).at("Object"), "volume 1 (data)");
  EXPECT_EQ(remote.at("Findings").at(2).at("Kind"), "policy");
  const RunningCommand open = served(" --user nobody --subscriptions " + directory().file("nobody.json"));
  const CommandResult seen = prepared("tvpcim --url " + urlOf(open) + " status -x").run();
  EXPECT_EQ(seen.exitStatus, 3) << seen.err;
  EXPECT_THAT(seen.out, HasSubstr("shown to administrators only"));
  const CommandResult none = prepared("tvpcim --url http://127.0.0.1:1 status").run();
  EXPECT_EQ(none.exitStatus, 1) << "not known is not failed";
  EXPECT_EQ(prepared("tvpcim status --explain now").run().exitStatus, 2);
}

TEST_F(TvpcimStatus, WithoutTheLibrarysCommandItSaysWhatClientsSee) {
  const auto status = [&](const std::string& script, const Words& options) {
    Words words = {"status"};
    words.insert(words.end(), options.begin(), options.end());
    return besideScript(script, words).with("VOLTVK_HOST_ROOT", m_machine.string()).run();
  };
  const struct {
    const char* script;
    const char* reason;
  } cases[] = {
      {"", "voltvkctl cannot be asked"},
      {"echo '{\"findings\": [{\"object\": 1}]}'", "of another version"},
      {"echo '{\"findings\": 1}'", "of another version"},
      {"echo '[{\"id\": 1}]'", "of another version"},
  };
  for (const auto& [script, reason] : cases) {
    const CommandResult well = status(script, {});
    EXPECT_EQ(well.exitStatus, 0) << script << well.err;
    EXPECT_THAT(
        well.err, AllOf(
                      HasSubstr("note: the storage library cannot be asked, so reasons may be missing"),
                      HasSubstr(reason)));
    EXPECT_THAT(well.out, Not(HasSubstr("Last events"))) << script;
  }
  run("voltvkctl policy stop");
  EXPECT_EQ(status("", {"-x"}).exitStatus, 3);
  run("voltvkctl fault set driver-absent");
  const CommandResult failed = status("", {"-x"});
  EXPECT_EQ(failed.exitStatus, 4);
  EXPECT_THAT(failed.out, AllOf(HasSubstr("storage driver failed"), Not(HasSubstr("policy"))));
}

TEST_F(TvpcimStatus, WhatCannotBeAskedIsUnknown) {
  // Who has no home directory has no server there.
  Words words = {
      "/usr/bin/setpriv", "--reuid=65534", "--clear-groups", std::string(TVP_BINARY_DIR) + "/bin/tvpcim",
      "status"};
  words.erase(words.begin(), words.begin() + (::geteuid() == 0 ? 0 : 3));
  const CommandResult homeless = Command(words)
                                     .with("VOLTVK_STATE", "/nonexistent/state.db")
                                     .without("HOME")
                                     .without("XDG_STATE_HOME")
                                     .run();
  EXPECT_THAT(homeless.err, Not(HasSubstr("home directory")));

  run("voltvkctl fault set driver-absent");
  const Json all = Json::parse(prepared("tvpcim status -o json").run().out);
  for (const char* name :
       {"Drives", "FreeDrives", "Pools", "VolumeSizeInSectors", "SSDTier", "PolicyEngine"}) {
    EXPECT_TRUE(all.at(name).is_null()) << name;
  }
  const std::string screen = prepared("tvpcim status").run().out;
  for (const char* title : {"Drives", "Pools", "Volumes", "SSD tier", "Hard disk tier", "Policy engine"}) {
    EXPECT_THAT(screen, testing::ContainsRegex(std::string(title) + " +unknown\n"));
  }
}

TEST_F(TvpcimStatus, IsRightWhileTheStateChanges) {
  RunningCommand changes = Command({"/bin/sh", "-c",
                                    "until test -e \"$0\"; do " TVP_BINARY_DIR
                                    "/bin/tvpcim pool create more --drives 3 --size 1GiB; " TVP_BINARY_DIR
                                    "/bin/tvpcim pool delete more; done >/dev/null",
                                    directory().file("stop")})
                               .with("VOLTVK_STATE", directory().file("state.db"))
                               .with("VOLTVK_HOST_ROOT", m_machine.string())
                               .start();
  for (int i = 0; i < 5; ++i) {
    const CommandResult result = prepared("tvpcim status -o json").run();
    EXPECT_EQ(result.exitStatus, 0) << result.err << result.out;
    const std::uint64_t pools = Json::parse(result.out).at("Pools");
    EXPECT_TRUE(pools == 2 || pools == 3) << pools;
  }
  directory().write("stop", "");
  changes.finish();
}

}  // namespace
}  // namespace tvp::test
