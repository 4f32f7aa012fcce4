// SPDX-License-Identifier: Apache-2.0
// A state of an earlier version keeps everything when it is converted to the present layout.
#include "engine/EngineFixture.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/state/Refusal.h"

#include <sqlite3.h>

using namespace tvp::test;

namespace {

/** The layout of version 1, before refusals were kept, with a volume on two pools; the third pool has been
 * deleted. */
constexpr const char* VERSION_1 = R"sql(
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE drive(number INTEGER PRIMARY KEY CHECK(number BETWEEN 0 AND 255),
  identity TEXT NOT NULL UNIQUE, virtual INTEGER NOT NULL, present INTEGER NOT NULL,
  name TEXT NOT NULL, serial TEXT NOT NULL, wwid TEXT NOT NULL, vendor TEXT NOT NULL, model TEXT NOT NULL,
  sectors INTEGER NOT NULL CHECK(sectors > 0), type INTEGER NOT NULL, interface INTEGER NOT NULL,
  removable INTEGER NOT NULL, bootable INTEGER NOT NULL, partitioned INTEGER NOT NULL, mounted INTEGER NOT NULL);
CREATE TABLE pool(id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, description TEXT NOT NULL,
  tier INTEGER NOT NULL, chunk_sectors INTEGER NOT NULL, chunks INTEGER NOT NULL CHECK(chunks > 0),
  internal INTEGER NOT NULL);
CREATE TABLE pool_member(pool INTEGER NOT NULL REFERENCES pool(id), position INTEGER NOT NULL,
  drive INTEGER NOT NULL UNIQUE REFERENCES drive(number), chunks INTEGER NOT NULL,
  PRIMARY KEY(pool, position)) WITHOUT ROWID;
CREATE TABLE volume(id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, description TEXT NOT NULL,
  type INTEGER NOT NULL, chunk_sectors INTEGER NOT NULL, hdd_chunks INTEGER NOT NULL, ssd_chunks INTEGER NOT NULL,
  knob INTEGER NOT NULL, reads INTEGER NOT NULL DEFAULT 0, writes INTEGER NOT NULL DEFAULT 0,
  sequential INTEGER NOT NULL DEFAULT 0, random INTEGER NOT NULL DEFAULT 0,
  ssd_reads INTEGER NOT NULL DEFAULT 0, ssd_writes INTEGER NOT NULL DEFAULT 0);
CREATE TABLE volume_extent(volume INTEGER NOT NULL REFERENCES volume(id), position INTEGER NOT NULL,
  pool INTEGER NOT NULL REFERENCES pool(id), first INTEGER NOT NULL, chunks INTEGER NOT NULL CHECK(chunks > 0),
  PRIMARY KEY(volume, position)) WITHOUT ROWID;
CREATE INDEX volume_extent_by_pool ON volume_extent(pool, first);
CREATE TABLE chunk(volume INTEGER NOT NULL REFERENCES volume(id), number INTEGER NOT NULL, heat INTEGER NOT NULL,
  ssd INTEGER NOT NULL, dirty INTEGER NOT NULL, PRIMARY KEY(volume, number)) WITHOUT ROWID;
CREATE TABLE event(id INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, code INTEGER NOT NULL,
  type INTEGER NOT NULL, description TEXT NOT NULL, action INTEGER NOT NULL);
CREATE TABLE fault(id INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, operation TEXT NOT NULL,
  status INTEGER NOT NULL, milliseconds INTEGER NOT NULL);
INSERT INTO setting VALUES('policy_running', 0), ('last_drive_number', 1), ('last_virtual_drive', 2);
INSERT INTO drive VALUES(0, 'virtual:TVK1', 1, 1, '/dev/tvk0', 'TVK1', '', '', '', 204800, 1, 6, 0, 0, 0, 0),
  (1, 'virtual:TVK2', 1, 1, '/dev/tvk1', 'TVK2', '', '', '', 204800, 2, 6, 0, 0, 0, 0);
INSERT INTO pool VALUES(3, 'gone', '', 1, 2048, 1, 0), (1, 'slow', 'disks', 1, 2048, 100, 0),
  (2, 'fast', '', 3, 2048, 100, 0);
DELETE FROM pool WHERE id = 3;
INSERT INTO pool_member VALUES(1, 0, 0, 100), (2, 0, 1, 100);
INSERT INTO volume VALUES(7, 'data', '', 1, 2048, 50, 20, 2, 11, 12, 13, 14, 15, 16);
INSERT INTO volume_extent VALUES(7, 0, 1, 0, 50), (7, 1, 2, 0, 20);
INSERT INTO chunk VALUES(7, 4, 9, 1, 0);
INSERT INTO event VALUES(41, 1700000000, 513, 3, 'Pool [slow] was created', 1);
PRAGMA application_id = 1414941489; PRAGMA user_version = 1; PRAGMA journal_mode = WAL;
)sql";

