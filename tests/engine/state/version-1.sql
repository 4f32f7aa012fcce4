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
