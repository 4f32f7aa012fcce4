// SPDX-License-Identifier: Apache-2.0
// voltvkctl backup and restore: what comes back, what everybody else sees of it, and what is refused.
#include "engine/ctl/VoltvkctlFixture.h"
#include "support/Lines.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include <sys/stat.h>

using namespace tvp::test;
namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

class BackupCommandTest : public VoltvkctlTest {
protected:
  BackupCommandTest() {
    fs::create_directory(m_place);
    for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_SSD}) {
      addDrive(type, GIB);
    }
    createPool(poolSpec("slow", {0}, 500 * MIB));
    createPool(poolSpec("fast", {1}, 100 * MIB, TVK_TIER_SSD));
    createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 100 * MIB}, {2, 10 * MIB}}));
    text({"volume", "grow", "data", "120MiB"});
    text({"volume", "grow", "data", "125MiB", "--pool", "fast"});
    text({"io", "data", "--reads", "900", "--hot", "90"});
    text({"policy", "run"});
    text({"policy", "stop"});
  }

  /** All that a backup brings back. */
  static std::string configuration() {
    std::string all;
    for (const char* table :
         {"backing", "drive", "pool", "pool_member", "volume", "volume_extent", "laid_on_ssd", "chunk",
          "kernel_counter"}) {
      all += Storage::rows(std::string("SELECT * FROM ") + table);
    }
    return all + Storage::rows("SELECT value FROM setting WHERE name = 'policy_running'");
  }
  static std::string everything() {
    return configuration() + Storage::rows("SELECT * FROM event") + Storage::rows("SELECT * FROM intent") +
           Storage::rows("SELECT * FROM sqlite_sequence");
  }
  /** Changes a file as nobody should. */
  static void runSql(const std::string& file, const std::string& sql) {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(handle);
    sqlite3_close(handle);
  }

  const fs::path m_place = m_directory.path() / "backups";
  const std::string m_file = m_place / "state.backup";
};

TEST_F(BackupCommandTest, BringsEverythingBackForEverybody) {
  const std::string before = configuration();
  const Json made = json({"backup", m_file});
  EXPECT_EQ(made["product"], TVP_VERSION);
  EXPECT_EQ(made["backing"], "books");
  EXPECT_EQ(made["pools"].get<int>() + made["volumes"].get<int>(), 3);
  struct stat status {};
  ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  const std::string bytes = readFile(m_file);

  ASSERT_EQ(adapter().deleteVirtualVolume(1).getReturn(), TVK_OK);
  createVolume(volumeSpec("newer", TVK_VOLUME_TIERED, {{1, MIB}}));
  createPool(poolSpec("newer", {addDrive(TVK_DEVICE_HDD, GIB)}, MIB));
  text({"policy", "start"});
  text({"fault", "set", "slow", "getEvents", "--milliseconds", "1"});
  execute("INSERT INTO intent(step, object, drives) VALUES(5, 1, '')");
  EXPECT_THAT(ctl({"restore", m_file}).err, HasSubstr("a change of pools and volumes is not completed"));
  execute("DELETE FROM intent");
  const std::string changed = everything();
  newEvents();
  EXPECT_THAT(
      text({"restore", "-n", m_file}), testing::StartsWith("would restore what version " TVP_VERSION));
  ::setenv("VOLTVK_DRY_RUN", "1", 1);
  EXPECT_EQ(json({"restore", m_file})["restored"], false);
  EXPECT_EQ(ctl({"backup", m_file + "2"}).exitStatus, 2);
  ::unsetenv("VOLTVK_DRY_RUN");
  EXPECT_FALSE(fs::exists(m_file + "2"));
  EXPECT_EQ(everything(), changed);
  EXPECT_THAT(newEvents(), testing::IsEmpty());

  EXPECT_THAT(
      text({"restore", m_file}), testing::MatchesRegex("restored what version .* backed up at 20.*Z: 2 pools "
                                                       "and 1 volume, backing books\n"));
  EXPECT_EQ(configuration(), before);
  EXPECT_EQ(pools().size() + volumes().size(), 3U) << "in a process that had the state open all the time";
  EXPECT_THAT(
      newEvents(),
      testing::ElementsAre("901 The configuration was restored from a backup: [2] pools, [1] volumes"));
  EXPECT_EQ(json({"status"})["faults"], 1) << "not part of the configuration";
  EXPECT_EQ(addDrive(TVK_DEVICE_HDD, GIB), 3U) << "numbers given since are not given again";
  EXPECT_EQ(createPool(poolSpec("next", {3}, MIB)), 4U);
  EXPECT_EQ(readFile(m_file), bytes);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_place), {}), 1) << "nothing is left beside it";
}

