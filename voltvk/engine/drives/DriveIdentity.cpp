// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DriveIdentity.h"

#include "voltvk/engine/drives/SystemText.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace voltvk {

namespace {

constexpr const char* DIGITS = "0123456789";

/** True for "host3" if the kind is "host". */
bool isNumbered(const std::string& name, const std::string& kind) {
  return name.size() > kind.size() && name.compare(0, kind.size(), kind) == 0 &&
         name.find_first_not_of(DIGITS, kind.size()) == std::string::npos;
}

/** One part of a path in sysfs as it is in every run of the kernel; empty if it depends on the order only. */
std::string lastingPart(const std::string& directory, const std::string& name) {
  const auto numbered = [&](const char* kind, const std::string& file) {
    const std::string lasting = readSystemText(pathOf(directory, file));
    return lasting.empty() ? name : kind + lasting;
  };
  if (name == "block" || isNumbered(name, "host") || isNumbered(name, "virtio") || isNumbered(name, "nvme") ||
      name.compare(0, 6, "target") == 0) {
    return {};
  }
  if (isNumbered(name, "ata")) {
    return numbered("ata", "ata_port/" + name + "/port_no");
  }
  if (isNumbered(name, "usb")) {
    return numbered("usb", "version");
  }
  if (name.compare(0, 4, "nvme") == 0 && name.rfind('n') > 4) {
    return name.substr(name.rfind('n'));  // "nvme0n1", a namespace
  }
  // "3:0:1:0", a SCSI device on host 3, and "2-1.4:1.0", an interface of a device on USB bus 2.
  const std::size_t first = name.find_first_not_of(DIGITS);
  const bool isScsi = std::count(name.begin(), name.end(), ':') == 3 &&
                      name.find_first_not_of("0123456789:") == std::string::npos;
  const bool isUsb = first != 0 && first != std::string::npos && name[first] == '-';
  return isScsi || isUsb ? name.substr(first + 1) : name;
}

bool hasWwid(const DriveRecord& drive) {
  // Some drives report a WWID that consists of zeros.
  const std::size_t number = drive.wwid.find('.') + 1;
  return drive.wwid.find_first_not_of('0', number) != std::string::npos;
}

// COMPAT: states of 1.0.0 have these identities.
/** The identity that drives had when their serial numbers and device nodes were trusted. */
std::string formerIdentityOf(const DriveRecord& drive) {
  if (!drive.wwid.empty()) {
    return "wwid:" + drive.wwid;
  }
  return drive.serial.empty() ? "name:" + drive.name : "serial:" + drive.serial + "/" + drive.model;
}

/** The course of one matchDrives. */
class Matching {
public:
  Matching(const std::vector<DriveRecord>& known, std::vector<DriveRecord>& found)
      : m_found(found), m_matches(found.size()) {
    for (const DriveRecord& row : known) {
      if (!row.isVirtual) {
        m_open[row.identity] = &row;
      }
    }
    m_rows = m_open;
  }

  std::vector<const DriveRecord*> run() {
    // A drive that was kept apart once is never mistaken again for the one that it resembles.
    pair(identityApart, [](const DriveRecord&, const DriveRecord&) { return true; });
    const auto identity = [](const DriveRecord& drive) { return drive.identity; };
    // While a drive stays where it is, so does its device node.
    pair(identity, [](const DriveRecord& row, const DriveRecord& drive) {
      return row.name == drive.name && agree(row, drive);
    });
    pair(identity, [](const DriveRecord& row, const DriveRecord& drive) {
      return row.serial == drive.serial && row.model == drive.model && row.sectors == drive.sectors;
    });
    // The same drive after its size or the wording of its model has changed.
    pair(identity, agree);
    std::map<std::string, int> claims;
    for (const DriveRecord& drive : m_found) {
      ++claims[formerIdentityOf(drive)];
    }
    pair(formerIdentityOf, [&](const DriveRecord& row, const DriveRecord& drive) {
      return agree(row, drive) && claims[row.identity] == 1 && !hasFormerTwin(row.identity);
    });
    nameIdentities();
    return m_matches;
  }

private:
  template <typename Key, typename Rule>
  void pair(const Key& keyOf, const Rule& isSame) {
    for (std::size_t i = 0; i < m_found.size(); ++i) {
      const auto row = m_matches[i] == nullptr ? m_open.find(keyOf(m_found[i])) : m_open.end();
      if (row != m_open.end() && isSame(*row->second, m_found[i])) {
        m_matches[i] = row->second;
        m_open.erase(row);
      }
    }
  }

  static bool agree(const DriveRecord& row, const DriveRecord& drive) {
    return row.serial.empty() || drive.serial.empty() || row.serial == drive.serial;
  }

  /** The second and later drives with the same identity had their device node appended to it. */
  bool hasFormerTwin(const std::string& identity) const {
    const std::string twin = identity + "//dev/";
    const auto next = m_rows.lower_bound(twin);
    return next != m_rows.end() && next->first.compare(0, twin.size(), twin) == 0;
  }

  void nameIdentities() {
    std::set<std::string> claimed;
    for (std::size_t i = 0; i < m_found.size(); ++i) {
      const std::string apart = identityApart(m_found[i]);
      if (m_matches[i] != nullptr && m_matches[i]->identity == apart) {
        m_found[i].identity = apart;
      }
      if (m_matches[i] != nullptr) {
        claimed.insert(m_found[i].identity);
      }
    }
    for (std::size_t i = 0; i < m_found.size(); ++i) {
      DriveRecord& drive = m_found[i];
      if (m_matches[i] == nullptr &&
          (m_rows.count(drive.identity) != 0 || !claimed.insert(drive.identity).second)) {
        drive.identity = identityApart(drive);
      }
    }
  }

  std::vector<DriveRecord>& m_found;
  std::vector<const DriveRecord*> m_matches;
  std::map<std::string, const DriveRecord*> m_rows;
  std::map<std::string, const DriveRecord*> m_open;  ///< the rows that are not matched yet
};

}  // namespace

std::string placeOf(const std::string& directory) {
  const std::string real = realPath(directory);
  const std::string root = "/sys/devices/";
  const std::size_t devices = real.rfind(root);
  if (devices == std::string::npos) {
    return baseName(directory);
  }
  std::string path = real.substr(0, devices + root.size() - 1);
  std::istringstream parts(real.substr(devices + root.size()));
  parts.exceptions(std::ios::badbit);
  std::string place;
  for (std::string part; std::getline(parts, part, '/');) {
    const bool isNode = baseName(path) == "block" && path.find("/virtual/") == std::string::npos;
    path = pathOf(path, part);
    const std::string lasting = isNode ? "" : lastingPart(path, part);
    if (!lasting.empty()) {
      place += (place.empty() ? "" : "/") + lasting;
    }
  }
  return place;
}

std::string identityOf(const DriveRecord& drive) {
  return hasWwid(drive) ? "wwid:" + drive.wwid
                        : "path:" + drive.place + "/" + drive.model + "/" + drive.serial;
}

std::string identityApart(const DriveRecord& drive) {
  return "apart:" + drive.place + "/" + drive.model + "/" + drive.serial + "/" + drive.wwid;
}

std::vector<const DriveRecord*>
matchDrives(const std::vector<DriveRecord>& known, std::vector<DriveRecord>& found) {
  return Matching(known, found).run();
}

}  // namespace voltvk
