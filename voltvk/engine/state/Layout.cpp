// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Layout.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/StateFile.h"
#include "voltvk/engine/state/Statement.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace voltvk {

namespace {

struct Table {
  const char* name;
  const char* definition;
};

// A column that an earlier version lacks needs a default, which the rows of that version get when they are
// converted. Every range has an upper end as well: to SQLite, any text is greater than any number. Chunks
// have a row only if they have been used or are not in their original place, so the size of the state depends
// on the activity and not on the capacity.
constexpr Table TABLES[] = {
    {"setting", R"sql((
  name TEXT PRIMARY KEY, value INTEGER NOT NULL CHECK(value BETWEEN -1 AND 4611686018427387903)) WITHOUT ROWID)sql"},
    {"drive", R"sql((
  number INTEGER PRIMARY KEY CHECK(number BETWEEN 0 AND 255),
  identity TEXT NOT NULL UNIQUE, virtual INTEGER NOT NULL CHECK(virtual IN (0, 1)),
  present INTEGER NOT NULL CHECK(present IN (0, 1)),
  name TEXT NOT NULL, serial TEXT NOT NULL, wwid TEXT NOT NULL, vendor TEXT NOT NULL, model TEXT NOT NULL,
  sectors INTEGER NOT NULL CHECK(sectors BETWEEN 1 AND 36028797018963968),
  type INTEGER NOT NULL CHECK(type IN (1, 2)), interface INTEGER NOT NULL CHECK(interface BETWEEN 0 AND 255),
  removable INTEGER NOT NULL CHECK(removable IN (0, 1)), bootable INTEGER NOT NULL CHECK(bootable IN (0, 1)),
  partitioned INTEGER NOT NULL CHECK(partitioned IN (0, 1)), mounted INTEGER NOT NULL CHECK(mounted IN (0, 1)),
  read_only INTEGER NOT NULL DEFAULT 0 CHECK(read_only IN (0, 1)), use TEXT NOT NULL DEFAULT '',
  content TEXT NOT NULL DEFAULT ''))sql"},
    {"pool", R"sql((
  id INTEGER PRIMARY KEY AUTOINCREMENT CHECK(id BETWEEN 1 AND 4294967295),
  name TEXT NOT NULL UNIQUE CHECK(length(name) > 0), description TEXT NOT NULL,
  tier INTEGER NOT NULL CHECK(tier IN (1, 3)),
  chunk_sectors INTEGER NOT NULL CHECK(chunk_sectors BETWEEN 8 AND 65536 AND chunk_sectors & (chunk_sectors - 1) = 0),
  chunks INTEGER NOT NULL CHECK(chunks BETWEEN 1 AND 2305843009213693952 / chunk_sectors),
  internal INTEGER NOT NULL CHECK(internal IN (0, 1))))sql"},
    {"pool_member", R"sql((
  pool INTEGER NOT NULL REFERENCES pool(id), position INTEGER NOT NULL CHECK(position BETWEEN 0 AND 255),
  drive INTEGER NOT NULL UNIQUE REFERENCES drive(number),
  chunks INTEGER NOT NULL CHECK(chunks BETWEEN 0 AND 4503599627370496),
  PRIMARY KEY(pool, position)) WITHOUT ROWID)sql"},
    {"volume", R"sql((
  id INTEGER PRIMARY KEY AUTOINCREMENT CHECK(id BETWEEN 1 AND 4294967295),
  name TEXT NOT NULL UNIQUE CHECK(length(name) > 0), description TEXT NOT NULL,
  type INTEGER NOT NULL CHECK(type IN (1, 2)),
  chunk_sectors INTEGER NOT NULL CHECK(chunk_sectors BETWEEN 8 AND 65536 AND chunk_sectors & (chunk_sectors - 1) = 0),
  hdd_chunks INTEGER NOT NULL CHECK(hdd_chunks BETWEEN 0 AND 4294967296),
  ssd_chunks INTEGER NOT NULL CHECK(ssd_chunks BETWEEN 0 AND 4294967296),
  knob INTEGER NOT NULL CHECK(knob BETWEEN 1 AND 3),
  device INTEGER NOT NULL DEFAULT 0 CHECK(device BETWEEN 0 AND 65535),
  reads INTEGER NOT NULL DEFAULT 0 CHECK(reads BETWEEN 0 AND 9223372036854775807),
  writes INTEGER NOT NULL DEFAULT 0 CHECK(writes BETWEEN 0 AND 9223372036854775807),
  sequential INTEGER NOT NULL DEFAULT 0 CHECK(sequential BETWEEN 0 AND 9223372036854775807),
  random INTEGER NOT NULL DEFAULT 0 CHECK(random BETWEEN 0 AND 9223372036854775807),
  ssd_reads INTEGER NOT NULL DEFAULT 0 CHECK(ssd_reads BETWEEN 0 AND 9223372036854775807),
  ssd_writes INTEGER NOT NULL DEFAULT 0 CHECK(ssd_writes BETWEEN 0 AND 9223372036854775807),
  CHECK(hdd_chunks + ssd_chunks > 0 AND (type = 1 OR min(hdd_chunks, ssd_chunks) > 0))))sql"},
    {"volume_extent", R"sql((
  volume INTEGER NOT NULL REFERENCES volume(id), position INTEGER NOT NULL CHECK(position BETWEEN 0 AND 4294967295),
  pool INTEGER NOT NULL REFERENCES pool(id), first INTEGER NOT NULL CHECK(first BETWEEN 0 AND 2305843009213693952),
  chunks INTEGER NOT NULL CHECK(chunks BETWEEN 1 AND 2305843009213693952),
  PRIMARY KEY(volume, position)) WITHOUT ROWID)sql"},
    {"laid_on_ssd", R"sql((
  volume INTEGER NOT NULL REFERENCES volume(id), first INTEGER NOT NULL CHECK(first BETWEEN 0 AND 8589934592),
  chunks INTEGER NOT NULL CHECK(chunks BETWEEN 1 AND 4294967296), PRIMARY KEY(volume, first)) WITHOUT ROWID)sql"},
    {"chunk", R"sql((
  volume INTEGER NOT NULL REFERENCES volume(id), number INTEGER NOT NULL CHECK(number BETWEEN 0 AND 4294967295),
  heat INTEGER NOT NULL CHECK(heat BETWEEN 0 AND 9223372036854775807), ssd INTEGER NOT NULL CHECK(ssd IN (0, 1)),
  dirty INTEGER NOT NULL CHECK(dirty IN (0, 1)), PRIMARY KEY(volume, number)) WITHOUT ROWID)sql"},
    // What the kernel's counters of a volume's cache showed when they were last collected.
    {"kernel_counter", R"sql((
  volume INTEGER PRIMARY KEY REFERENCES volume(id),
  read_hits INTEGER NOT NULL CHECK(read_hits BETWEEN 0 AND 9223372036854775807),
  read_misses INTEGER NOT NULL CHECK(read_misses BETWEEN 0 AND 9223372036854775807),
  write_hits INTEGER NOT NULL CHECK(write_hits BETWEEN 0 AND 9223372036854775807),
  write_misses INTEGER NOT NULL CHECK(write_misses BETWEEN 0 AND 9223372036854775807)))sql"},
    {"event", R"sql((
  id INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL,
  code INTEGER NOT NULL CHECK(code BETWEEN 0 AND 4294967295), type INTEGER NOT NULL CHECK(type BETWEEN 0 AND 255),
  description TEXT NOT NULL, action INTEGER NOT NULL CHECK(action BETWEEN 0 AND 4294967295)))sql"},
    {"fault", R"sql((
  id INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL CHECK(kind BETWEEN 1 AND 5), operation TEXT NOT NULL,
  status INTEGER NOT NULL CHECK(status BETWEEN 0 AND 4294967295),
  milliseconds INTEGER NOT NULL CHECK(milliseconds BETWEEN 0 AND 600000)))sql"},
    {"backing", R"sql((
  id INTEGER PRIMARY KEY CHECK(id = 1), kind INTEGER NOT NULL CHECK(kind IN (1, 2)),
  volume_group TEXT NOT NULL CHECK(length(volume_group) > 0)))sql"},
    {"intent", R"sql((
  position INTEGER PRIMARY KEY, step INTEGER NOT NULL CHECK(step BETWEEN 1 AND 11),
  object INTEGER NOT NULL CHECK(object BETWEEN 1 AND 4294967295), drives TEXT NOT NULL))sql"},
    {"last_refusal", R"sql((
  id INTEGER PRIMARY KEY CHECK(id = 1), operation TEXT NOT NULL,
  status INTEGER NOT NULL CHECK(status BETWEEN 0 AND 4294967295), detail TEXT NOT NULL, time INTEGER NOT NULL))sql"},
};

