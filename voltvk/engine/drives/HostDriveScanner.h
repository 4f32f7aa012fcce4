// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H
#define VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H

#include "voltvk/engine/state/Records.h"

#include <string>
#include <vector>

namespace voltvk {

/**
 * Reads the machine's block devices from sysfs, and what they are used for from the mount and swap
 * tables. Reads only; holds no state, so it may be used from several threads.
 */
class HostDriveScanner {
public:
  /** The running machine, or what lies below $VOLTVK_HOST_ROOT (recorded trees, containers). */
  static HostDriveScanner ofThisMachine();

  /**
   * @param sysfs the mount point of sysfs, with the directory "block"
   * @param mountInfo a table as /proc/self/mountinfo
   * @param swaps a table as /proc/swaps
   */
  HostDriveScanner(std::string sysfs, std::string mountInfo, std::string swaps);

  /**
   * The drives that are there now, by name. Loop, RAM, device-mapper, optical, floppy and hidden
   * devices and those of size 0 are left out. A drive that vanishes meanwhile is left out too.
   * What the system does not tell is empty. The numbers are not set.
   */
  std::vector<DriveRecord> scan() const;

private:
  std::string m_sysfs;
  std::string m_mountInfo;
  std::string m_swaps;
};

}  // namespace voltvk

#endif
