// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes of the state say, the library answers with a sentence and lives on.
#include "engine/EngineFixture.h"
#include "support/Lines.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <sqlite3.h>

#include <fstream>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;

namespace {

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string whole;
  for (const std::string_view part : parts) {
    whole += part;
  }
  return whole;
}

class DamageTest : public EngineTest {
protected:
  DamageTest() {
    for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD}) {
      addDrive(type, 50 * MIB);
    }
    const std::uint32_t hdd = createPool(poolSpec("hdd", {0}, 50 * MIB));
    const std::uint32_t ssd = createPool(poolSpec("ssd", {1}, 50 * MIB, TVK_TIER_SSD));
    createVolume(volumeSpec("tiered", TVK_VOLUME_TIERED, {{hdd, 10 * MIB}, {ssd, 10 * MIB}}));
    createVolume(volumeSpec("cached", TVK_VOLUME_CACHED, {{hdd, 10 * MIB}, {ssd, 10 * MIB}}));
    execute("INSERT INTO chunk VALUES(1, 3, 9, 0, 0), (2, 3, 9, 1, 1);"
            "INSERT INTO fault(kind, operation, status, milliseconds) VALUES(5, 'getIdentity', 0, 1)");
    EXPECT_EQ(adapter().deleteVirtualPool(77).getReturn(), TVK_NO_SUCH_POOL);
    m_lib.reset();
    m_sound = readFile(m_path);
  }

  /** Uses everything there is. @return what was said about damage; empty if nothing was */
  std::string useAll() {
    m_lib = std::make_unique<TvkLib>();
    std::string said = m_lib->getOpenError();
    const auto note = [&](const Ret& ret) { said += ret.getDetail(); };
    for (std::size_t i = 0; i < drives().size() + pools().size() + volumes().size(); ++i) {
      said.reserve(
          said.size() + chunksOf(FilterCollection(&adapter()).elementAt(static_cast<int>(i))).size());
    }
    d_ioctl_user_stat statistics{};
    TvkAdapterIdentity identity{};
    VolEventCollection events(0, 8, 0);
    VirtualPoolSpec pool = poolSpec("new", {2}, 10 * MIB);
    VirtualVolumeSpec volume = volumeSpec("new", TVK_VOLUME_TIERED, {{1, 5 * MIB}, {2, 5 * MIB}});
    note(adapter().createVirtualPool(pool));
    note(adapter().createVirtualVolume(volume));
    for (const std::uint32_t id : {1U, 2U}) {
      note(adapter().getVirtualVolumeStats(&statistics, id));
      note(adapter().flushVirtualVolume(id));
      note(adapter().modifyVirtualPool(id, poolSpec("other", {}, 0, 0)));
      note(adapter().deleteVirtualVolume(id));
    }
    note(adapter().getEvents(events));
    note(adapter().getIdentity(identity));
    said += playAll();
    return said;
  }
  std::string playAll() const {
    try {
      const auto volumes = state()->snapshot()->configuration().volumes;
      state()->change([&](voltvk::Connection& connection) {
        for (const voltvk::VolumeRecord& volume : volumes) {
          voltvk::IoReplay(connection, volume, {10, 10, false, 0, 1}).recordNext(connection);
          voltvk::PolicyEngine(connection).runRound(volume.id);
        }
        voltvk::EventJournal(connection).latest(100);
        voltvk::LastRefusal::read(connection);
      });
    } catch (const voltvk::Refusal& refusal) {
      return refusal.what();
    }
    return {};
  }

  /** Uses a damaged state in a process of its own. @return what it said, or how it died */
  std::string outcome() {
    const std::string answer = m_directory.file("answer");
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);
      try {
        std::ofstream(answer) << useAll();
      } catch (const std::exception& exception) {
        std::ofstream(answer) << "thrown: " << exception.what();
      }
      _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0 ? readFile(answer) : "died with " + std::to_string(status);
  }
  void expectSentence(const std::string& damage) {
    const std::string said = outcome();
    for (const char* bad : {"died with", "thrown: ", "map::", "vector", "stoul", "_M_", "basic_string"}) {
      EXPECT_EQ(said.find(bad), std::string::npos) << damage << ": " << said;
    }
  }
  void restore(const std::string& bytes) const {
    for (const char* suffix : {"-wal", "-shm"}) {
      std::remove((m_path + suffix).c_str());
    }
    std::ofstream(m_path, std::ios::binary | std::ios::trunc) << bytes;
  }
  /** Runs a statement past all checks. @return whether it could be run */
  bool damage(const std::string& statement) const {
    restore(m_sound);
    sqlite3* handle = nullptr;
    sqlite3_open(m_path.c_str(), &handle);
    const std::string all = "PRAGMA synchronous = OFF; PRAGMA ignore_check_constraints = ON; " + statement;
    const bool done = sqlite3_exec(handle, all.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(handle);
    return done;
  }
  std::vector<std::string> column(const std::string& query) const {
    std::vector<std::string> texts;
    voltvk::Connection connection(m_path);
    voltvk::Statement rows(connection, query.c_str());
    while (rows.step()) {
      texts.push_back(rows.text(0));
    }
    return texts;
  }

  const std::string m_path = m_directory.file("state.db");
  std::string m_sound;
};

