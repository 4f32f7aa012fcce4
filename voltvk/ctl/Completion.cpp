// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/engine/contract/State.h"

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <set>

namespace voltvk::ctl {

namespace {

using Words = std::vector<std::string>;

/** Whether an option has its value in the next word. */
bool takesValue(const std::string& word) {
  return word == "-o" || word == "--output" || word == "--pool";
}

/** The words without options, before the last of them or behind it; the last one is still being written. */
Words withoutOptions(const Words& words) {
  Words left;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool isOption = i + 1 < words.size() && words[i].size() > 1 && words[i].front() == '-';
    if (!isOption) {
      left.push_back(words[i]);
    } else if (takesValue(words[i])) {
      ++i;
    }
  }
  return left;
}

/** The numbers of the drives of a pool with a name or number. */
std::set<std::uint16_t> drivesOf(const Configuration& configuration, const std::string& wanted) {
  std::set<std::uint16_t> drives;
  for (const PoolRecord& pool : configuration.pools) {
    if (pool.name == wanted || std::to_string(pool.id) == wanted) {
      for (const PoolMemberRecord& member : pool.members) {
        drives.insert(member.drive);
      }
    }
  }
  return drives;
}

/** What the last of some words may be. */
struct Wanted {
  bool volumes = false;
  bool virtualDrives = false;
  bool pools = false;
  bool freeDrives = false;
  std::string drivesOfPool;

  explicit Wanted(const Words& all) {
    const bool isValue = all.size() > 1 && takesValue(all[all.size() - 2]);
    const Words words = isValue ? Words() : withoutOptions(all);
    const auto begins = [&](std::size_t count, const char* group, std::initializer_list<const char*> verbs) {
      return words.size() == count && words[0] == group &&
             std::find(verbs.begin(), verbs.end(), words[1]) != verbs.end();
    };
    volumes = (words.size() == 2 && (words[0] == "io" || words[0] == "heat")) ||
              begins(3, "volume", {"flush", "grow"});
    virtualDrives = begins(3, "drive", {"remove"});
    pools = begins(3, "pool", {"add-drive", "replace-drive"}) || (isValue && all[all.size() - 2] == "--pool");
    freeDrives = begins(4, "pool", {"add-drive"}) || begins(5, "pool", {"replace-drive"});
    drivesOfPool = begins(4, "pool", {"replace-drive"}) ? words[2] : "";
  }
};

}  // namespace

void printCompletions(const Context& context, const Words& words) {
  const Wanted wanted(words);
  const bool drives = wanted.virtualDrives || wanted.freeDrives || !wanted.drivesOfPool.empty();
  if (!wanted.volumes && !wanted.pools && !drives) {
    return;
  }
  const std::shared_ptr<const Snapshot> snapshot = context.state()->snapshot();
  const std::set<std::uint16_t> members = drivesOf(snapshot->configuration(), wanted.drivesOfPool);
  for (const RaidObject* object : snapshot->objects()) {
    std::string name;
    if (const auto* volume = dynamic_cast<const VirtualVolume*>(object);
        volume != nullptr && wanted.volumes) {
      name = volume->getName();
    }
    if (const auto* pool = dynamic_cast<const VirtualPool*>(object); pool != nullptr && wanted.pools) {
      name = pool->isInternal() ? "" : pool->getName();
    }
    if (const auto* drive = dynamic_cast<const LogicalDevice*>(object); drive != nullptr) {
      const bool isVirtual = (drive->getDeviceProperty() & TVK_PROPERTY_VIRTUAL) != 0;
      const bool isWanted = (wanted.virtualDrives && isVirtual) ||
                            (wanted.freeDrives && *drive->getObstacle() == '\0') ||
                            members.count(drive->getDeviceNumber()) > 0;
      name = isWanted ? std::to_string(drive->getDeviceNumber()) : "";
    }
    if (!name.empty() && name.compare(0, words.back().size(), words.back()) == 0) {
      std::cout << name << '\n';
    }
  }
}

}  // namespace voltvk::ctl
