// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Snapshot.h"

#include "voltvk/Specs.h"
#include "voltvk/engine/state/PolicyLimits.h"

#include <algorithm>
#include <cstring>

namespace voltvk {

namespace {

/** @param trouble empty for what is in order */
std::uint8_t statusOf(const std::string& trouble) {
  return trouble.empty() ? TVK_HEALTH_GOOD : TVK_HEALTH_DEGRADED;
}

/** An object whose children are extents. */
template <typename Interface>
class WithExtents : public Interface {
public:
  RaidObject* getObject(unsigned long index) override {
    return index < m_extents.size() ? m_extents[index] : nullptr;
  }
  void getChildren(std::vector<RaidObject*>& out, const char* type, bool, bool) override {
    // The extents are kept in address order and have no children themselves.
    if (type != nullptr && std::strcmp(type, "Chunk") == 0) {
      out.insert(out.end(), m_extents.begin(), m_extents.end());
    }
  }
  void addExtent(RaidObject* extent) { m_extents.push_back(extent); }

private:
  std::vector<RaidObject*> m_extents;
};

}  // namespace

class Snapshot::Drive final : public LogicalDevice {
public:
  /** @param owner the pool that it belongs to, or null @param realDrivesOnly as for obstacleOf */
  Drive(const DriveRecord& record, const PoolRecord* owner, const Health& health, bool realDrivesOnly)
      : m_record(record), m_used(owner != nullptr),
        m_unsuitable(!m_used && isUnsuitable(record, realDrivesOnly)),
        m_obstacle(obstacleOf(record, owner, realDrivesOnly).reason),
        m_trouble(health.ofDrive(record.number)) {}

  const char* getTypeName() const override { return "LogicalDevice"; }
  const char* getDeviceName() const override { return m_record.name.c_str(); }
  const char* getSerialNumber() const override { return m_record.serial.c_str(); }
  const char* getWwid() const override { return m_record.wwid.c_str(); }
  const char* getVendor() const override { return m_record.vendor.c_str(); }
  const char* getModel() const override { return m_record.model.c_str(); }
  std::uint64_t getCapacityInSectors() const override { return m_record.sectors; }
  std::uint16_t getDeviceNumber() const override { return m_record.number; }
  std::uint8_t getDeviceType() const override { return m_record.type; }
  std::uint8_t getDeviceProperty() const override {
    unsigned int bits = m_record.isVirtual ? TVK_PROPERTY_VIRTUAL : TVK_PROPERTY_HOST;
    if (m_record.removable) {
      bits |= TVK_PROPERTY_REMOVABLE;
    }
    if (m_record.mounted) {
      bits |= TVK_PROPERTY_MOUNTED;
    }
    if (m_record.readOnly) {
      bits |= TVK_PROPERTY_READ_ONLY;
    }
    if (m_unsuitable) {
      bits |= TVK_PROPERTY_UNSUITABLE;
    }
    return static_cast<std::uint8_t>(bits);
  }
  bool isBootable() const override { return m_record.bootable; }
  bool hasPartition() const override { return m_record.partitioned; }
  bool isUsed() const override { return m_used; }
  std::uint8_t getInterfaceType() const override { return m_record.interfaceType; }
  std::uint8_t getStatus() const override {
    return m_record.present ? TVK_DEVICE_ONLINE : TVK_DEVICE_MISSING;
  }
  const char* getObstacle() const override { return m_obstacle.c_str(); }
  const char* getTrouble() const override { return m_trouble.c_str(); }

private:
  const DriveRecord& m_record;
  bool m_used;
  bool m_unsuitable;
  std::string m_obstacle;
  const std::string& m_trouble;
};

class Snapshot::Pool final : public WithExtents<VirtualPool> {
public:
  Pool(const PoolRecord& record, const Health& health)
      : m_record(record), m_trouble(health.ofPool(record.id)) {}

