// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DriveRegistry.h"

#include "voltvk/Limits.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/engine/drives/DriveIdentity.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/PlainText.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

namespace voltvk {

namespace {

constexpr std::uint64_t MIN_VIRTUAL_SECTORS = 2048;
constexpr std::size_t MAX_TEXT = 63;

auto looks(const DriveRecord& drive) {
  return std::tie(
      drive.identity, drive.name, drive.serial, drive.wwid, drive.vendor, drive.model, drive.sectors,
      drive.type, drive.interfaceType, drive.removable, drive.bootable, drive.partitioned, drive.mounted,
      drive.readOnly, drive.use, drive.content);
}

std::string padded(std::int64_t number) {
  const std::string digits = std::to_string(number);
  return std::string(digits.size() < 8 ? 8 - digits.size() : 0, '0') + digits;
}

}  // namespace

bool DriveRegistry::differs(std::vector<DriveRecord> hostDrives) {
  const std::vector<DriveRecord> drives = SnapshotReader(m_connection).drives();
  const std::vector<const DriveRecord*> matches = matchDrives(drives, hostDrives);
  const std::set<const DriveRecord*> here(matches.begin(), matches.end());
  std::size_t newcomers = 0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    newcomers += matches[i] == nullptr ? 1 : 0;
    if (matches[i] != nullptr && (!matches[i]->present || looks(*matches[i]) != looks(hostDrives[i]))) {
      return true;
    }
  }
  if (std::any_of(drives.begin(), drives.end(), [&](const DriveRecord& drive) {
        return !drive.isVirtual && drive.present && here.count(&drive) == 0;
      })) {
    return true;
  }
  const auto kept = static_cast<std::size_t>(m_connection.number(
      "SELECT count(*) FROM drive WHERE present = 1 OR number IN (SELECT drive FROM pool_member)"));
  const std::size_t added = std::min(newcomers, CAPACITY - std::min(CAPACITY, kept));
  return added > 0 || newcomers != leftOut();
}

void DriveRegistry::reconcile(std::vector<DriveRecord> hostDrives) {
  const std::vector<DriveRecord> drives = SnapshotReader(m_connection).drives();
  const std::vector<const DriveRecord*> matches = matchDrives(drives, hostDrives);
  const std::set<const DriveRecord*> here(matches.begin(), matches.end());
  for (const DriveRecord& drive : drives) {
    if (!drive.isVirtual && drive.present && here.count(&drive) == 0) {
      Statement(m_connection, "UPDATE drive SET present = 0 WHERE number = ?", drive.number).run();
      reportChange(drive, false);
    }
  }
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (matches[i] != nullptr) {
      update(*matches[i], hostDrives[i]);
    }
  }
  std::size_t excess = 0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (matches[i] != nullptr) {
      continue;
    }
    if (insert(hostDrives[i])) {
      reportChange(hostDrives[i], true);
    } else {
      ++excess;
    }
  }
  if (excess != leftOut()) {
    reportLeftOut(excess);
  }
}

void DriveRegistry::forgetContents(const std::vector<std::uint16_t>& drives) {
  for (const std::uint16_t number : drives) {
    Statement(m_connection, "UPDATE drive SET content = '' WHERE number = ?", number).run();
  }
}

std::size_t DriveRegistry::leftOut() {
  return static_cast<std::size_t>(
      m_connection.number("SELECT value FROM setting WHERE name = 'drives_left_out'"));
}

void DriveRegistry::reportLeftOut(std::size_t count) {
  Statement(m_connection, "UPDATE setting SET value = ? WHERE name = 'drives_left_out'", count).run();
  if (count > 0) {
    EventJournal(m_connection)
        .append(
            TVK_EVENT_DRIVES_LEFT_OUT, TVK_EVENT_WARNING,
            "{} drives of the machine are left out, since there are {} already",
            {std::to_string(count), std::to_string(CAPACITY)});
  }
}

void DriveRegistry::update(const DriveRecord& known, const DriveRecord& found) {
  if (known.present && looks(known) == looks(found)) {
    return;
  }
  Statement(
      m_connection,
      "UPDATE drive SET present = 1, identity = ?, name = ?, serial = ?, wwid = ?, vendor = ?, model = ?,"
      " sectors = ?, type = ?, interface = ?, removable = ?, bootable = ?, partitioned = ?, mounted = ?,"
      " read_only = ?, use = ?, content = ? WHERE number = ?",
      found.identity, found.name, found.serial, found.wwid, found.vendor, found.model, found.sectors,
      found.type, found.interfaceType, found.removable, found.bootable, found.partitioned, found.mounted,
      found.readOnly, found.use, found.content, known.number)
      .run();
  if (!known.present) {
    reportChange(found, true);
  }
}

int DriveRegistry::freeNumber() {
  const auto next = m_connection.number("SELECT value FROM setting WHERE name = 'last_drive_number'") + 1;
  if (next <= TVK_LARGEST_DEVICE_NUMBER) {
    Statement(m_connection, "UPDATE setting SET value = ? WHERE name = 'last_drive_number'", next).run();
    return static_cast<int>(next);
  }
  std::array<bool, TVK_LARGEST_DEVICE_NUMBER + 1> taken{};
  Statement rows(m_connection, "SELECT number FROM drive");
  while (rows.step()) {
    taken[rows.as<std::uint8_t>(0)] = true;
  }
  const auto* free = std::find(taken.begin(), taken.end(), false);
  return free == taken.end() ? -1 : static_cast<int>(free - taken.begin());
}

