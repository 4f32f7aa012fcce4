// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Schema.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/StateFile.h"
#include "voltvk/engine/state/Statement.h"

#include <thread>

namespace voltvk {

namespace {

// Chunks have a row only if they have been used or are not in their original place, so the size of the state
// depends on the activity and not on the capacity.
constexpr const char* TABLES = R"sql(
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE drive(
  number INTEGER PRIMARY KEY CHECK(number BETWEEN 0 AND 255),
  identity TEXT NOT NULL UNIQUE, virtual INTEGER NOT NULL, present INTEGER NOT NULL,
  name TEXT NOT NULL, serial TEXT NOT NULL, wwid TEXT NOT NULL, vendor TEXT NOT NULL, model TEXT NOT NULL,
  sectors INTEGER NOT NULL CHECK(sectors > 0), type INTEGER NOT NULL, interface INTEGER NOT NULL,
  removable INTEGER NOT NULL, bootable INTEGER NOT NULL, partitioned INTEGER NOT NULL, mounted INTEGER NOT NULL,
  read_only INTEGER NOT NULL DEFAULT 0, use TEXT NOT NULL DEFAULT '');
CREATE TABLE pool(
  id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, description TEXT NOT NULL,
  tier INTEGER NOT NULL, chunk_sectors INTEGER NOT NULL, chunks INTEGER NOT NULL CHECK(chunks > 0),
  internal INTEGER NOT NULL);
CREATE TABLE pool_member(
  pool INTEGER NOT NULL REFERENCES pool(id), position INTEGER NOT NULL,
  drive INTEGER NOT NULL UNIQUE REFERENCES drive(number), chunks INTEGER NOT NULL,
  PRIMARY KEY(pool, position)) WITHOUT ROWID;
CREATE TABLE volume(
  id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, description TEXT NOT NULL,
  type INTEGER NOT NULL, chunk_sectors INTEGER NOT NULL, hdd_chunks INTEGER NOT NULL, ssd_chunks INTEGER NOT NULL,
  knob INTEGER NOT NULL, reads INTEGER NOT NULL DEFAULT 0, writes INTEGER NOT NULL DEFAULT 0,
  sequential INTEGER NOT NULL DEFAULT 0, random INTEGER NOT NULL DEFAULT 0,
  ssd_reads INTEGER NOT NULL DEFAULT 0, ssd_writes INTEGER NOT NULL DEFAULT 0,
  device INTEGER NOT NULL DEFAULT 0);
CREATE TABLE volume_extent(
  volume INTEGER NOT NULL REFERENCES volume(id), position INTEGER NOT NULL,
  pool INTEGER NOT NULL REFERENCES pool(id), first INTEGER NOT NULL, chunks INTEGER NOT NULL CHECK(chunks > 0),
  PRIMARY KEY(volume, position)) WITHOUT ROWID;
CREATE INDEX volume_extent_by_pool ON volume_extent(pool, first);
CREATE TABLE chunk(
  volume INTEGER NOT NULL REFERENCES volume(id), number INTEGER NOT NULL, heat INTEGER NOT NULL,
  ssd INTEGER NOT NULL, dirty INTEGER NOT NULL, PRIMARY KEY(volume, number)) WITHOUT ROWID;
CREATE TABLE event(
  id INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, code INTEGER NOT NULL, type INTEGER NOT NULL,
  description TEXT NOT NULL, action INTEGER NOT NULL);
CREATE TABLE fault(
  id INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, operation TEXT NOT NULL, status INTEGER NOT NULL,
  milliseconds INTEGER NOT NULL);
INSERT INTO setting VALUES('policy_running', 1), ('last_drive_number', -1), ('last_virtual_drive', 0);
)sql";

// COMPAT: states from before refusals were kept lack this table. It is added when they are opened, and
// programs from that time ignore it, so the layout keeps its number.
constexpr const char* ADDED_TABLES = R"sql(
CREATE TABLE IF NOT EXISTS last_refusal(
  id INTEGER PRIMARY KEY CHECK(id = 1), operation TEXT NOT NULL, status INTEGER NOT NULL, detail TEXT NOT NULL,
  time INTEGER NOT NULL);
)sql";

// The file reserves the space for a full event journal at once and allocates it from its free pages, so it
// does not keep growing as events are added and dropped.
constexpr const char* RESERVE = R"sql(
CREATE TABLE reserve(room BLOB NOT NULL);
INSERT INTO reserve VALUES(zeroblob(1048576));
DROP TABLE reserve;
)sql";

bool isEmpty(Connection& connection) {
  return connection.number("PRAGMA application_id") == 0 &&
         connection.number("SELECT count(*) FROM sqlite_master") == 0;
}

void makeTables(Connection& connection) {
  connection.execute("PRAGMA page_size = 4096; PRAGMA auto_vacuum = NONE");
  // Done with the rollback journal, so that the header in the file itself says whose file it is even if
  // nothing has been moved from the write-ahead log yet.
  Transaction change(connection, Transaction::Kind::Change);
  if (!isEmpty(connection)) {
    return;  // another process has already done it
  }
  connection.execute(TABLES);
  connection.execute(RESERVE);
  connection.execute(("PRAGMA application_id = " + std::to_string(STATE_APPLICATION_ID) +
                      "; PRAGMA user_version = " + std::to_string(STATE_VERSION))
                         .c_str());
  change.commit();
}

/** SQLite does not wait by itself if another connection is open when the journal mode is changed. */
void switchToWriteAheadLog(Connection& connection) {
  const auto end = std::chrono::steady_clock::now() + BUSY_TIMEOUT;
  while (true) {
    try {
      connection.execute("PRAGMA journal_mode = WAL");
      return;
    } catch (const DatabaseError& error) {
      if (!error.isBusy() || std::chrono::steady_clock::now() > end) {
        throw;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
}

void check(Connection& connection, const std::string& path) {
  const std::string advice = "; restore it from a backup, or move it away to start with an empty one";
  if (connection.number("PRAGMA application_id") != STATE_APPLICATION_ID ||
      connection.number("PRAGMA user_version") != STATE_VERSION) {
    throw Refusal(TVK_NO_DRIVER, "the state file " + path + " is not a state of this version" + advice);
  }
  Statement query(connection, "PRAGMA quick_check(1)");
  if (!query.step() || query.text(0) != "ok") {
    throw Refusal(TVK_NO_DRIVER, "the state file " + path + " is damaged" + advice);
  }
}

}  // namespace

void Schema::establish(Connection& connection, const std::string& path) {
  if (isEmpty(connection)) {
    makeTables(connection);
  }
  check(connection, path);
  switchToWriteAheadLog(connection);
  connection.execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;"
                     "PRAGMA wal_autocheckpoint = 128; PRAGMA journal_size_limit = 1048576");
  connection.execute(ADDED_TABLES);
}

}  // namespace voltvk
