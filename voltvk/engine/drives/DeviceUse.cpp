// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DeviceUse.h"

#include "voltvk/engine/drives/SystemText.h"
#include "voltvk/engine/state/PlainText.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace voltvk {

namespace {

const std::string NODES = "/dev/";

/** The mount table writes blanks and their like as "\\040". */
std::string unescaped(const std::string& field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const std::string octal = field[i] == '\\' ? field.substr(i + 1, 3) : "";
    if (octal.size() == 3 && octal.find_first_not_of("01234567") == std::string::npos) {
      text += static_cast<char>(std::stoi(octal, nullptr, 8));
      i += 3;
    } else {
      text += field[i];
    }
  }
  return text;
}

/** Whether it is one of the device mapper's. */
bool isMapped(const std::string& device) {
  return device.rfind("dm-", 0) == 0;
}

/** How the device mapper's names of a volume group's devices begin: hyphens in the group's name are doubled.
 */
std::string mapperPrefix(const std::string& group) {
  std::string prefix;
  for (const char character : group) {
    prefix.append(character == '-' ? 2 : 1, character);
  }
  return prefix + '-';
}

}  // namespace

DeviceUse::DeviceUse(
    const std::string& sysfs, const std::string& mountInfo, const std::string& swaps,
    const std::string& ownGroup)
    : m_blockDirectory(sysfs + "/block") {
  readDevices();
  if (!ownGroup.empty()) {
    setGroupApart(ownGroup);
  }
  readFileSystems(sysfs + "/fs/btrfs");
  readMounts(mountInfo);
  readSwaps(swaps);
  for (const std::set<std::string>& devices : m_fileSystems) {
    for (const std::string& device : devices) {
      setUse(device, "is part of a mounted btrfs file system");
    }
  }
  for (const auto& [upper, lowers] : m_stackedUpon) {
    const auto mapped = m_mapped.find(upper);
    for (const std::string& lower : lowers) {
      setUse(
          lower, "is held by " + upper + (mapped == m_mapped.end() ? "" : " (" + mapped->second.name + ")"));
    }
  }
}

std::string DeviceUse::useOf(const std::string& drive) const {
  const auto use = m_uses.find(drive);
  return use == m_uses.end() ? "" : use->second;
}

void DeviceUse::setUse(const std::string& device, const std::string& use) {
  m_uses.emplace(device, use);
  const auto parent = m_parent.find(device);
  if (parent != m_parent.end()) {
    m_uses.emplace(parent->second, use);
  }
}

void DeviceUse::readDevices() {
  // The kernel lists a stacked device in "slaves" of the upper and in "holders" of the lower one; some
  // drivers fill only one of them.
  const auto readHolders = [this](const std::string& device, const std::string& directory) {
    for (const std::string& holder : listDirectory(directory + "/holders")) {
      m_stackedUpon[holder].insert(device);
    }
  };
  for (const std::string& device : listDirectory(m_blockDirectory)) {
    const std::string directory = pathOf(m_blockDirectory, device);
    m_nameOfNumber.emplace(readSystemText(directory + "/dev"), device);
    readHolders(device, directory);
    for (const std::string& child : listDirectory(directory)) {
      const std::string childDirectory = pathOf(directory, child);
      if (!readSystemText(pathOf(childDirectory, "partition")).empty()) {
        m_parent[child] = device;
        m_nameOfNumber.emplace(readSystemText(pathOf(childDirectory, "dev")), child);
        readHolders(child, childDirectory);
      }
    }
    for (const std::string& slave : listDirectory(directory + "/slaves")) {
      m_stackedUpon[device].insert(slave);
    }
    if (isMapped(device)) {
      m_stackedUpon[device];
    }
  }
  m_nameOfNumber.erase("");  // a device that vanished meanwhile
  readMapped();
}

void DeviceUse::readMapped() {
  // The volume manager makes devices that it needs for a moment. A drive's holders may name one that appeared
  // after the devices were listed, so a device counts only if its name is there before and after its UUID.
  for (auto entry = m_stackedUpon.begin(); entry != m_stackedUpon.end();) {
    const std::string directory = m_blockDirectory + "/" + entry->first + "/dm/";
    const std::string name = readSystemText(directory + "name");
    const std::string uuid = readSystemText(directory + "uuid");
    const bool wasThere = !name.empty() && readSystemText(directory + "name") == name;
    if (wasThere) {
      m_mapped[entry->first] = {name, uuid};
    }
    entry = wasThere || !isMapped(entry->first) ? std::next(entry) : m_stackedUpon.erase(entry);
  }
}