bool DriveRegistry::insert(DriveRecord& drive) {
  if (m_connection.number("SELECT count(*) FROM drive") >= static_cast<std::int64_t>(CAPACITY)) {
    // Make room: drop a drive that was unplugged and is not used by any pool.
    m_connection.execute("DELETE FROM drive WHERE number = (SELECT min(number) FROM drive WHERE present = 0"
                         " AND number NOT IN (SELECT drive FROM pool_member))");
    if (m_connection.changes() == 0) {
      return false;
    }
  }
  const int number = freeNumber();
  if (number < 0) {
    return false;
  }
  drive.number = static_cast<std::uint16_t>(number);
  if (drive.isVirtual) {
    drive.name = "/dev/tvk" + std::to_string(number);
  }
  Statement(
      m_connection,
      "INSERT INTO drive(number, identity, virtual, present, name, serial, wwid, vendor, model, sectors,"
      " type, interface, removable, bootable, partitioned, mounted, read_only, use, content)"
      " VALUES(?, ?, ?, 1, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      drive.number, drive.identity, drive.isVirtual, drive.name, drive.serial, drive.wwid, drive.vendor,
      drive.model, drive.sectors, drive.type, drive.interfaceType, drive.removable, drive.bootable,
      drive.partitioned, drive.mounted, drive.readOnly, drive.use, drive.content)
      .run();
  return true;
}

std::uint16_t DriveRegistry::addVirtual(const VirtualDriveSpec& spec) {
  if (spec.sectors < MIN_VIRTUAL_SECTORS || spec.sectors > MAX_DRIVE_SECTORS) {
    throw Refusal(TVK_INVALID_CAPACITY, "a virtual drive has 1 MiB to 16 EiB; give another size");
  }
  if (!isPlainText(spec.model, MAX_TEXT) || !isPlainText(spec.serial, MAX_TEXT)) {
    throw Refusal(
        TVK_INVALID_NAME,
        "a model or serial number has at most " + std::to_string(MAX_TEXT) + " bytes of printable UTF-8");
  }
  const auto count = m_connection.number("SELECT value FROM setting WHERE name = 'last_virtual_drive'") + 1;
  Statement(m_connection, "UPDATE setting SET value = ? WHERE name = 'last_virtual_drive'", count).run();
  const bool isSsd = spec.type == TVK_DEVICE_SSD;
  DriveRecord drive;
  drive.isVirtual = true;
  drive.serial = spec.serial.empty() ? "TVK" + padded(count) : spec.serial;
  drive.identity = "virtual:" + drive.serial;
  drive.wwid = "tvk." + drive.serial;
  drive.vendor = "VOLTVK";
  drive.model = !spec.model.empty() ? spec.model : isSsd ? "Virtual SSD" : "Virtual HDD";
  drive.sectors = spec.sectors;
  drive.type = spec.type;
  drive.interfaceType = TVK_INTERFACE_VIRTUAL;
  Statement same(m_connection, "SELECT number FROM drive WHERE identity = ?", drive.identity);
  if (same.step()) {
    throw Refusal(
        TVK_NAME_IN_USE, "drive " + std::to_string(same.integer(0)) + " has the serial number " +
                             drive.serial + "; give another one");
  }
  if (!insert(drive)) {
    throw Refusal(
        TVK_TOO_MANY_DEVICES, "there are " + std::to_string(CAPACITY) + " drives already; remove one first");
  }
  reportChange(drive, true);
  return drive.number;
}

void DriveRegistry::removeVirtual(std::uint16_t number) {
  const std::string name = "drive " + std::to_string(number);
  for (const DriveRecord& drive : SnapshotReader(m_connection).drives()) {
    if (drive.number != number) {
      continue;
    }
    if (!drive.isVirtual) {
      throw Refusal(TVK_DEVICE_NOT_ELIGIBLE, name + " is a drive of this machine; unplug it instead");
    }
    Statement member(
        m_connection, "SELECT name FROM pool JOIN pool_member ON pool = id WHERE drive = ?", number);
    if (member.step()) {
      throw Refusal(
          TVK_DEVICE_IN_USE, name + " is a member of pool " + member.text(0) + "; delete the pool first");
    }
    Statement(m_connection, "DELETE FROM drive WHERE number = ?", number).run();
    reportChange(drive, false);
    return;
  }
  throw Refusal(TVK_NO_SUCH_DEVICE, "there is no " + name + "; see the list of drives");
}

void DriveRegistry::reportChange(const DriveRecord& drive, bool added) {
  EventJournal journal(m_connection);
  if (added) {
    journal.append(TVK_EVENT_DRIVE_ADDED, TVK_EVENT_INFORMATION, "Drive {} was added", {drive.name});
  } else {
    journal.append(TVK_EVENT_DRIVE_REMOVED, TVK_EVENT_WARNING, "Drive {} was removed", {drive.name});
  }
}

}  // namespace voltvk
