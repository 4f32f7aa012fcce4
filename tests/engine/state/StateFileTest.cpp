// SPDX-License-Identifier: Apache-2.0
// A state file that cannot be used means "no driver", with the reason, and is left unchanged.
#include "engine/EngineFixture.h"
#include "support/Lines.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/state/Refusal.h"

#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

/** A connection beside the library's, as another process has it. */
sqlite3* openAndRun(const std::string& path, const char* sql) {
  sqlite3* handle = nullptr;
  EXPECT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
  return handle;
}

void runSql(const std::string& path, const char* sql) {
  sqlite3_close(openAndRun(path, sql));
}

unsigned int modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

unsigned long controllers(TvkLib& lib) {
  unsigned long count = 99;
  lib.getControllerCount(count);
  return count;
}

class StateFileTest : public EngineTest {
protected:
  StateFileTest() : m_path(m_directory.file("state.db")) {
    addDrive(TVK_DEVICE_HDD, 50 * MIB);
    createPool(poolSpec("pool", {0}, 50 * MIB));
    m_lib.reset();  // closing the last connection moves everything into the file
  }
  std::set<std::string> entries() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_directory.path())) {
      names.insert(entry.path().filename());
    }
    return names;
  }
  std::string m_path;
};

TEST_F(StateFileTest, NeverReceivesWhatAProcessWithoutStandardStreamsPrints) {
  const pid_t child = fork();
  if (child == 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      close(stream);
    }
    TvkLib lib;
    bool printed = false;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      printed = write(stream, "NUMBER  DEVICE", 14) > 0 || printed;
    }
    _exit(printed || controllers(lib) != 1 ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  m_lib = std::make_unique<TvkLib>();
  EXPECT_STREQ(m_lib->getOpenError(), "");
  EXPECT_EQ(pools().size(), 1U);
}

TEST_F(StateFileTest, IsCreatedOnFirstUseForItsOwnerAlone) {
  const std::string path = m_directory.file("deep/deeper/state.db");
  ::setenv("VOLTVK_STATE", path.c_str(), 1);
  const mode_t mask = umask(0);
  TvkLib lib;
  umask(mask);
  EXPECT_STREQ(lib.getOpenError(), "");
  EXPECT_EQ(controllers(lib), 1U);
  EXPECT_EQ(modeOf(m_directory.file("deep")), 0700U);
  EXPECT_EQ(modeOf(m_directory.file("deep/deeper")), 0700U);
  for (const char* suffix : {"", "-wal", "-shm"}) {
    EXPECT_EQ(modeOf(path + suffix), 0600U) << suffix;
  }
}

struct BadState {
  const char* name;
  std::function<void(const TemporaryDirectory&, const std::string&)> spoil;
  const char* reason;
};

void PrintTo(const BadState& bad, std::ostream* out) {
  *out << bad.name;
}

class BadStates : public StateFileTest, public ::testing::WithParamInterface<BadState> {};

TEST_P(BadStates, MeanNoDriverAndAreLeftUnchanged) {
  GetParam().spoil(m_directory, m_path);
  const bool regular = fs::is_regular_file(fs::symlink_status(m_path));
  const std::string before = regular ? readFile(m_path) : "";
  const std::set<std::string> listing = entries();
  m_lib = std::make_unique<TvkLib>();
  EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_NO_DRIVER);
  EXPECT_EQ(controllers(*m_lib), 0U);
  const std::string error = m_lib->getOpenError();
  EXPECT_NE(error.find(GetParam().reason), std::string::npos) << error;
  EXPECT_NE(error.find(m_path), std::string::npos) << error;
  EXPECT_NE(error.find("; "), std::string::npos) << "no advice in: " << error;
  EXPECT_FALSE(drives().isReadable());
  VirtualPoolSpec spec = poolSpec("pool", {0}, 50 * MIB);
  EXPECT_EQ(adapter().createVirtualPool(spec).getReturn(), TVK_NO_DRIVER);
  EXPECT_FALSE(m_lib->getRootObject()->isPolicyEngineRunning());
  EXPECT_EQ(regular ? readFile(m_path) : "", before);
  EXPECT_EQ(entries(), listing);
  // Once the obstacle is removed, a later call finds the driver.
  fs::remove_all(m_path);
  fs::remove(m_path + "-wal");
  fs::remove(m_path + "-shm");
  chmod(m_directory.path().c_str(), 0700);
  EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_OK);
  EXPECT_EQ(controllers(*m_lib), 1U);
  EXPECT_STREQ(m_lib->getOpenError(), "");
}

