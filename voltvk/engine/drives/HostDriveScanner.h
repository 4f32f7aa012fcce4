// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H
#define VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H

#include "voltvk/engine/state/Records.h"

#include <string>
#include <vector>

namespace voltvk {

/**
 * Reads the machine's block devices from sysfs, and what they are used for from the mount and swap tables.
 * Read-only and stateless, so it may be used from several threads.
 */
class HostDriveScanner {
public:
  /** Scans the running machine, or the tree under $VOLTVK_HOST_ROOT (recorded trees, containers). */
  static HostDriveScanner ofThisMachine();

  /**
   * @param sysfs the mount point of sysfs, with the directory "block"
   * @param mountInfo a table like /proc/self/mountinfo
   * @param swaps a table like /proc/swaps
   */
  HostDriveScanner(std::string sysfs, std::string mountInfo, std::string swaps);

  /**
   * The drives present now, by name. Loop, RAM, device-mapper, optical, floppy and hidden devices, the boot
   * areas of an eMMC and what has size 0 are left out, as is a drive that disappears in the meantime. Several
   * paths to one unit are one drive. What the system does not report is empty. The numbers are not set.
   */
  std::vector<DriveRecord> scan() const;

private:
  std::string m_sysfs;
  std::string m_mountInfo;
  std::string m_swaps;
};

}  // namespace voltvk

#endif
