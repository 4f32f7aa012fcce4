// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DEVICEUSE_H
#define VOLTVK_ENGINE_DRIVES_DEVICEUSE_H

#include <map>
#include <set>
#include <string>

namespace voltvk {

/**
 * Which block devices are in use: mounted, swapped on, or part of a device-mapper or RAID device.
 * Use of a partition, or of anything stacked on a drive, counts as use of the drive.
 */
class DeviceUse {
public:
  /** Parameters as for HostDriveScanner. Tables that cannot be read count as empty. */
  DeviceUse(const std::string& sysfs, const std::string& mountInfo, const std::string& swaps);

  bool isBootable(const std::string& drive) const { return m_bootable.count(drive) != 0; }
  bool isUsed(const std::string& drive) const { return m_used.count(drive) != 0; }

private:
  void readDevices();
  void readMounts(const std::string& mountInfo);
  void readSwaps(const std::string& swaps);
  /** Adds the device, its parent and everything that it is stacked on. */
  void addWithBases(const std::string& device, std::set<std::string>& out) const;
  /** The kernel's name for a device node such as "/dev/mapper/data"; empty when unknown. */
  std::string kernelName(const std::string& node) const;

  std::string m_blockDirectory;
  std::map<std::string, std::string> m_nameOfNumber;           // "8:1" -> "sda1"
  std::map<std::string, std::string> m_parent;                 // "sda1" -> "sda"
  std::map<std::string, std::set<std::string>> m_stackedUpon;  // "dm-0" -> "sda2", ...
  std::map<std::string, std::string> m_mapperNames;            // "data" -> "dm-0"
  std::set<std::string> m_bootable;
  std::set<std::string> m_used;
};

}  // namespace voltvk

#endif