void replace(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

const BadState BAD_STATES[] = {
    {"NoDatabase", [](auto&, auto& path) { replace(path, std::string(5000, 'x')); }, "not a database"},
    {"Short", [](auto&, auto& path) { replace(path, "SQLite format 3"); }, "not a database"},
    {"CutShort", [](auto&, auto& path) { fs::resize_file(path, fs::file_size(path) / 2); }, "cut short"},
    {"CutToOnePage", [](auto&, auto& path) { fs::resize_file(path, 4096); }, "cut short"},
    {"CutToNothingInUse",
     [](auto&, auto& path) {
       replace(path, "");
       replace(path + "-wal", "left over");
     },
     "cut to nothing"},
    {"Damaged",
     [](auto&, auto& path) {
       std::string bytes = readFile(path);
       bytes.replace(4096, std::size_t{8} * 4096, std::size_t{8} * 4096, '\xA5');
       replace(path, bytes);
     },
     "state.db"},
    {"OfAnotherProgram",
     [](auto&, auto& path) {
       fs::remove(path);
       runSql(path, "CREATE TABLE something(a); INSERT INTO something VALUES(1)");
     },
     "another program"},
    {"Newer", [](auto&, auto& path) { runSql(path, "PRAGMA journal_mode=DELETE; PRAGMA user_version=1000"); },
     "newer version"},
    {"SymbolicLink",
     [](auto& directory, auto& path) {
       fs::rename(path, directory.file("elsewhere"));
       fs::create_symlink(directory.file("elsewhere"), path);
     },
     "symbolic link"},
    {"Directory",
     [](auto&, auto& path) {
       fs::remove(path);
       fs::create_directory(path);
     },
     "cannot be opened"},
    {"Pipe",
     [](auto&, auto& path) {
       fs::remove(path);
       ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
     },
     "not a regular file"},
    {"WritableByAll", [](auto&, auto& path) { chmod(path.c_str(), 0666); }, "everybody"},
    {"WritableByItsGroup", [](auto&, auto& path) { chmod(path.c_str(), 0660); }, "its group"},
    {"InADirectoryOfAll", [](auto& directory, auto&) { chmod(directory.path().c_str(), 0777); },
     "its directory"},
    {"InADirectoryOfAGroup",
     [](auto& directory, auto&) {
       EXPECT_EQ(chown(directory.path().c_str(), 0, 4711), 0);
       chmod(directory.path().c_str(), 0770);
     },
     "another group"},
    {"WithALogOfAnotherUser",
     [](auto&, auto& path) {
       replace(path + "-wal", "");
       EXPECT_EQ(chown((path + "-wal").c_str(), 4711, 0), 0);
     },
     "user 4711"},
    {"WithAnIndexWritableByAll",
     [](auto&, auto& path) {
       replace(path + "-shm", "");
       chmod((path + "-shm").c_str(), 0606);
     },
     "everybody"},
    {"WithALinkAsIndex",
     [](auto& directory, auto& path) { fs::create_symlink(directory.file("x"), path + "-shm"); },
     "-shm beside it is a symbolic link"},
    {"WithAnotherFileAsLog",
     [](auto& directory, auto& path) { fs::create_hard_link(directory.write("x", ""), path + "-wal"); },
     "link to another file"},
    {"OfAnotherUser", [](auto&, auto& path) { EXPECT_EQ(chown(path.c_str(), 4711, 0), 0); }, "user 4711"},
};

INSTANTIATE_TEST_SUITE_P(Files, BadStates, ::testing::ValuesIn(BAD_STATES), [](const auto& bad) {
  return bad.param.name;
});

TEST_F(StateFileTest, AtAnImpossiblePathMeansNoDriver) {
  for (const std::string& path : {m_path + "/below/a/file", std::string("/proc/nowhere/state.db")}) {
    ::setenv("VOLTVK_STATE", path.c_str(), 1);
    TvkLib lib;
    EXPECT_EQ(controllers(lib), 0U);
    EXPECT_NE(std::string(lib.getOpenError()).find("cannot be"), std::string::npos) << lib.getOpenError();
  }
}

TEST_F(StateFileTest, OnAFullDiskIsNotReportedAsDamaged) {
  const auto before = signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit full = {1024, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
  m_lib = std::make_unique<TvkLib>();
  const std::string error = m_lib->getOpenError();
  setrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, before);
  EXPECT_NE(error.find("; see that its disk works and has room"), std::string::npos) << error;
  EXPECT_EQ(error.find("move it away"), std::string::npos) << error;
  EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_OK);
  EXPECT_EQ(pools().size(), 1U);
}

TEST_F(StateFileTest, IsCreatedAgainWhenItIsMovedAwayWhileInUse) {
  m_lib = std::make_unique<TvkLib>();
  ASSERT_EQ(pools().size(), 1U);
  fs::rename(m_path, m_path + ".old");
  EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_OK);
  EXPECT_EQ(pools().size(), 0U) << "a new, empty state";
  EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_OK);
  addDrive(TVK_DEVICE_HDD, 50 * MIB);
  EXPECT_EQ(drives().size(), 1U);
}

TEST_F(StateFileTest, ReusesDriveNumbersOnceAllHaveBeenGiven) {
  m_lib = std::make_unique<TvkLib>();
  execute("UPDATE setting SET value = 254 WHERE name = 'last_drive_number'");
  EXPECT_EQ(addDrive(TVK_DEVICE_SSD, MIB), 255U);
  const std::uint32_t pool = createPool(poolSpec("last", {255}, MIB, TVK_TIER_SSD));
  EXPECT_EQ(adapter().deleteVirtualPool(pool).getReturn(), TVK_OK);
  EXPECT_EQ(addDrive(TVK_DEVICE_SSD, MIB), 1U) << "the smallest that is free";
  state()->change(
      [](voltvk::Connection& connection) { voltvk::DriveRegistry(connection).removeVirtual(255); });
  EXPECT_EQ(addDrive(TVK_DEVICE_SSD, MIB), 2U);
}

