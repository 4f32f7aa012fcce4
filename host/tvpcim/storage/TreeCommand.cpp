// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/TreeCommand.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

Value textOrNull(const std::string& text) {
  return text.empty() ? Value::null(CMPI_string) : Value::string(text);
}

/** Puts the tree together from the members of volumes and pools. */
class TreeBuilder {
public:
  TreeBuilder(Inventory& inventory, Session& session) : m_inventory(inventory), m_session(session) {}

  std::vector<Instance> build() {
    // Members first: how full a drive is comes from the extents of all pools on it.
    for (const Instance& volume : m_inventory.all(VOLUME)) {
      const auto id = static_cast<std::uint32_t>(numberOf(volume, VOLUME.number));
      for (const Instance& member : m_inventory.members(VOLUME, id)) {
        const auto pool = static_cast<std::uint32_t>(numberOf(member, "VirtualPoolId"));
        m_poolsOf[id].emplace(pool, textOf(member, "VolumeName"));
        readPool(pool);
      }
    }
    for (const Instance& pool : m_inventory.all(POOL)) {
      readPool(static_cast<std::uint32_t>(numberOf(pool, POOL.number)));
    }
    std::vector<Instance> roots;
    std::set<std::uint32_t> underVolumes;
    for (const Instance& volume : m_inventory.all(VOLUME)) {
      roots.push_back(volumeNode(volume, underVolumes));
    }
    for (const auto& [pool, extents] : m_extents) {
      if (underVolumes.count(pool) == 0) {
        roots.push_back(poolNode(pool, ""));
      }
    }
    for (const Instance& drive : m_inventory.all(DRIVE)) {
      const std::uint64_t number = numberOf(drive, DRIVE.number);
      if (m_usedOfDrive.count(number) == 0) {
        roots.push_back(driveNode(number, ""));
      }
    }
    return roots;
  }

private:
  /** Sectors that a pool has on each drive, with the drive's name. */
  using Extents = std::map<std::uint64_t, std::pair<std::string, std::uint64_t>>;

  void readPool(std::uint32_t pool) {
    if (m_extents.count(pool) != 0) {
      return;
    }
    Extents& extents = m_extents[pool];
    for (const Instance& member : m_inventory.members(POOL, pool)) {
      const std::uint64_t drive = numberOf(member, "DeviceNumber");
      const std::uint64_t sectors = numberOf(member, "LDEndRange") - numberOf(member, "LDStartRange") + 1;
      extents[drive].first = textOf(member, "Name");
      extents[drive].second += sectors;
      m_usedOfDrive[drive] += sectors;
    }
  }

  static Instance node(
      const char* kind, Value number, const std::string& name, const std::string& detail, std::uint64_t size,
      std::optional<std::uint64_t> used, Value::List children) {
    Instance result;
    result.path.className = "TreeNode";
    result.properties = {
        {"Kind", Value::string(kind)},
        {"Number", std::move(number)},
        {"Name", Value::string(name)},
        {"Detail", textOrNull(detail)},
        {"SizeInSectors", Value::uint64(size)},
        {"UsedInSectors", used ? Value::uint64(*used) : Value::null(CMPI_uint64)},
        {"Children", Value::array(CMPI_instance, std::move(children))}};
    return result;
  }

  Instance driveNode(std::uint64_t number, const std::string& knownName) {
    const Instance* drive = m_inventory.byNumber(DRIVE, number);
    const std::string kind =
        drive == nullptr
            ? "missing"
            : codeName(m_session.classNamed(DRIVE.className), "DeviceType", numberOf(*drive, "DeviceType"));
    const std::uint64_t size = drive == nullptr ? 0 : numberOf(*drive, "CapacityInSectors");
    const auto used = m_usedOfDrive.find(number);
    return node(
        "drive", Value::uint16(static_cast<std::uint16_t>(number)),
        drive == nullptr ? knownName : textOf(*drive, DRIVE.name), kind, size,
        used == m_usedOfDrive.end() ? 0 : used->second, {});
  }

  /** A pool that is not enumerated was made inside a cached volume and is wholly its own. */
  Instance poolNode(std::uint32_t number, const std::string& knownName) {
    Value::List drives;
    std::uint64_t sectors = 0;
    for (const auto& [drive, extent] : m_extents[number]) {
      drives.push_back(Value::instance(driveNode(drive, extent.first)));
      sectors += extent.second;
    }
    const Instance* pool = m_inventory.byNumber(POOL, number);
    if (pool == nullptr) {
      return node("pool", Value::uint32(number), knownName, "internal", sectors, sectors, std::move(drives));
    }
    return node(
        "pool", Value::uint32(number), textOf(*pool, POOL.name),
        codeName(m_session.classNamed(POOL.className), "TierLevel", numberOf(*pool, "TierLevel")),
        numberOf(*pool, "CapacityInSectors"), numberOf(*pool, "UsedCapacityInSectors"), std::move(drives));
  }

  Instance volumeNode(const Instance& volume, std::set<std::uint32_t>& underVolumes) {
    const auto number = static_cast<std::uint32_t>(numberOf(volume, VOLUME.number));
    Value::List pools;
    for (const auto& [pool, name] : m_poolsOf[number]) {
      pools.push_back(Value::instance(poolNode(pool, name)));
      underVolumes.insert(pool);
    }
    return node(
        "volume", Value::uint32(number), textOf(volume, VOLUME.name),
        codeName(m_session.classNamed(VOLUME.className), "VolumeType", numberOf(volume, "VolumeType")),
        numberOf(volume, "CapacityInSectors"), std::nullopt, std::move(pools));
  }

  Inventory& m_inventory;
  Session& m_session;
  std::map<std::uint32_t, std::map<std::uint32_t, std::string>> m_poolsOf;  ///< by volume: id and name
  std::map<std::uint32_t, Extents> m_extents;                               ///< by pool
  std::map<std::uint64_t, std::uint64_t> m_usedOfDrive;                     ///< sectors that pools hold
};

}  // namespace

void TreeCommand::addTo(CLI::App& app) {
  addVerb(app, "tree", "Show which drives and pools stand under what, and how full they are", "", [this] {
    show();
  });
}

void TreeCommand::show() {
  const std::vector<Instance> roots = TreeBuilder(inventory(), session()).build();
  tool().print(formatter().tree(roots));
  if (roots.empty()) {
    noticeMissingDriver();
  }
}

}  // namespace tvp::host::tvpcim
