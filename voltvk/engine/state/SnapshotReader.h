// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_SNAPSHOTREADER_H
#define VOLTVK_ENGINE_STATE_SNAPSHOTREADER_H

#include "voltvk/engine/state/Records.h"
#include "voltvk/engine/state/Snapshot.h"

#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/**
 * Reads rows into records. The caller's transaction determines which moment they reflect. Throws
 * DatabaseError, also for damage that SQLite does not notice: numbers out of range and missing rows.
 */
class SnapshotReader {
public:
  explicit SnapshotReader(Connection& connection) : m_connection(connection) {}

  /** Everything, and checked as a whole. */
  Configuration configuration();

  /** A number that differs as soon as configuration() does. */
  std::int64_t generation();

  std::vector<DriveRecord> drives();    ///< by number, including those that are not present
  std::vector<PoolRecord> pools();      ///< by identifier
  std::vector<VolumeRecord> volumes();  ///< by identifier
  std::vector<Fault> faults();          ///< oldest first
  BackingChoice backing();

private:
  std::int64_t setting(const char* name);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