TEST_F(BackupCommandTest, RestoresWhereThereIsNoState) {
  execute("INSERT INTO intent(step, object, drives) VALUES(5, 1, '')");
  text({"backup", m_file});
  execute("DELETE FROM intent");
  const std::string before = configuration();
  m_lib.reset();
  for (const auto& entry : fs::directory_iterator(m_directory.path())) {
    if (entry.path().filename().string().rfind("state.db", 0) == 0) {
      fs::remove(entry.path());
    }
  }
  const std::string state = m_directory.file("state.db");
  EXPECT_EQ(json({"restore", m_file, "--dry-run"})["restored"], false);
  EXPECT_FALSE(fs::exists(state)) << "nothing is made by a trial";
  EXPECT_EQ(json({"restore", m_file})["notes"], Json::array());
  EXPECT_EQ(configuration(), before);
  EXPECT_EQ(Storage::rows("SELECT * FROM intent"), "") << "of another day";
  EXPECT_EQ(Storage::rows("SELECT description FROM event WHERE id = 1"), "Drive [/dev/tvk0] was added|\n");

  // An earlier version's state, copied by other means, on a machine that lacks a drive of its own.
  fs::remove(m_file);
  runSql(
      m_file, readFile(TVP_SOURCE_DIR "/tests/engine/state/version-1.sql") +
                  "UPDATE drive SET virtual = 0, identity = 'serial:x' WHERE number = 0");
  EXPECT_THAT(
      text({"restore", m_file}),
      testing::MatchesRegex(
          "restored what is in a copy of a state \\(layout 1\\): 2 pools and 1 volume, backing "
          "books\ndrive 0 .* is missing\n"));
  m_lib = std::make_unique<TvkLib>();
  EXPECT_EQ(pools().size(), 2U);
}

TEST_F(BackupCommandTest, LeavesAStateOfAnEarlierVersionAsItIsInATrial) {
  text({"backup", m_file});
  m_lib.reset();
  const std::string old = m_place / "old.db";
  runSql(old, readFile(TVP_SOURCE_DIR "/tests/engine/state/version-1.sql"));
  const std::string bytes = readFile(old);
  ::setenv("VOLTVK_STATE", old.c_str(), 1);
  EXPECT_EQ(json({"restore", "-n", m_file})["restored"], false);
  EXPECT_EQ(readFile(old), bytes);
}

TEST_F(BackupCommandTest, LeavesDrivesThatWereAttachedSinceTheirNumbers) {
  text({"backup", m_file});
  addDrive(TVK_DEVICE_HDD, GIB);  // which is gone afterwards, but not its number
  fs::copy(TVP_SOURCE_DIR "/tests/docs/machine", m_directory.path() / "host", fs::copy_options::recursive);
  state()->scanDrives();
  const char* numbers = "SELECT number, name FROM drive WHERE virtual = 0";
  const std::string before = Storage::rows(numbers);
  EXPECT_THAT(before, testing::StartsWith("3|"));
  text({"restore", m_file});
  EXPECT_EQ(Storage::rows(numbers), before);
}