void DeviceUse::setGroupApart(const std::string& group) {
  const std::string prefix = mapperPrefix(group);
  for (const auto& [device, mapped] : m_mapped) {
    // A second hyphen would belong to a longer name of another group.
    if (mapped.uuid.rfind("LVM-", 0) != 0 || mapped.name.rfind(prefix, 0) != 0 ||
        mapped.name[prefix.size()] == '-') {
      continue;
    }
    const auto lowers = m_stackedUpon.find(device);
    if (lowers != m_stackedUpon.end()) {
      m_belowOwnGroup.insert(lowers->second.begin(), lowers->second.end());
      m_stackedUpon.erase(lowers);
    }
  }
}

void DeviceUse::readFileSystems(const std::string& btrfs) {
  for (const std::string& fileSystem : listDirectory(btrfs)) {
    const std::vector<std::string> devices = listDirectory(pathOf(btrfs, fileSystem) + "/devices");
    m_fileSystems.emplace_back(devices.begin(), devices.end());
  }
}

void DeviceUse::addWithBases(const std::string& device, std::set<std::string>& out) const {
  if (device.empty() || !out.insert(device).second) {
    return;
  }
  const auto parent = m_parent.find(device);
  if (parent != m_parent.end()) {
    addWithBases(parent->second, out);
  }
  const auto addAll = [&](const std::set<std::string>& devices) {
    for (const std::string& other : devices) {
      addWithBases(other, out);
    }
  };
  const auto stacked = m_stackedUpon.find(device);
  if (stacked != m_stackedUpon.end()) {
    addAll(stacked->second);
  }
  for (const std::set<std::string>& devices : m_fileSystems) {
    if (devices.count(device) != 0) {
      addAll(devices);
    }
  }
}

std::string DeviceUse::kernelName(const std::string& node) const {
  const std::string name = baseName(node);
  const auto mapped = std::find_if(
      m_mapped.begin(), m_mapped.end(), [&](const auto& entry) { return entry.second.name == name; });
  return mapped != m_mapped.end() ? mapped->first : kernelNameOf(node);
}

std::vector<std::string>
DeviceUse::mountedDevices(const std::string& number, const std::string& sources) const {
  const auto known = m_nameOfNumber.find(number);
  if (known != m_nameOfNumber.end()) {
    return {known->second};
  }
  // Some file systems have a device number of their own; the source then names their devices.
  std::vector<std::string> devices;
  std::istringstream list(sources);
  list.exceptions(std::ios::badbit);
  for (std::string source; std::getline(list, source, ':');) {
    if (source.rfind(NODES, 0) == 0) {
      devices.push_back(kernelName(unescaped(source)));
    }
  }
  return devices;
}

void DeviceUse::readMounts(const std::string& mountInfo) {
  std::istringstream table(readSystemFile(mountInfo));
  table.exceptions(
      std::ios::badbit);  // without memory, a mount that is left out would make its drive look free
  std::string line;
  std::vector<std::string> rootDevices;
  while (std::getline(table, line)) {
    // Number, parent, major:minor, root, mount point, options, optional fields, "-", type, source.
    std::istringstream fields(line);
    fields.exceptions(std::ios::badbit);
    std::string number;
    std::string ignored;
    std::string point;
    fields >> ignored >> ignored >> number >> ignored >> point;
    while (fields >> ignored && ignored != "-") {
    }
    std::string sources;
    fields >> ignored >> sources;
    const std::vector<std::string> devices = mountedDevices(number, sources);
    for (const std::string& device : devices) {
      setUse(device, "is mounted at " + cleanText(unescaped(point)));
    }
    if (point == "/") {
      rootDevices = devices;  // the last mount covers what was there before
    }
  }
  for (const std::string& device : rootDevices) {
    addWithBases(device, m_bootable);
  }
}

void DeviceUse::readSwaps(const std::string& swaps) {
  std::istringstream table(readSystemFile(swaps));
  table.exceptions(std::ios::badbit);
  std::string line;
  std::getline(table, line);  // skip the heading
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    fields.exceptions(std::ios::badbit);
    std::string source;
    fields >> source;
    if (source.rfind(NODES, 0) == 0) {
      setUse(kernelName(unescaped(source)), "is used for swap");
    }
  }
}

}  // namespace voltvk
