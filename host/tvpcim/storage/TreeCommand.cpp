// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

Value::List asValues(std::vector<Instance> nodes) {
  Value::List values;
  for (Instance& node : nodes) {
    values.push_back(Value::instance(std::move(node)));
  }
  return values;
}

/** @param trouble empty for what is in order */
Instance node(
    const char* kind, Value number, const std::string& name, const std::string& detail,
    const std::string& trouble, std::uint64_t size, std::optional<std::uint64_t> used,
    std::vector<Instance> children) {
  Instance result;
  result.path.className = "TreeNode";
  result.properties = {
      {"Kind", Value::string(kind)},
      {"Number", std::move(number)},
      {"Name", Value::string(name)},
      {"Detail", detail.empty() ? Value::null(CMPI_string) : Value::string(detail)},
      {"Trouble", trouble.empty() ? Value::null(CMPI_string) : Value::string(trouble)},
      {"SizeInSectors", Value::uint64(size)},
      {"UsedInSectors", used ? Value::uint64(*used) : Value::null(CMPI_uint64)},
      {"Children", Value::array(CMPI_instance, asValues(std::move(children)))}};
  return result;
}

/** Puts the tree together from the members of volumes and pools. */
class TreeBuilder {
public:
  explicit TreeBuilder(Tool& tool) : m_inventory(tool.inventory()), m_session(tool.session()) {}

  std::vector<Instance> build() {
    // Members first: how full a drive is comes from the extents of all pools on it.
    const std::vector<Volume> volumes = m_inventory.all<Volume>();
    for (const Volume& volume : volumes) {
      for (const PoolUse& use : m_inventory.membersOf<PoolUse>(Volume::KIND, volume.number)) {
        m_poolsOf[volume.number].emplace(use.pool, use.poolName);
        m_usedPools.insert(use.pool);
        readPool(use.pool);
      }
    }
    for (const Pool& pool : m_inventory.all<Pool>()) {
      readPool(pool.number);
    }
    std::vector<Instance> roots;
    roots.reserve(volumes.size());
    for (const Volume& volume : volumes) {
      roots.push_back(volumeNode(volume));
    }
    for (const auto& [pool, extents] : m_extents) {
      if (m_usedPools.count(pool) == 0) {
        roots.push_back(poolNode(pool, ""));
      }
    }
    for (const Drive& drive : m_inventory.all<Drive>()) {
      if (m_usedOfDrive.count(drive.number) == 0) {
        roots.push_back(driveNode(drive.number, ""));
      }
    }
    return roots;
  }

private:
  /** The name of each drive of a pool, and the sectors that the pool has there. */
  using Extents = std::map<std::uint32_t, std::pair<std::string, std::uint64_t>>;

  void readPool(std::uint32_t pool) {
    if (m_extents.count(pool) != 0) {
      return;
    }
    Extents& extents = m_extents[pool];
    for (const DriveExtent& extent : m_inventory.membersOf<DriveExtent>(Pool::KIND, pool)) {
      extents[extent.drive].first = extent.driveName;
      extents[extent.drive].second += extent.size;
      m_usedOfDrive[extent.drive] += extent.size;
    }
  }

  std::string codeNameOf(const ObjectKind& kind, const char* property, std::uint64_t code) {
    return codeName(m_session.classNamed(kind.className), property, code);
  }

  template <typename Object>
  std::string troubleOf(const Object& object) {
    return object.status == IN_ORDER ? "" : codeNameOf(Object::KIND, Object::KIND.status, object.status);
  }

  Instance driveNode(std::uint32_t number, const std::string& knownName) {
    const std::optional<Drive> drive = m_inventory.find<Drive>(number);
    const auto used = m_usedOfDrive.find(number);
    return node(
        "drive", Value::uint16(static_cast<std::uint16_t>(number)), drive ? drive->name : knownName,
        drive ? codeNameOf(Drive::KIND, "DeviceType", drive->type) : "",
        drive ? troubleOf(*drive) : "Missing", drive ? drive->capacity : 0,
        used == m_usedOfDrive.end() ? 0 : used->second, {});
  }

  /** A pool that is not enumerated was made for a cached volume, which uses all of it. */
  Instance poolNode(std::uint32_t number, const std::string& knownName) {
    std::vector<Instance> drives;
    std::uint64_t sectors = 0;
    for (const auto& [drive, extent] : m_extents[number]) {
      drives.push_back(driveNode(drive, extent.first));
      sectors += extent.second;
    }
    const std::optional<Pool> pool = m_inventory.find<Pool>(number);
    return node(
        "pool", Value::uint32(number), pool ? pool->name : knownName,
        pool ? codeNameOf(Pool::KIND, "TierLevel", pool->tier) : "internal", pool ? troubleOf(*pool) : "",
        pool ? pool->capacity : sectors, pool ? pool->used : sectors, std::move(drives));
  }

  Instance volumeNode(const Volume& volume) {
    std::vector<Instance> pools;
    for (const auto& [pool, name] : m_poolsOf[volume.number]) {
      pools.push_back(poolNode(pool, name));
    }
    return node(
        "volume", Value::uint32(volume.number), volume.name,
        codeNameOf(Volume::KIND, "VolumeType", volume.type), troubleOf(volume), volume.capacity, std::nullopt,
        std::move(pools));
  }

  Inventory& m_inventory;
  Session& m_session;
  std::map<std::uint32_t, std::map<std::uint32_t, std::string>> m_poolsOf;  ///< by volume: id and name
  std::set<std::uint32_t> m_usedPools;                                      ///< that volumes use
  std::map<std::uint32_t, Extents> m_extents;                               ///< by pool
  std::map<std::uint32_t, std::uint64_t> m_usedOfDrive;                     ///< sectors that pools hold
};

void showTree(Tool& tool) {
  tool.print(tool.formatter().tree(TreeBuilder(tool).build()));
}

}  // namespace

void addTreeCommand(CLI::App& app, Tool& tool) {
  addVerb(
      app, tool, "tree", "Show which drives and pools each volume uses, and how full they are", "",
      [&tool] { showTree(tool); });
}

}  // namespace tvp::host::tvpcim