constexpr const char* INDEXES = "CREATE INDEX volume_extent_by_pool ON volume_extent(pool, first)";

constexpr const char* SETTINGS =
    "INSERT INTO setting VALUES"
    "('policy_running', 1), ('last_drive_number', -1), ('last_virtual_drive', 0), ('generation', 0),"
    "('drives_left_out', 0);"
    "INSERT INTO backing VALUES(1, 1, 'tvp')";

/** What a version needs beyond the tables above, to which the rows of every earlier version are copied. */
struct Step {
  std::int64_t from;  ///< runs for databases of this version and of earlier ones
  const char*
      sql;  ///< runs after the rows have been copied; the earlier tables are still there as old_<name>
};

// COMPAT: users of 1.0.0 keep their state.
// COMPAT: users of 1.1.0 keep theirs, too.
// A later version adds its statements here and increments STATE_VERSION.
constexpr Step STEPS[] = {
    {1, "INSERT OR IGNORE INTO setting VALUES('generation', 0), ('drives_left_out', 0)"},
    // Programs of that version showed the lower 16 bits of the identifier. Volumes that would share them get
    // numbers from the other end.
    {1,
     "UPDATE volume SET device = CASE WHEN EXISTS"
     " (SELECT 1 FROM volume AS other WHERE other.id < volume.id AND other.id & 65535 = volume.id & 65535)"
     " THEN 65535 - (SELECT count(*) FROM volume AS other WHERE other.id < volume.id) ELSE id & 65535 END"},
    {2, "INSERT OR IGNORE INTO backing VALUES(1, 1, 'tvp')"},
    {3, "INSERT INTO laid_on_ssd SELECT id, hdd_chunks, ssd_chunks FROM volume WHERE type = 1 AND ssd_chunks "
        "> 0"},
};

