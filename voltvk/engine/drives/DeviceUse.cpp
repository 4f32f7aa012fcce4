// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DeviceUse.h"

#include "voltvk/engine/drives/SystemText.h"

#include <sstream>

namespace voltvk {

DeviceUse::DeviceUse(const std::string& sysfs, const std::string& mountInfo, const std::string& swaps)
    : m_blockDirectory(sysfs + "/block") {
  readDevices();
  for (const auto& [upper, lowers] : m_stackedUpon) {
    for (const std::string& lower : lowers) {
      addWithBases(lower, m_used);
    }
  }
  readMounts(mountInfo);
  readSwaps(swaps);
}

void DeviceUse::readDevices() {
  for (const std::string& device : listDirectory(m_blockDirectory)) {
    const std::string directory = pathOf(m_blockDirectory, device);
    m_nameOfNumber[readSystemText(directory + "/dev")] = device;
    for (const std::string& child : listDirectory(directory)) {
      const std::string childDirectory = pathOf(directory, child);
      if (!readSystemText(pathOf(childDirectory, "partition")).empty()) {
        m_parent[child] = device;
        m_nameOfNumber[readSystemText(pathOf(childDirectory, "dev"))] = child;
      }
    }
    for (const std::string& slave : listDirectory(directory + "/slaves")) {
      m_stackedUpon[device].insert(slave);
    }
    const std::string mapperName = readSystemText(directory + "/dm/name");
    if (!mapperName.empty()) {
      m_mapperNames[mapperName] = device;
    }
  }
}

void DeviceUse::addWithBases(const std::string& device, std::set<std::string>& out) const {
  if (device.empty() || !out.insert(device).second) {
    return;
  }
  auto parent = m_parent.find(device);
  if (parent != m_parent.end()) {
    addWithBases(parent->second, out);
  }
  auto stacked = m_stackedUpon.find(device);
  if (stacked != m_stackedUpon.end()) {
    for (const std::string& lower : stacked->second) {
      addWithBases(lower, out);
    }
  }
}

std::string DeviceUse::kernelName(const std::string& node) const {
  const std::string name = baseName(node);
  auto mapped = m_mapperNames.find(name);
  return mapped == m_mapperNames.end() ? name : mapped->second;
}

void DeviceUse::readMounts(const std::string& mountInfo) {
  std::istringstream table(readSystemFile(mountInfo));
  table.exceptions(
      std::ios::badbit);  // without memory, a mount that is left out would make its drive look free
  std::string line;
  std::string rootDevice;
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
    std::string source;
    fields >> ignored >> source;
    // Some file systems have a device number of their own; the source then names the device.
    auto known = m_nameOfNumber.find(number);
    std::string device = known != m_nameOfNumber.end()   ? known->second
                         : source.rfind("/dev/", 0) == 0 ? kernelName(source)
                                                         : std::string();
    addWithBases(device, m_used);
    if (point == "/") {
      rootDevice = device;  // the last mount covers what was there before
    }
  }
  addWithBases(rootDevice, m_bootable);
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
    if (source.rfind("/dev/", 0) == 0) {
      addWithBases(kernelName(source), m_used);
    }
  }
}

}  // namespace voltvk
