// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DEVICEUSE_H
#define VOLTVK_ENGINE_DRIVES_DEVICEUSE_H

#include <map>
#include <set>
#include <string>
#include <vector>

namespace voltvk {

/**
 * What the block devices are used for: mounted, swapped on, or part of another block device or a file system.
 * Use of a partition, or of anything stacked on a drive, counts as use of the drive.
 */
class DeviceUse {
public:
  /**
   * Parameters as for HostDriveScanner. Tables that cannot be read count as empty.
   * @param ownGroup the volume group whose devices are no use of what is below them; empty for none
   */
  DeviceUse(
      const std::string& sysfs, const std::string& mountInfo, const std::string& swaps,
      const std::string& ownGroup);

  bool isBootable(const std::string& drive) const { return m_bootable.count(drive) != 0; }
  /** The end of a sentence about the drive: "is mounted at /data"; empty if it is not used. */
  std::string useOf(const std::string& drive) const;
  /** True if devices of the own group are on the drive. */
  bool isBelowOwnGroup(const std::string& drive) const { return m_belowOwnGroup.count(drive) != 0; }

private:
  /** What the device mapper calls a device. */
  struct Mapped {
    std::string name;
    std::string uuid;
  };

  void readDevices();
  /** Reads the names of devices of the device mapper; forgets those that are coming or going. */
  void readMapped();
  /** Forgets what the group's devices are stacked upon, so that their use ends with them. */
  void setGroupApart(const std::string& group);
  void readFileSystems(const std::string& btrfs);
  void readMounts(const std::string& mountInfo);
  /** @param number "8:1" @param sources the device nodes of a mount, separated by colons */
  std::vector<std::string> mountedDevices(const std::string& number, const std::string& sources) const;
  void readSwaps(const std::string& swaps);
  /** Records the use of a device and of the drive that it is a partition of, unless another is known. */
  void setUse(const std::string& device, const std::string& use);
  /** Adds the device, its parent, what it is stacked on, and the other devices of its file system. */
  void addWithBases(const std::string& device, std::set<std::string>& out) const;
  /** The kernel's name for a device node such as "/dev/mapper/data" or "/dev/cciss/c0d0". */
  std::string kernelName(const std::string& node) const;

  std::string m_blockDirectory;
  std::map<std::string, std::string> m_nameOfNumber;           // "8:1" -> "sda1"
  std::map<std::string, std::string> m_parent;                 // "sda1" -> "sda"
  std::map<std::string, std::set<std::string>> m_stackedUpon;  // "dm-0" -> "sda2", ...
  std::set<std::string> m_belowOwnGroup;
  std::map<std::string, Mapped> m_mapped;            // by "dm-0"
  std::vector<std::set<std::string>> m_fileSystems;  // those that span devices
  std::set<std::string> m_bootable;
  std::map<std::string, std::string> m_uses;
};

}  // namespace voltvk

#endif