  const char* getTypeName() const override { return "VirtualPool"; }
  const char* getName() const override { return m_record.name.c_str(); }
  const char* getDescription() const override { return m_record.description.c_str(); }
  std::uint32_t getPoolId() const override { return m_record.id; }
  std::uint32_t getPoolStatus() const override { return statusOf(m_trouble); }
  const char* getTrouble() const override { return m_trouble.c_str(); }
  std::uint8_t getNumberOfLogicalDevices() const override {
    return static_cast<std::uint8_t>(m_record.members.size());
  }
  std::uint8_t getNumberOfVirtualVolumes() const override { return m_volumes; }
  std::uint64_t getChunkSize() const override { return m_record.chunkSectors; }
  std::uint8_t getTierLevel() const override { return m_record.tierLevel; }
  std::uint64_t getCapacityInSectors() const override { return m_record.chunks * m_record.chunkSectors; }
  std::uint64_t getUsedCapacityInSectors() const override { return m_usedChunks * m_record.chunkSectors; }
  std::uint8_t getHardDiskFlag() const override { return m_record.tierLevel == TVK_TIER_HDD ? 1 : 0; }
  bool isInternal() const override { return m_record.internal; }

  void addVolume() { ++m_volumes; }
  void addUse(std::uint64_t chunks) { m_usedChunks += chunks; }
  std::uint64_t chunkSectors() const { return m_record.chunkSectors; }

private:
  const PoolRecord& m_record;
  const std::string& m_trouble;
  std::uint8_t m_volumes = 0;
  std::uint64_t m_usedChunks = 0;
};

class Snapshot::Volume final : public WithExtents<VirtualVolume> {
public:
  Volume(const VolumeRecord& record, const Health& health)
      : m_record(record), m_trouble(health.ofVolume(record.id)) {}

  const char* getTypeName() const override { return "VirtualVolume"; }
  const char* getName() const override { return m_record.name.c_str(); }
  const char* getDescription() const override { return m_record.description.c_str(); }
  std::uint32_t getVolumeId() const override { return m_record.id; }
  std::uint8_t getVirtualPoolsCount() const override { return m_pools; }
  std::uint32_t getFeatures() const override { return m_record.features(); }
  std::uint8_t getVolumeType() const override { return m_record.type; }
  std::uint8_t getCacheMode() const override {
    return m_record.isCached() ? TVK_CACHE_WRITE_BACK : TVK_CACHE_NONE;
  }
  std::uint32_t getMaxMoveChunks() const override { return policyLimits(m_record.knob).maxMoveChunks; }
  std::uint32_t getMoveThreshold() const override { return policyLimits(m_record.knob).moveThreshold; }
  std::uint32_t getStatsSetting() const override { return 1; }
  std::uint32_t getNumberOfVirtualPoolsSupported() const override { return TVK_SPEC_POOLS; }
  std::uint16_t getDeviceNumber() const override { return m_record.deviceNumber; }
  std::uint8_t getState() const override { return statusOf(m_trouble); }
  const char* getTrouble() const override { return m_trouble.c_str(); }
  std::uint8_t getKnobSetting() const override { return m_record.knob; }
  std::uint64_t getCapacityInSectors() const override { return m_record.capacitySectors(); }

  void addPool() { ++m_pools; }

private:
  const VolumeRecord& m_record;
  const std::string& m_trouble;
  std::uint8_t m_pools = 0;
};

class Snapshot::PoolExtent final : public Chunk {
public:
  PoolExtent(Drive* drive, std::uint64_t sectors) : m_drive(drive), m_sectors(sectors) {}

  const char* getTypeName() const override { return "Chunk"; }
  std::uint64_t getStartRange() const override { return 0; }
  std::uint64_t getEndRange() const override { return m_sectors - 1; }
  LogicalDevice* getProviderLogical() const override { return m_drive; }
  VirtualPool* getProviderVirtualPool() const override { return nullptr; }
  std::uint64_t getMaxAllowedChunks() const override { return 0; }

private:
  Drive* m_drive;
  std::uint64_t m_sectors;
};

class Snapshot::VolumeExtent final : public Chunk {
public:
  VolumeExtent(Pool* pool, const Extent& extent, std::uint64_t maxChunks)
      : m_pool(pool), m_extent(extent), m_maxChunks(maxChunks) {}