void run(Connection& connection, const std::string& sql) {
  connection.execute(sql.c_str());
}

/** Runs a statement that is put together from parts. */
void run(Connection& connection, std::initializer_list<std::string_view> parts) {
  std::string sql;
  for (const std::string_view part : parts) {
    sql += part;
  }
  run(connection, sql);
}

/**
 * Counts the changes of what a snapshot contains, whoever makes them, so that statistics and events, which it
 * does not contain, do not make anyone read all of it again.
 */
void createTriggers(Connection& connection) {
  const std::string count =
      " BEGIN UPDATE setting SET value = (value + 1) & 4611686018427387903 WHERE name = 'generation'; END";
  for (const std::string table :
       {"drive", "pool", "pool_member", "volume", "volume_extent", "laid_on_ssd", "fault", "backing"}) {
    const char* columns =
        table == "volume"
            ? " OF id, name, description, type, chunk_sectors, hdd_chunks, ssd_chunks, knob, device"
            : "";
    run(connection, {"CREATE TRIGGER ", table, "_inserted AFTER INSERT ON ", table, count});
    run(connection, {"CREATE TRIGGER ", table, "_deleted AFTER DELETE ON ", table, count});
    run(connection, {"CREATE TRIGGER ", table, "_updated AFTER UPDATE", columns, " ON ", table, count});
  }
  run(connection, {"CREATE TRIGGER policy_switched AFTER UPDATE ON setting WHEN NEW.name IN "
                   "('policy_running', 'drives_left_out')",
                   count});
}

void createTables(Connection& connection) {
  for (const Table& table : TABLES) {
    run(connection, std::string("CREATE TABLE ") + table.name + table.definition);
  }
  run(connection, INDEXES);
}

void setVersion(Connection& connection) {
  run(connection, "PRAGMA user_version = " + std::to_string(STATE_VERSION));
}

bool exists(Connection& connection, const std::string& table) {
  return Statement(connection, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?", table).step();
}

/** The columns that the present table shares with the one of the earlier version, separated by commas. */
std::string sharedColumns(Connection& connection, const std::string& table) {
  Statement row(
      connection,
      "SELECT group_concat(name, ', ') FROM pragma_table_info(?)"
      " WHERE name IN (SELECT name FROM pragma_table_info(?))",
      table, "old_" + table);
  row.step();
  return row.text(0);
}

void setEarlierTablesAside(Connection& connection) {
  run(connection, "DROP INDEX IF EXISTS volume_extent_by_pool");
  Statement triggers(
      connection,
      "SELECT group_concat('DROP TRIGGER ' || name, ';') FROM sqlite_master WHERE type = 'trigger'");
  const std::string drop = triggers.step() ? triggers.text(0) : "";
  triggers.rebind();
  run(connection, drop);
  for (const Table& table : TABLES) {
    if (exists(connection, table.name)) {
      run(connection, std::string("ALTER TABLE ") + table.name + " RENAME TO old_" + table.name);
    }
  }
}

void copyRows(Connection& connection) {
  for (const Table& table : TABLES) {
    const std::string name = table.name;
    if (exists(connection, "old_" + name)) {
      const std::string columns = sharedColumns(connection, name);
      run(connection, {"INSERT INTO ", name, "(", columns, ") SELECT ", columns, " FROM old_", name});
    }
  }
  // Identifiers stay unused after the object that had the largest one is gone.
  run(connection, "DELETE FROM sqlite_sequence WHERE name NOT LIKE 'old\\_%' ESCAPE '\\';"
                  "UPDATE sqlite_sequence SET name = substr(name, 5)");
}

void dropEarlierTables(Connection& connection) {
  for (const Table& table : TABLES) {
    run(connection, std::string("DROP TABLE IF EXISTS old_") + table.name);
  }
}

}  // namespace

void Layout::create(Connection& connection) {
  createTables(connection);
  run(connection, SETTINGS);
  createTriggers(connection);
  setVersion(connection);
}

void Layout::upgrade(Connection& connection, std::int64_t from) {
  setEarlierTablesAside(connection);
  createTables(connection);
  copyRows(connection);
  for (const Step& step : STEPS) {
    if (from <= step.from) {
      run(connection, step.sql);
    }
  }
  dropEarlierTables(connection);
  createTriggers(connection);
  setVersion(connection);
  Statement dangling(connection, "PRAGMA foreign_key_check");
  if (dangling.step()) {
    throw DatabaseError::ofDamage(
        "the table " + dangling.text(0) + " refers to a missing row of " + dangling.text(2));
  }
}

}  // namespace voltvk
