// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Schema.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Layout.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/StateFile.h"
#include "voltvk/engine/state/Statement.h"

#include <thread>

namespace voltvk {

namespace {

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
  Layout::create(connection);
  connection.execute(RESERVE);
  connection.execute(("PRAGMA application_id = " + std::to_string(STATE_APPLICATION_ID)).c_str());
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

void upgrade(Connection& connection, const std::string& path) {
  connection.execute("PRAGMA foreign_keys = OFF");
  try {
    Transaction change(connection, Transaction::Kind::Change);
    const std::int64_t version = connection.number("PRAGMA user_version");
    if (version < STATE_VERSION) {  // else another process has already done it
      Layout::upgrade(connection, version);
      change.commit();
    }
  } catch (const DatabaseError& error) {
    if (error.isBusy()) {
      throw;
    }
    throw Refusal(
        TVK_NO_DRIVER, "the state file " + path + " is of an earlier version and cannot be converted (" +
                           error.what() + "); " + REPLACE_STATE);
  }
}

std::int64_t versionOf(Connection& connection) {
  return connection.number("PRAGMA user_version");
}

bool isEarlier(Connection& connection) {
  const std::int64_t version = versionOf(connection);
  return connection.number("PRAGMA application_id") == STATE_APPLICATION_ID && version > 0 &&
         version < STATE_VERSION;
}

void checkVersion(Connection& connection, const std::string& path) {
  if (connection.number("PRAGMA application_id") != STATE_APPLICATION_ID ||
      versionOf(connection) != STATE_VERSION) {
    throw Refusal(
        TVK_NO_DRIVER, "the state file " + path + " is not a state of this version; " + REPLACE_STATE);
  }
}

void checkPages(Connection& connection, const std::string& path) {
  Statement query(connection, "PRAGMA quick_check(1)");
  if (!query.step() || query.text(0) != "ok") {
    throw Refusal(TVK_NO_DRIVER, "the state file " + path + " is damaged; " + REPLACE_STATE);
  }
}

}  // namespace

void Schema::establish(Connection& connection, const std::string& path, bool check) {
  if (isEmpty(connection)) {
    makeTables(connection);
  }
  if (check) {
    connection.keepLogOnClose(true);  // the log says that the file has to be checked, also the next time
    checkPages(connection, path);
    connection.keepLogOnClose(false);
  }
  if (isEarlier(connection)) {
    upgrade(connection, path);
  }
  checkVersion(connection, path);
  switchToWriteAheadLog(connection);
  connection.execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;"
                     "PRAGMA wal_autocheckpoint = 128; PRAGMA journal_size_limit = 1048576");
  if (check) {
    connection.emptyLog();  // nothing in it needs to be checked again
  }
}

void Schema::accept(Connection& connection, const std::string& path, bool check) {
  if (isEarlier(connection)) {
    throw Refusal(
        TVK_NO_DRIVER, "the state file " + path +
                           " is of an earlier version and cannot be converted on a read-only file system; "
                           "mount it with write access once, or use a copy");
  }
  checkVersion(connection, path);
  if (check) {
    checkPages(connection, path);
  }
}

}  // namespace voltvk
