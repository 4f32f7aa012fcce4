// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H
#define VOLTVK_ENGINE_DRIVES_HOSTDRIVESCANNER_H

#include "voltvk/engine/state/Records.h"

#include <memory>
#include <string>
#include <vector>

namespace voltvk {

class DeviceUse;
class DriveContents;

/**
 * Reads the machine's block devices from sysfs, what they are used for from the mount and swap tables, and,
 * if asked to, what is stored on them from the drives. Read-only, and may be used from several threads.
 * Copies share what they know of the drives' contents.
 */
class HostDriveScanner {
public:
  /** Scans the running machine, or the tree under $VOLTVK_HOST_ROOT (recorded trees, containers). */
  static HostDriveScanner ofThisMachine();

  /**
   * @param sysfs the mount point of sysfs, with the directory "block"
   * @param mountInfo a table like /proc/self/mountinfo
   * @param swaps a table like /proc/swaps
   * @param root what precedes "/dev" in the paths of the drives' device nodes
   */
  HostDriveScanner(std::string sysfs, std::string mountInfo, std::string swaps, const std::string& root = "");

  /**
   * The drives present now, by name. Loop, RAM, device-mapper, optical, floppy and hidden devices, the boot
   * areas of an eMMC and what has size 0 are left out, as is a drive that disappears in the meantime. Several
   * paths to one unit are one drive. What the system does not report is empty. The numbers are not set.
   * @param ownGroup the volume group that the backing keeps on the drives: its devices, and what they are
   *   used for, do not count as use of the drives, and the contents of drives that nothing else uses are
   * looked at. If empty, no drive is opened, and the contents are empty.
   */
  std::vector<DriveRecord> scan(const std::string& ownGroup = "") const;

private:
  void readContents(std::vector<DriveRecord>& drives, const DeviceUse& use) const;

  std::string m_sysfs;
  std::string m_mountInfo;
  std::string m_swaps;
  std::shared_ptr<DriveContents> m_contents;
};

}  // namespace voltvk

#endif
