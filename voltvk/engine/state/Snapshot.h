// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_SNAPSHOT_H
#define VOLTVK_ENGINE_STATE_SNAPSHOT_H

#include "voltvk/Chunk.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/state/Backings.h"
#include "voltvk/engine/state/Fault.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Records.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace voltvk {

/** The data of a snapshot: the rows at one moment. */
struct Configuration {
  std::vector<DriveRecord> drives;    ///< by number
  std::vector<PoolRecord> pools;      ///< by identifier
  std::vector<VolumeRecord> volumes;  ///< by identifier
  std::vector<Fault> faults;          ///< oldest first
  bool policyRunning = false;
  BackingChoice backing;
  std::size_t drivesLeftOut = 0;  ///< drives of the machine that are not recorded, as there are too many
};

/**
 * The configuration at one moment as the objects of the interface. It never changes, so any number of threads
 * read it without locks; holding a pointer to it keeps it alive.
 */
class Snapshot {
public:
  explicit Snapshot(Configuration configuration);
  ~Snapshot();
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;

  const Configuration& configuration() const { return m_configuration; }
  bool hasFault(FaultKind kind) const;

  /** The drives, pools and volumes, in this order, each in ascending order of numbers. */
  const std::vector<RaidObject*>& objects() const { return m_objects; }

private:
  class Drive;
  class Pool;
  class Volume;
  class PoolExtent;
  class VolumeExtent;

  void addDrives();
  void addPools();
  void addVolumes();

  const Configuration m_configuration;
  const Health m_health;
  std::vector<std::unique_ptr<RaidObject>> m_owned;
  std::map<std::uint16_t, Drive*> m_driveOfNumber;
  std::map<std::uint32_t, Pool*> m_poolOfId;
  std::vector<RaidObject*> m_objects;
};

}  // namespace voltvk

#endif
