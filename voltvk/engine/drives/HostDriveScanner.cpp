// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/HostDriveScanner.h"

#include "voltvk/LogicalDevice.h"
#include "voltvk/engine/drives/ContentProbe.h"
#include "voltvk/engine/drives/DeviceUse.h"
#include "voltvk/engine/drives/DriveContents.h"
#include "voltvk/engine/drives/DriveIdentity.h"
#include "voltvk/engine/drives/SystemText.h"
#include "voltvk/engine/state/PlainText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>

#include <unistd.h>

namespace voltvk {

namespace {

/** Kernel names that are not drives. A RAID device ("md0") is one; the boot areas of an eMMC are not. */
bool isNoDrive(const std::string& name) {
  if (name.rfind("mmcblk", 0) == 0 && name.find_first_of("br", 6) != std::string::npos) {
    return true;  // "mmcblk0boot1", "mmcblk0rpmb": the firmware's
  }
  constexpr std::array<const char*, 6> KINDS = {"loop", "ram", "zram", "sr", "fd", "dm-"};
  return std::any_of(KINDS.begin(), KINDS.end(), [&](const std::string& kind) {
    return name.rfind(kind, 0) == 0 && name.find_first_not_of("0123456789", kind.size()) == std::string::npos;
  });
}

std::uint64_t readNumber(const std::string& path) {
  const std::string text = readSystemText(path);
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
    return 0;
  }
  return std::min<std::uint64_t>(std::strtoull(text.c_str(), nullptr, 10), MAX_DRIVE_SECTORS);
}

/** The text of the first file that is not empty. */
std::string firstText(const std::string& directory, std::initializer_list<const char*> files) {
  for (const char* file : files) {
    std::string text = readSystemText(directory + "/" + file);
    if (!text.empty()) {
      return text;
    }
  }
  return {};
}

/** SCSI drives report their serial number in a binary page: 4 bytes of header, then the text. */
std::string serialNumber(const std::string& directory) {
  std::string serial = firstText(directory, {"device/serial", "serial"});
  if (serial.empty()) {
    const std::string page = readSystemFile(directory + "/device/vpd_pg80");
    serial = page.size() > 4 ? cleanText(std::string_view(page).substr(4)) : "";
  }
  return serial;
}

/** The vendor's name. If the file holds a PCI vendor ID, it does not name the drive's vendor. */
std::string vendorName(const std::string& directory) {
  std::string vendor = readSystemText(directory + "/device/vendor");
  return vendor.rfind("0x", 0) == 0 ? "" : vendor;
}

TvkInterfaceType interfaceType(const std::string& directory, const DriveRecord& drive) {
  const std::string subsystem = baseName(realPath(directory + "/device/subsystem"));
  const std::string place = realPath(directory);
  if (subsystem.rfind("nvme", 0) == 0 || baseName(directory).rfind("nvme", 0) == 0) {
    return TVK_INTERFACE_NVME;
  }
  if (subsystem == "virtio" || baseName(directory).rfind("vd", 0) == 0) {
    return TVK_INTERFACE_VIRTIO;
  }
  if (place.find("/usb") != std::string::npos) {
    return TVK_INTERFACE_USB;
  }
  if (place.find("/ata") != std::string::npos || drive.vendor == "ATA") {
    return TVK_INTERFACE_SATA;
  }
  return subsystem == "scsi" || baseName(directory).rfind("sd", 0) == 0 ? TVK_INTERFACE_SAS
                                                                        : TVK_INTERFACE_UNKNOWN;
}

bool hasPartitions(const std::string& directory) {
  const std::vector<std::string> children = listDirectory(directory);
  return std::any_of(children.begin(), children.end(), [&](const std::string& child) {
    return !readSystemText(directory + "/" + child + "/partition").empty();
  });
}

/** Both are the same unit behind different ports: a path to it each. */
bool arePaths(const DriveRecord& one, const DriveRecord& other) {
  return one.identity == other.identity && !one.wwid.empty() && one.serial == other.serial &&
         one.model == other.model && one.sectors == other.sectors &&
         one.interfaceType != TVK_INTERFACE_USB;  // cheap bridges give every drive the same WWID
}

/** Adds a path to the drive that it leads to: what is used through one path is used through all. */
void addPath(DriveRecord& drive, const DriveRecord& path) {
  drive.use = drive.use.empty() ? path.use : drive.use;
  drive.bootable |= path.bootable;
  drive.partitioned |= path.partitioned;
  drive.mounted |= path.mounted;
  drive.readOnly |= path.readOnly;
}

DriveRecord describe(const std::string& directory, const std::string& kernelName) {
  DriveRecord drive;
  drive.sectors = readNumber(directory + "/size");
  if (drive.sectors == 0 || readNumber(directory + "/hidden") == 1) {
    drive.sectors = 0;  // empty, gone, or one of several paths to a drive that has its own entry
    return drive;
  }
  drive.name = "/dev/" + kernelName;
  std::replace(drive.name.begin(), drive.name.end(), '!', '/');  // sysfs writes a slash this way
  drive.serial = serialNumber(directory);
  drive.wwid = firstText(directory, {"device/wwid", "wwid", "device/cid", "md/uuid"});
  drive.vendor = vendorName(directory);
  drive.model = firstText(directory, {"device/model", "device/name"});
  drive.type = readNumber(directory + "/queue/rotational") == 1 ? TVK_DEVICE_HDD : TVK_DEVICE_SSD;
  drive.interfaceType = interfaceType(directory, drive);
  drive.removable = readNumber(directory + "/removable") == 1;
  drive.readOnly = readNumber(directory + "/ro") == 1;
  drive.partitioned = hasPartitions(directory);
  drive.place = placeOf(directory);
  return drive;
}

}  // namespace

