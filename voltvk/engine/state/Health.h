// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_HEALTH_H
#define VOLTVK_ENGINE_STATE_HEALTH_H

#include "voltvk/Ret.h"
#include "voltvk/engine/state/Records.h"

#include <map>
#include <string>
#include <vector>

namespace voltvk {

/** Why a drive cannot join a pool. */
struct Obstacle {
  TvkStatus status = TVK_OK;  ///< with which such a pool is refused; TVK_OK if the drive is free
  std::string reason;       ///< the end of a sentence about the drive: "has partitions"; empty if it is free
  const char* advice = "";  ///< what to do instead
};

/**
 * @param owner the pool that the drive belongs to, or null
 * @param realDrivesOnly whether pools have to store something on their drives
 */
Obstacle obstacleOf(const DriveRecord& drive, const PoolRecord* owner, bool realDrivesOnly = false);

/** Whether the drive keeps itself out of pools, however it is used. @param realDrivesOnly as above */
bool isUnsuitable(const DriveRecord& drive, bool realDrivesOnly = false);

/** @param reason what the drive is or does: "has partitions" @param advice what to do instead */
Obstacle ineligible(const std::string& reason, const char* advice);

/** @param content what is stored on a drive of no pool, or why that is unknown; empty if nothing is */
Obstacle obstacleOfContent(const std::string& content);

/**
 * What is wrong with drives, pools and volumes; nothing else decides it. A drive of a pool is in trouble
 * while it is missing, too small for what the pool keeps on it, or used by something else; its pools and
 * their volumes are then degraded. What is stored on it is the pool's own business. Never changes, so any
 * number of threads may use it.
 */
class Health {
public:
  Health(
      const std::vector<DriveRecord>& drives, const std::vector<PoolRecord>& pools,
      const std::vector<VolumeRecord>& volumes);

  /** Why the drive, pool or volume is not in order: "drive 3 (/dev/sdb) is missing"; empty while it is. */
  const std::string& ofDrive(std::uint16_t number) const { return find(m_drives, number); }
  const std::string& ofPool(std::uint32_t id) const { return find(m_pools, id); }
  const std::string& ofVolume(std::uint32_t id) const { return find(m_volumes, id); }

private:
  using Reasons = std::map<std::uint32_t, std::string>;
  static const std::string& find(const Reasons& reasons, std::uint32_t key);

  Reasons m_drives;
  Reasons m_pools;
  Reasons m_volumes;
};

}  // namespace voltvk

#endif