class UpgradeTest : public EngineTest {
protected:
  UpgradeTest() { m_lib.reset(); }
  /** Makes a state of version 1, alters it, and opens it. */
  void open(const char* alteration = "") {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, VERSION_1, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(handle);
    EXPECT_EQ(sqlite3_exec(handle, alteration, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(handle);
    sqlite3_close(handle);
    m_lib = std::make_unique<TvkLib>();
  }
  static std::string valueOf(const char* sql) {
    std::string value;
    state()->read([&](voltvk::Connection& connection) {
      voltvk::Statement row(connection, sql);
      value = row.step() ? row.text(0) : "none";
    });
    return value;
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
  EXPECT_EQ(valueOf("SELECT heat || ' ' || ssd FROM chunk WHERE volume = 7 AND number = 4"), "9 1");
  EXPECT_EQ(valueOf("SELECT group_concat(name) FROM sqlite_master WHERE name LIKE 'old%'"), "");
  EXPECT_EQ(addDrive(TVK_DEVICE_HDD, 10 * MIB), 2U);
  EXPECT_EQ(createPool(poolSpec("new", {2}, 10 * MIB)), 4U)
      << "the number of the deleted pool is not given again";
  EXPECT_EQ(valueOf("SELECT min(id) || ' ' || max(id) FROM event"), "41 43");
  EXPECT_EQ(adapter().deleteVirtualPool(77).getReturn(), TVK_NO_SUCH_POOL);
  state()->read([](voltvk::Connection& connection) {
    EXPECT_EQ(voltvk::LastRefusal::read(connection)->detail, "no pool has the number 77");
  });
}

TEST_F(UpgradeTest, HasTheLayoutOfANewState) {
  open();
  const char* layout = "SELECT group_concat(sql, ';') FROM (SELECT sql FROM sqlite_master ORDER BY name)";
  const std::string converted = valueOf(layout) + valueOf("PRAGMA user_version");
  ::setenv("VOLTVK_STATE", m_directory.file("new.db").c_str(), 1);
  EXPECT_EQ(converted, valueOf(layout) + valueOf("PRAGMA user_version"));
  EXPECT_THROW(
      state()->change([](voltvk::Connection& connection) {
        connection.execute("INSERT INTO pool VALUES(1, 'odd', '', 1, 0, 1, 0)");
      }),
      voltvk::Refusal);
}

TEST_F(UpgradeTest, LeavesADamagedStateAsItIs) {
  for (const char* damage : {"UPDATE pool SET chunk_sectors = 0", "UPDATE volume_extent SET pool = 9"}) {
    open(damage);
    const std::string error = m_lib->getOpenError();
    EXPECT_NE(error.find("earlier version and cannot be converted ("), std::string::npos) << error;
    EXPECT_NE(error.find("; restore it from a backup"), std::string::npos) << error;
    m_lib.reset();
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, "SELECT drive FROM pool_member", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(handle);
    std::remove(m_path.c_str());
  }
}

}  // namespace