TEST_F(BackupCommandTest, RefusesWhatCannotBeRestoredAndChangesNothing) {
  text({"backup", m_file});
  const std::string state = m_directory.file("state.db");
  const auto alter = [](const std::string& sql) {
    return [sql](const std::string& file) { runSql(file, sql); };
  };
  const std::vector<std::pair<std::function<void(const std::string&)>, const char*>> cases = {
      {[](const auto& file) { fs::remove(file); }, "cannot be opened: No such file"},
      {[](const auto& file) { fs::remove(file), fs::create_symlink("state.backup", file); }, "symbolic link"},
      {[](const auto& file) { fs::remove(file), ::mkfifo(file.c_str(), 0600); }, "not a regular file"},
      {[](const auto& file) { fs::remove(file), fs::create_directory(file); }, "not a regular file"},
      {[](const auto& file) { ::chmod(file.c_str(), 0620); }, "can be written by its group; check"},
      {[](const auto& file) { EXPECT_EQ(::chown(file.c_str(), 4711, 0), 0); }, "belongs to user 4711"},
      {[](const auto& file) { std::ofstream(file) << "a text"; }, "is not a backup of a state; name"},
      {alter("PRAGMA application_id = 7"), "is not a backup of a state; name"},
      {alter("PRAGMA user_version = 99"), "newer version (layout 99); install"},
      {[](const auto& file) { fs::resize_file(file, 8192); }, "was cut short; use another"},
      {[](const auto& file) { std::ofstream(file + "-wal") << "pages"; }, "-wal beside it"},
      {[](const auto& file) {
         std::fstream(file, std::ios::in | std::ios::out).seekp(4200) << std::string(9000, 'x');
       },
       "is damaged ("},
      {alter("PRAGMA ignore_check_constraints = 1; UPDATE pool SET tier = 9"), "is damaged ("},
      {alter("UPDATE volume_extent SET chunks = chunks + 1"), "is damaged (volume 1 (data) has not as many"},
      {alter("DROP TABLE chunk"), "is damaged (no such table"},
      {alter("UPDATE backing SET kind = 2"), "of the backing lvm, volume group tvp, and there are 2 pools"},
      {[&](const auto& file) { fs::remove(file), fs::create_hard_link(state, file); },
       "belongs to the state"}};
  const std::string before = everything();
  for (const auto& [spoil, message] : cases) {
    const std::string file = m_place / "spoilt";
    fs::copy_file(m_file, file);
    spoil(file);
    for (const char* option : {"--dry-run", "--output=table"}) {
      const CommandResult result = ctl({"restore", file, option});
      EXPECT_EQ(result.exitStatus, 1) << message;
      EXPECT_THAT(result.err, HasSubstr(message));
      EXPECT_EQ(result.out, "");
    }
    fs::remove(file);
    fs::remove(file + "-wal");
  }
  ::chmod(m_place.c_str(), 0777);
  EXPECT_THAT(ctl({"restore", m_file}).err, HasSubstr("can be written by everybody"));
  EXPECT_EQ(everything(), before);
  ::chmod(m_place.c_str(), 0700);
  m_lib.reset();
  m_directory.write("state.db", std::string(200, 'x'));
  EXPECT_THAT(
      ctl({"restore", m_file}).err, HasSubstr("move it away together with the files beside it: " + state));
}

TEST_F(BackupCommandTest, ReplacesOnlyWhatItMayReplace) {
  const auto refusal = [&](const std::string& file, const std::string& option) {
    const CommandResult result = ctl({"backup", file, option});
    EXPECT_EQ(result.exitStatus, 1) << file;
    return result.err;
  };
  std::ofstream(m_file) << "kept";
  fs::create_symlink(m_file, m_place / "link");
  ASSERT_EQ(::mkfifo((m_place / "fifo").c_str(), 0600), 0);
  EXPECT_THAT(refusal(m_file, "--output=table"), HasSubstr("exists; replace it with --force"));
  for (const char* special : {"link", "fifo", "."}) {
    EXPECT_THAT(refusal(m_place / special, "--force"), HasSubstr("is not a regular file and is left alone"));
  }
  EXPECT_THAT(refusal(m_place / "nowhere/file", "--force"), HasSubstr("cannot be written (No such file"));
  for (const char* own : {"state.db", "state.db-wal", "state.db-changes"}) {
    EXPECT_THAT(refusal(m_directory.file(own), "--force"), HasSubstr("belongs to the state itself"));
  }
  ::chmod(m_place.c_str(), 0777);
  EXPECT_THAT(refusal(m_place / "other", "--force"), HasSubstr("can be written by everybody"));
  ::chmod(m_place.c_str(), 0700);
  EXPECT_EQ(readFile(m_file), "kept");
  text({"backup", "--force", m_file});
  EXPECT_EQ(readFile(m_file).rfind("SQLite", 0), 0U);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_place), {}), 3) << "nothing is left beside them";
  EXPECT_THAT(text({"backup", m_place / "a\033[2J"}), HasSubstr("/a\\x1B[2J: 2 pools")) << "for terminals";
  ::setenv("VOLTVK_STATE", m_directory.file("none.db").c_str(), 1);
  EXPECT_THAT(refusal(m_place / "other", "--force"), HasSubstr("there is no state"));
  EXPECT_FALSE(fs::exists(m_directory.file("none.db")));
}

TEST_F(BackupCommandTest, IsOfOneMomentWhileOthersChangeTheState) {
  std::atomic<bool> ends{false};
  std::thread others([&] {
    while (!ends) {
      const std::uint32_t id = createVolume(volumeSpec("brief", TVK_VOLUME_TIERED, {{1, MIB}, {2, MIB}}));
      adapter().deleteVirtualVolume(id);
    }
  });
  for (int i = 0; i < 5; ++i) {
    text({"backup", "--force", m_file});  // reads it again and checks that everything fits together
  }
  ends = true;
  others.join();
  EXPECT_EQ(json({"restore", m_file})["pools"], 2);
}

}  // namespace
