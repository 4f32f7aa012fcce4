// SPDX-License-Identifier: Apache-2.0
// A state of an earlier version keeps everything when it is converted to the present layout.
#include "engine/EngineFixture.h"
#include "support/Lines.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/state/Refusal.h"

#include <sqlite3.h>

using namespace tvp::test;

namespace {

/** A state with the layout of version 1, before refusals were kept, with a volume on two pools; the third
 * pool has been deleted. */
const std::string VERSION_1 = readFile(TVP_SOURCE_DIR "/tests/engine/state/version-1.sql");

class UpgradeTest : public EngineTest {
protected:
  UpgradeTest() { m_lib.reset(); }
  /** Makes a state of version 1, alters it, and opens it. */
  void open(const char* alteration = "") {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, (VERSION_1 + alteration).c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(handle);
    sqlite3_close(handle);
    m_lib = std::make_unique<TvkLib>();
  }
  std::string m_path = m_directory.file("old.db");
  const int m_environment = ::setenv("VOLTVK_STATE", m_path.c_str(), 1);
};

TEST_F(UpgradeTest, KeepsEverything) {
  open();
  ASSERT_STREQ(m_lib->getOpenError(), "");
  ASSERT_EQ(pools().size(), 2U);
  EXPECT_STREQ(pools()[0]->getDescription(), "disks");
  EXPECT_EQ(pools()[1]->getUsedCapacityInSectors(), 20 * MIB);
  EXPECT_EQ(chunksOf(volumes()[0]).size(), 2U);
  EXPECT_FALSE(m_lib->getRootObject()->isPolicyEngineRunning());
  d_ioctl_user_stat statistics{};
  EXPECT_EQ(adapter().getVirtualVolumeStats(&statistics, 7).getReturn(), TVK_OK);
  EXPECT_EQ(statistics.readIoCount + statistics.ssdWriteIoCount, 27U);
  EXPECT_EQ(Storage::rows("SELECT heat || ' ' || ssd FROM chunk WHERE volume = 7 AND number = 4"), "9 1|\n");
  EXPECT_EQ(Storage::rows("SELECT group_concat(name) FROM sqlite_master WHERE name LIKE 'old%'"), "-|\n");
  EXPECT_EQ(Storage::rows("SELECT volume, chunks FROM laid_on_ssd"), "7|20|\n");
  EXPECT_EQ(addDrive(TVK_DEVICE_HDD, 10 * MIB), 2U);
  EXPECT_EQ(createPool(poolSpec("new", {2}, 10 * MIB)), 4U)
      << "the number of the deleted pool is not given again";
  EXPECT_EQ(Storage::rows("SELECT min(id) || ' ' || max(id) FROM event"), "41 43|\n");
  EXPECT_EQ(adapter().deleteVirtualPool(77).getReturn(), TVK_NO_SUCH_POOL);
  state()->read([](voltvk::Connection& connection) {
    EXPECT_EQ(voltvk::LastRefusal::read(connection)->detail, "no pool has the number 77");
  });
}

TEST_F(UpgradeTest, HasTheLayoutOfANewState) {
  open();
  const char* layout = "SELECT group_concat(sql, ';') FROM (SELECT sql FROM sqlite_master ORDER BY name)";
  const std::string converted = Storage::rows(layout) + Storage::rows("PRAGMA user_version");
  ::setenv("VOLTVK_STATE", m_directory.file("new.db").c_str(), 1);
  EXPECT_EQ(converted, Storage::rows(layout) + Storage::rows("PRAGMA user_version"));
  EXPECT_THROW(execute("INSERT INTO pool VALUES(1, 'odd', '', 1, 0, 1, 0)"), voltvk::Refusal);
}

TEST_F(UpgradeTest, LeavesADamagedStateAsItIs) {
  for (const char* damage : {"UPDATE pool SET chunk_sectors = 0", "UPDATE volume_extent SET pool = 9"}) {
    open(damage);
    const std::string error = m_lib->getOpenError();
    EXPECT_NE(error.find("earlier version and cannot be converted ("), std::string::npos) << error;
    EXPECT_NE(error.find("; move it and the files beside it away, then restore a backup"), std::string::npos)
        << error;
    m_lib.reset();
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, "SELECT drive FROM pool_member", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(handle);
    std::remove(m_path.c_str());
  }
}

}  // namespace