TEST_F(StateFileTest, ACommitThatFailsLeavesAConnectionThatWorks) {
  m_lib = std::make_unique<TvkLib>();
  try {
    // The fault in the row is only noticed at the end of the transaction.
    execute("PRAGMA defer_foreign_keys = ON; INSERT INTO pool_member VALUES(1, 7, 200, 5)");
    ADD_FAILURE() << "the transaction was committed";
  } catch (const voltvk::Refusal& refusal) {
    EXPECT_EQ(refusal.status(), TVK_INTERNAL);
    EXPECT_NE(std::string(refusal.what()).find("(FOREIGN KEY constraint failed); "), std::string::npos)
        << refusal.what();
  }
  EXPECT_EQ(chunksOf(pools()[0]).size(), 1U);
  EXPECT_EQ(adapter().modifyVirtualPool(1, poolSpec("other", {}, 0, 0)).getReturn(), TVK_OK);
  EXPECT_STREQ(pools()[0]->getName(), "other");
}

TEST_F(StateFileTest, DamageFoundWhileItIsUsedIsSaidInTheDatabasesOwnWords) {
  m_lib = std::make_unique<TvkLib>();
  execute("PRAGMA writable_schema = ON;"
          "UPDATE sqlite_master SET rootpage = 100000 WHERE name = 'volume'");
  m_lib.reset();
  m_lib = std::make_unique<TvkLib>();
  const Ret ret = m_lib->refreshConfiguration();
  EXPECT_EQ(ret.getReturn(), TVK_NO_DRIVER);
  EXPECT_EQ(
      ret.getDetail(),
      "the state file " + m_path +
          " cannot be used (malformed database schema (volume) - invalid rootpage); move "
          "it and the files beside it away, then restore a backup or start with an empty one");
}

TEST_F(StateFileTest, TheLastRefusalIsLostRatherThanWaitedFor) {
  m_lib = std::make_unique<TvkLib>();
  sqlite3* other = openAndRun(m_path, "BEGIN IMMEDIATE");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(adapter().getVirtualVolumeStats(nullptr, 1).getReturn(), TVK_INVALID_ARGUMENT);
  EXPECT_LT(std::chrono::steady_clock::now() - start, voltvk::BUSY_TIMEOUT / 2);
  sqlite3_close(other);
  const auto kept = [&] {
    std::optional<voltvk::LastRefusal> refusal;
    state()->read([&](voltvk::Connection& connection) { refusal = voltvk::LastRefusal::read(connection); });
    return refusal ? refusal->operation : "none";
  };
  EXPECT_EQ(kept(), "none");
  EXPECT_EQ(adapter().getVirtualVolumeStats(nullptr, 1).getReturn(), TVK_INVALID_ARGUMENT);
  EXPECT_EQ(kept(), "getVirtualVolumeStats");
}

TEST_F(StateFileTest, IsReadAgainOnlyWhenTheConfigurationHasChanged) {
  m_lib = std::make_unique<TvkLib>();
  createVolume(volumeSpec("volume", TVK_VOLUME_TIERED, {{1, 10 * MIB}}));
  auto before = state()->snapshot();
  EXPECT_EQ(adapter().resetVirtualVolumeStats(1).getReturn(), TVK_OK);  // which appends an event as well
  execute("UPDATE volume SET reads = 5; INSERT INTO chunk VALUES(1, 1, 1, 0, 0)");
  EXPECT_EQ(state()->snapshot(), before);
  for (const char* sql :
       {"UPDATE drive SET present = 0", "UPDATE pool SET description = 'x'", "UPDATE volume SET knob = 3",
        "UPDATE setting SET value = 0 WHERE name = 'policy_running'",
        "DELETE FROM volume_extent; DELETE FROM chunk; DELETE FROM volume",
        "INSERT INTO fault VALUES(1, 4, 'getIdentity', 0, 0)"}) {
    execute(sql);
    EXPECT_NE(state()->snapshot(), before) << sql;
    before = state()->snapshot();
  }
}

TEST_F(StateFileTest, MayBeCreatedByManyProcessesAtOnce) {
  for (int round = 0; round < 5; ++round) {
    const std::string path = m_directory.file("new" + std::to_string(round));
    std::vector<pid_t> children;
    for (int i = 0; i < 6; ++i) {
      const pid_t child = fork();
      if (child == 0) {
        ::setenv("VOLTVK_STATE", path.c_str(), 1);
        TvkLib lib;
        _exit(controllers(lib) == 1 ? 0 : 1);
      }
      children.push_back(child);
    }
    for (pid_t child : children) {
      int status = -1;
      waitpid(child, &status, 0);
      EXPECT_EQ(status, 0);
    }
  }
}

}  // namespace
