// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_KERNELACTIVITY_H
#define VOLTVK_ENGINE_ACTIVITY_KERNELACTIVITY_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/activity/TouchRecorder.h"
#include "voltvk/engine/backing/KernelCounters.h"
#include "voltvk/engine/state/Records.h"

namespace voltvk {

class Connection;

/**
 * What the kernel has counted for a real volume and the state does not contain yet: the counters of a tiered
 * volume's areas, and the growth of a cached volume's counters since they were last collected. The kernel
 * does not report sequential I/O separately, so all of it counts as random. Reads and writes of a tiered
 * volume count where its chunks are now; hits of a cache count as reads and writes of SSDs.
 */
class KernelActivity {
public:
  /**
   * Reads what is known of the volume, in a transaction of the caller, and writes nothing.
   * @param counters nothing has been counted as far as they are empty; for collect, as taken from the kernel
   * @throws DatabaseError
   */
  KernelActivity(Connection& connection, const VolumeRecord& volume, const KernelCounters& counters);

  /**
   * Adds it to the state: to the heat of the chunks and to the counters of the volume. An area of several
   * chunks spreads over them evenly. Works within the caller's transaction. Call it at most once.
   * @throws Refusal TVK_NO_SUCH_VOLUME if the volume is gone; DatabaseError
   */
  void collect(Connection& connection) const;

  /** Adds it to the statistics that the state contains. */
  void addTo(d_ioctl_user_stat& statistics) const;

private:
  void spread(Connection& connection);
  void compareCounters(Connection& connection);

  const VolumeRecord m_volume;
  const KernelCounters m_counters;
  VolumeTouches m_touches;
  Touches m_total;
  Touches m_onSsd;
};

/** Fills in the statistics of a volume, with what the kernel has counted since. Throws DatabaseError. */
void readStatistics(
    Connection& connection, const VolumeRecord& volume, const KernelCounters& counters,
    d_ioctl_user_stat& out);

}  // namespace voltvk

#endif