TEST_F(DamageTest, InAnyFieldOfAnyTableIsSurvived) {
  const std::vector<std::string> values = {
      "0",     "-1",  "3",         "4294967296",          "9223372036854775807",
      "1e300", "'x'", "x'00ff80'", "-9223372036854775808"};
  std::mt19937 random(7);
  for (const std::string& table : column("SELECT name FROM sqlite_master WHERE type = 'table'")) {
    for (const std::string& field : column(joined({"SELECT name FROM pragma_table_info('", table, "')"}))) {
      for (std::size_t i = random() % 4; i < values.size(); i += 4) {
        const std::string statement = joined({"UPDATE ", table, " SET ", field, " = ", values[i]});
        if (damage(statement) ||
            damage(joined({statement, " WHERE rowid = (SELECT max(rowid) FROM ", table, ")"}))) {
          expectSentence(statement);
        }
      }
    }
    if (damage("DELETE FROM " + table)) {
      expectSentence("DELETE FROM " + table);
    }
  }
}

TEST_F(DamageTest, InAnyByteOfTheFileIsSurvived) {
  std::mt19937 random(11);
  const std::size_t used = std::size_t{25} * 4096;  // behind the tables only free pages follow
  for (int round = 0; round < 40; ++round) {
    std::string bytes = m_sound;
    const std::size_t place = random() % std::min(used, bytes.size());
    bytes[place] = static_cast<char>(random());
    restore(bytes);
    expectSentence("byte " + std::to_string(place));
  }
}

TEST_F(DamageTest, IsNamedForAPerson) {
  const struct {
    const char* statement;
    const char* said;
  } cases[] = {
      {"UPDATE pool SET chunk_sectors = 0 WHERE id = 1", "pool 1 (hdd) has chunks of 0 sectors"},
      {"UPDATE volume SET hdd_chunks = 0, ssd_chunks = 0 WHERE id = 1",
       "volume 1 (tiered) has 0 chunks on hard disks and 0 on SSDs"},
      {"DELETE FROM drive WHERE number = 0", "pool 1 (hdd) has drive 0, which does not exist"},
      {"DELETE FROM pool WHERE id = 2", "pool 2 does not exist, but parts of it do"},
      {"DELETE FROM volume WHERE id = 1", "volume 1 does not exist, but parts of it do"},
      {"UPDATE volume_extent SET pool = 9 WHERE volume = 1 AND position = 1",
       "volume 1 (tiered) uses pool 9, which does not exist"},
      {"UPDATE volume_extent SET first = 0", "pool 1 (hdd) has chunks that are used twice"},
      {"UPDATE drive SET sectors = -1 WHERE number = 2",
       "drive 2 (/dev/tvk2) has 18446744073709551615 sectors"},
      {"DELETE FROM setting WHERE name = 'generation'", "the setting generation is missing"},
  };
  for (const auto& one : cases) {
    ASSERT_TRUE(damage(one.statement)) << one.statement;
    m_lib = std::make_unique<TvkLib>();
    const std::string error = m_lib->getOpenError();
    EXPECT_NE(error.find("cannot be used (" + std::string(one.said)), std::string::npos) << error;
    EXPECT_NE(error.find("); move it and the files beside it away, then restore a backup"), std::string::npos)
        << error;
    EXPECT_FALSE(drives().isReadable());
    m_lib.reset();
  }
}

TEST_F(DamageTest, IsNoStopOfThePolicyEngineWhileTheStateIsOpen) {
  m_lib = std::make_unique<TvkLib>();
  RaidObject& root = *m_lib->getRootObject();
  EXPECT_TRUE(root.isPolicyEngineRunning());
  execute("PRAGMA ignore_check_constraints = ON; UPDATE pool SET chunk_sectors = 0 WHERE id = 1");
  EXPECT_TRUE(root.isPolicyEngineRunning()) << "the state could not be read for once";
  EXPECT_FALSE(root.isPolicyEngineRunning()) << "it cannot be opened again";
}

}  // namespace