  const char* getTypeName() const override { return "Chunk"; }
  std::uint64_t getStartRange() const override { return m_extent.first * m_pool->chunkSectors(); }
  std::uint64_t getEndRange() const override {
    return (m_extent.first + m_extent.chunks) * m_pool->chunkSectors() - 1;
  }
  LogicalDevice* getProviderLogical() const override { return nullptr; }
  VirtualPool* getProviderVirtualPool() const override { return m_pool; }
  std::uint64_t getMaxAllowedChunks() const override { return m_maxChunks; }

private:
  Pool* m_pool;
  Extent m_extent;
  std::uint64_t m_maxChunks;
};

Snapshot::Snapshot(Configuration configuration)
    : m_configuration(std::move(configuration)),
      m_health(m_configuration.drives, m_configuration.pools, m_configuration.volumes) {
  addDrives();
  addPools();
  addVolumes();
}

Snapshot::~Snapshot() = default;

bool Snapshot::hasFault(FaultKind kind) const {
  const std::vector<Fault>& faults = m_configuration.faults;
  return std::any_of(faults.begin(), faults.end(), [&](const Fault& fault) { return fault.kind == kind; });
}

void Snapshot::addDrives() {
  std::map<std::uint16_t, const PoolRecord*> owners;
  for (const PoolRecord& pool : m_configuration.pools) {
    for (const PoolMemberRecord& member : pool.members) {
      owners[member.drive] = &pool;
    }
  }
  for (const DriveRecord& record : m_configuration.drives) {
    if (!record.present && owners[record.number] == nullptr) {
      continue;  // an unplugged, unused drive: only its number is kept
    }
    auto drive = std::make_unique<Drive>(
        record, owners[record.number], m_health, limitsOf(m_configuration.backing).needsRealDrives);
    m_driveOfNumber[record.number] = drive.get();
    m_objects.push_back(drive.get());
    m_owned.push_back(std::move(drive));
  }
}

void Snapshot::addPools() {
  for (const PoolRecord& record : m_configuration.pools) {
    auto pool = std::make_unique<Pool>(record, m_health);
    for (const PoolMemberRecord& member : record.members) {
      Drive* drive = m_driveOfNumber.at(member.drive);
      const std::uint64_t sectors = member.chunks * record.chunkSectors;
      if (sectors > 0) {
        m_owned.push_back(std::make_unique<PoolExtent>(drive, sectors));
        pool->addExtent(m_owned.back().get());
      }
    }
    m_poolOfId[record.id] = pool.get();
    m_objects.push_back(pool.get());
    m_owned.push_back(std::move(pool));
  }
}

void Snapshot::addVolumes() {
  for (const VolumeRecord& record : m_configuration.volumes) {
    auto volume = std::make_unique<Volume>(record, m_health);
    std::map<std::uint32_t, std::uint64_t> chunksOfPool;
    for (const VolumeExtentRecord& part : record.extents) {
      chunksOfPool[part.pool] += part.extent.chunks;
    }
    for (const auto& [id, chunks] : chunksOfPool) {
      Pool* pool = m_poolOfId.at(id);
      pool->addVolume();
      pool->addUse(chunks);
      volume->addPool();
    }
    for (const VolumeExtentRecord& part : record.extents) {
      m_owned.push_back(
          std::make_unique<VolumeExtent>(m_poolOfId.at(part.pool), part.extent, chunksOfPool[part.pool]));
      volume->addExtent(m_owned.back().get());
    }
    m_objects.push_back(volume.get());
    m_owned.push_back(std::move(volume));
  }
}

}  // namespace voltvk