HostDriveScanner HostDriveScanner::ofThisMachine() {
  const std::string root = hostRoot();
  return {root + "/sys", root + "/proc/self/mountinfo", root + "/proc/swaps", root};
}

HostDriveScanner::HostDriveScanner(
    std::string sysfs, std::string mountInfo, std::string swaps, const std::string& root)
    : m_sysfs(std::move(sysfs)), m_mountInfo(std::move(mountInfo)), m_swaps(std::move(swaps)),
      m_contents(std::make_shared<DriveContents>(root)) {}

std::vector<DriveRecord> HostDriveScanner::scan(const std::string& ownGroup) const {
  const DeviceUse use(m_sysfs, m_mountInfo, m_swaps, ownGroup);
  std::vector<DriveRecord> drives;
  std::set<std::string> places;
  for (const std::string& name : listDirectory(m_sysfs + "/block")) {
    DriveRecord drive = isNoDrive(name) ? DriveRecord() : describe(m_sysfs + "/block/" + name, name);
    if (drive.sectors == 0) {
      continue;
    }
    if (!places.insert(drive.place).second) {
      drive.place += "/" + name;  // several units of a controller that does not number them
    }
    drive.identity = identityOf(drive);
    drive.use = use.useOf(name);
    drive.bootable = use.isBootable(name);
    drive.mounted = !drive.use.empty() || drive.bootable;
    const auto known = std::find_if(
        drives.begin(), drives.end(), [&](const DriveRecord& other) { return arePaths(other, drive); });
    if (known != drives.end()) {
      addPath(*known, drive);
    } else {
      drives.push_back(std::move(drive));
    }
  }
  if (!ownGroup.empty()) {
    readContents(drives, use);
  }
  return drives;
}

void HostDriveScanner::readContents(std::vector<DriveRecord>& drives, const DeviceUse& use) const {
  for (DriveRecord& drive : drives) {
    const std::string name = kernelNameOf(drive.name);
    if (use.isBelowOwnGroup(name)) {
      drive.content = PHYSICAL_VOLUME;  // it is busy with the group's volumes, and there is nothing to learn
    } else if (!drive.mounted && !drive.partitioned) {
      drive.content = m_contents->of(drive, m_sysfs + "/block/" + name);
    }
  }
}

}  // namespace voltvk
