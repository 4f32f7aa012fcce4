// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/HostDriveScanner.h"

#include "voltvk/LogicalDevice.h"
#include "voltvk/engine/drives/DeviceUse.h"
#include "voltvk/engine/drives/SystemText.h"
#include "voltvk/engine/state/PlainText.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <set>

#include <unistd.h>

namespace voltvk {

namespace {

/** Kernel names that are not drives. A RAID device ("md0") is one. */
bool isNoDrive(const std::string& name) {
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

std::string linkTarget(const std::string& path) {
  std::array<char, PATH_MAX> real{};
  return realpath(path.c_str(), real.data()) == nullptr ? "" : real.data();
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
  const std::string subsystem = baseName(linkTarget(directory + "/device/subsystem"));
  const std::string place = linkTarget(directory);
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

/** What distinguishes the drive from all others, even after a reboot that changed the device nodes. */
std::string identityOf(const DriveRecord& drive) {
  if (!drive.wwid.empty()) {
    return "wwid:" + drive.wwid;
  }
  return drive.serial.empty() ? "name:" + drive.name : "serial:" + drive.serial + "/" + drive.model;
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
  drive.partitioned = hasPartitions(directory);
  drive.identity = identityOf(drive);
  return drive;
}

}  // namespace

HostDriveScanner HostDriveScanner::ofThisMachine() {
  const char* root = secure_getenv("VOLTVK_HOST_ROOT");
  const std::string prefix = root == nullptr ? "" : root;
  return {prefix + "/sys", prefix + "/proc/self/mountinfo", prefix + "/proc/swaps"};
}

HostDriveScanner::HostDriveScanner(std::string sysfs, std::string mountInfo, std::string swaps)
    : m_sysfs(std::move(sysfs)), m_mountInfo(std::move(mountInfo)), m_swaps(std::move(swaps)) {}

std::vector<DriveRecord> HostDriveScanner::scan() const {
  const DeviceUse use(m_sysfs, m_mountInfo, m_swaps);
  std::vector<DriveRecord> drives;
  std::set<std::string> identities;
  for (const std::string& name : listDirectory(m_sysfs + "/block")) {
    if (isNoDrive(name)) {
      continue;
    }
    DriveRecord drive = describe(m_sysfs + "/block/" + name, name);
    if (drive.sectors == 0) {
      continue;
    }
    if (!identities.insert(drive.identity).second) {
      drive.identity += "/" + drive.name;  // cheap bridges give every drive the same serial number
      identities.insert(drive.identity);
    }
    drive.bootable = use.isBootable(name);
    drive.mounted = use.isUsed(name) || drive.bootable;
    drives.push_back(std::move(drive));
  }
  return drives;
}

}  // namespace voltvk
