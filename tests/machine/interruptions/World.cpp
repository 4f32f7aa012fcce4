// SPDX-License-Identifier: Apache-2.0
#include "World.h"

#include "support/Storage.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/changes/VolumeChanges.h"
#include "voltvk/engine/contract/BackingAdministration.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/contract/StorageGrowth.h"
#include "voltvk/engine/drives/DriveClaim.h"
#include "voltvk/engine/state/FindById.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tvp::test {

using voltvk::Connection;

namespace {

const std::string DIRECTORY = "/var/lib/voltvk";
constexpr std::array<Thing, 4> THINGS = {FAST, SLOW, TIERED, CACHED};
const std::map<Thing, std::string> NAMES = {
    {FAST, "fast"}, {SLOW, "slow"}, {TIERED, "tiered"}, {CACHED, "cached"}};
constexpr std::uint64_t HDD_SECTORS = 12 * MIB;
constexpr std::uint64_t SSD_SECTORS = 4 * MIB;
constexpr std::uint64_t CACHED_SECTORS = 24 * MIB;
constexpr std::uint64_t CACHE_SECTORS = 16 * MIB;

template <typename Record, typename Matches>
std::uint32_t idIn(const std::vector<Record>& records, const Matches& matches) {
  const auto found = std::find_if(records.begin(), records.end(), matches);
  return found == records.end() ? 0 : found->id;
}

std::uint8_t numberOf(const voltvk::Configuration& configuration, const std::string& node) {
  for (const voltvk::DriveRecord& drive : configuration.drives) {
    if (drive.name == node) {
      return static_cast<std::uint8_t>(drive.number);
    }
  }
  throw std::runtime_error("the machine has no drive " + node);
}

/** Differs in every 4 KiB of every volume. */
void mark(std::vector<std::uint64_t>& block, std::uint32_t volumeId, std::uint64_t index) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    block[i] = ((std::uint64_t{volumeId} << 48U) + (index << 24U) + i / 512) * 0x9E3779B97F4A7C15U;
  }
}

}  // namespace

World::World() : m_state(DIRECTORY + "/state.db", voltvk::HostDriveScanner::ofThisMachine()) {
  const voltvk::Configuration now = configuration();
  if (!now.backing.isReal()) {
    voltvk::BackingAdministration(m_state).choose({voltvk::BackingKind::Lvm, "tvp"});
  }
  if (!now.policyRunning) {
    m_state.change([](Connection& connection) { voltvk::PolicyEngine(connection).setRunning(true); });
  }
}

std::uint32_t World::idOf(Thing thing) {
  const voltvk::Configuration now = configuration();
  if (thing == FAST || thing == SLOW) {
    return idIn(now.pools, [&](const voltvk::PoolRecord& pool) {
      return !pool.internal && (pool.tierLevel == TVK_TIER_SSD) == (thing == FAST);
    });
  }
  return idIn(now.volumes, [&](const voltvk::VolumeRecord& volume) {
    return volume.isCached() == (thing == CACHED);
  });
}

void World::make(Thing thing) {
  const voltvk::Configuration now = configuration();
  const char* name = NAMES.at(thing).c_str();
  const VirtualPoolSpec fast =
      poolSpec(name, {numberOf(now, "/dev/sdc"), numberOf(now, "/dev/sdd")}, 128 * MIB, TVK_TIER_SSD);
  const VirtualPoolSpec slow = poolSpec(name, {numberOf(now, "/dev/sda")}, 64 * MIB);
  const VirtualVolumeSpec tiered =
      volumeSpec(name, TVK_VOLUME_TIERED, {{idOf(SLOW), HDD_SECTORS}, {idOf(FAST), SSD_SECTORS}});
  VirtualPoolSpec cache;
  cache.poolId = idOf(FAST);
  cache.capacityInSectors = CACHE_SECTORS;
  const VirtualPoolSpec inside = poolSpec("inside", {numberOf(now, "/dev/sdb")}, CACHED_SECTORS);
  const VirtualVolumeSpec cached = volumeSpec(name, TVK_VOLUME_CACHED, {});
  voltvk::StorageChange(m_state).run(
      [&](Connection& connection) {
        VirtualPoolSpec internal = inside;
        switch (thing) {
        case FAST:
        case SLOW:
          voltvk::PoolChanges(connection).create(thing == FAST ? fast : slow);
          break;
        case TIERED:
          voltvk::VolumeChanges(connection).create(tiered);
          break;
        case CACHED:
          voltvk::VolumeChanges(connection).createCachedDrive(cache, internal, cached);
        }
      },
      true);
}

void World::remove(Thing thing) {
  const std::uint32_t id = idOf(thing);
  voltvk::StorageChange(m_state).run(
      [&](Connection& connection) {
        if (thing == FAST || thing == SLOW) {
          voltvk::PoolChanges(connection).remove(id);
        } else {
          voltvk::VolumeChanges(connection).remove(id);
        }
      },
      false);
}

void World::describe(Thing thing, const std::string& suffix) {
  const std::uint32_t id = idOf(thing);
  const std::string name = NAMES.at(thing) + suffix;
  VirtualPoolSpec pool = poolSpec(name.c_str(), {}, 0, 0);
  VirtualVolumeSpec volume = volumeSpec(name.c_str(), 0, {});
  tvkSetText(pool.description, sizeof pool.description, ("about " + name).c_str());
  tvkSetText(volume.description, sizeof volume.description, ("about " + name).c_str());
  voltvk::StorageChange(m_state).run(
      [&](Connection& connection) {
        if (thing == FAST || thing == SLOW) {
          voltvk::PoolChanges(connection).modify(id, pool);
        } else {
          voltvk::VolumeChanges(connection).modify(id, volume);
        }
      },
      false);
}

void World::extend() {
  voltvk::StorageGrowth(m_state).addDrive(idOf(SLOW), numberOf(configuration(), "/dev/sdb"));
}

void World::grow() {
  voltvk::StorageGrowth(m_state).growVolume(idOf(TIERED), {HDD_SECTORS + SSD_SECTORS + 8 * MIB});
}

void World::replace() {
  const voltvk::Configuration now = configuration();
  voltvk::StorageGrowth(m_state).replaceDrive(
      idOf(SLOW), {numberOf(now, "/dev/sda"), numberOf(now, "/dev/sdb")}, {});
}

bool World::isAsMade(Thing thing) {
  const voltvk::Configuration now = configuration();
  const auto* pool = voltvk::findById(now.pools, idOf(thing));
  const auto* volume = voltvk::findById(now.volumes, idOf(thing));
  switch (thing) {
  case FAST:
    return pool->members.size() == 2;
  case SLOW:
    return pool->members.size() == 1 && pool->members.front().drive == numberOf(now, "/dev/sda");
  case TIERED:
    return volume->capacitySectors() == HDD_SECTORS + SSD_SECTORS;
  default:
    return volume->capacitySectors() == CACHED_SECTORS;
  }
}

void World::heat() {
  if (!has(TIERED)) {
    return;
  }
  m_state.change([&](Connection& connection) {
    connection.execute("UPDATE chunk SET heat = 0");
    voltvk::Statement touch(
        connection, "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, 100000, 0, 0)"
                    " ON CONFLICT DO UPDATE SET heat = 100000 * (1 - ssd)");
    for (std::uint64_t chunk = 0; chunk < 6; ++chunk) {
      touch.runWith(idOf(TIERED), chunk);
    }
  });
}

void World::become(unsigned int things) {
  const bool isAsBefore =
      std::all_of(THINGS.begin(), THINGS.end(), [&](Thing thing) { return !has(thing) || isAsMade(thing); });
  const unsigned int kept = isAsBefore ? things : 0;
  for (auto thing = THINGS.rbegin(); thing != THINGS.rend(); ++thing) {
    if ((kept & *thing) == 0 && has(*thing)) {
      remove(*thing);
    }
  }
  std::vector<std::string> failures;
  for (const Thing thing : THINGS) {
    if ((things & thing) == 0) {
      continue;
    }
    if (!has(thing)) {
      make(thing);
    }
    if (text().find(" " + NAMES.at(thing) + " (about " + NAMES.at(thing) + ")") == std::string::npos) {
      describe(thing, "");
    }
    if (thing == TIERED || thing == CACHED) {
      forContents(idOf(thing), true, failures);
    }
  }
  if (!failures.empty()) {
    throw std::runtime_error(failures.front());
  }
}

std::string World::text() {
  std::ostringstream text;
  const voltvk::Configuration now = configuration();
  for (const voltvk::PoolRecord& pool : now.pools) {
    text << "pool " << pool.name << " (" << pool.description << ") of";
    for (const voltvk::PoolMemberRecord& member : pool.members) {
      text << " " << member.drive;
    }
    text << ", " << pool.chunks << "; ";
  }
  for (const voltvk::VolumeRecord& volume : now.volumes) {
    text << "volume " << volume.name << " (" << volume.description << ") of " << volume.hddChunks << "+"
         << volume.ssdChunks << "; ";
  }
  return text.str();
}

void World::settle(bool asRepair) {
  if (asRepair) {
    voltvk::BackingAdministration(m_state).check(true);
  } else {
    voltvk::withBacking(m_state, [](voltvk::Backing&) {});
  }
}

std::vector<std::string> World::complaints(unsigned int filled) {
  std::vector<std::string> found = voltvk::BackingAdministration(m_state).check(false).differences;
  compareUsage(found);
  compareDrives(found);
  for (const voltvk::VolumeRecord& volume : configuration().volumes) {
    if ((filled & (volume.isCached() ? CACHED : TIERED)) != 0) {
      forContents(volume.id, false, found);
    }
  }
  return found;
}

void World::compareUsage(std::vector<std::string>& found) {
  std::map<std::uint32_t, std::uint64_t> used;
  const auto snapshot = m_state.snapshot();
  std::map<std::uint32_t, std::uint64_t> chunkSectors;
  for (const voltvk::PoolRecord& pool : snapshot->configuration().pools) {
    chunkSectors[pool.id] = pool.chunkSectors;
  }
  for (const voltvk::VolumeRecord& volume : snapshot->configuration().volumes) {
    std::uint64_t sum = 0;
    for (const voltvk::VolumeExtentRecord& part : volume.extents) {
      used[part.pool] += part.extent.chunks * chunkSectors[part.pool];
      sum += part.extent.chunks * chunkSectors[part.pool];
    }
    if (sum != (volume.hddChunks + volume.ssdChunks) * volume.chunkSectors) {
      found.push_back("volume " + volume.name + " has extents of " + std::to_string(sum) + " sectors");
    }
  }
  for (const RaidObject* object : snapshot->objects()) {
    const auto* pool = dynamic_cast<const VirtualPool*>(object);
    if (pool != nullptr && (pool->getUsedCapacityInSectors() != used[pool->getPoolId()] ||
                            used[pool->getPoolId()] > pool->getCapacityInSectors())) {
      found.push_back(
          std::string("pool ") + pool->getName() + " says that " +
          std::to_string(pool->getUsedCapacityInSectors()) + " sectors are used, and its volumes use " +
          std::to_string(used[pool->getPoolId()]));
    }
  }
}

void World::compareDrives(std::vector<std::string>& found) {
  const voltvk::Configuration now = configuration();
  std::set<std::uint16_t> members;
  for (const voltvk::PoolRecord& pool : now.pools) {
    for (const voltvk::PoolMemberRecord& member : pool.members) {
      members.insert(member.drive);
    }
  }
  for (const char* node : {"/dev/sda", "/dev/sdb", "/dev/sdc", "/dev/sdd"}) {
    const voltvk::DriveFinding drive = voltvk::findDrive(node);
    const bool isMember = members.count(numberOf(now, node)) > 0;
    const bool isUntouched = drive.error == 0 && drive.content.empty();
    if (isMember == isUntouched) {
      found.push_back(
          std::string(node) + (isMember ? " of a pool is empty" : " of no pool is not: " + drive.content));
    }
  }
}

void World::forContents(std::uint32_t volumeId, bool write, std::vector<std::string>& found) {
  const std::string node = m_state.backing()->devicePath(volumeId);
  const voltvk::FileDescriptor device(::open(node.c_str(), (write ? O_WRONLY : O_RDONLY) | O_CLOEXEC));
  if (!device) {
    found.push_back("volume " + std::to_string(volumeId) + " cannot be opened");
    return;
  }
  ::ioctl(device.get(), BLKFLSBUF);
  constexpr std::uint64_t BLOCK = 1048576;
  // What a volume has become larger by was never written.
  const std::uint64_t blocks = (volumeId == idOf(TIERED) ? HDD_SECTORS + SSD_SECTORS : CACHED_SECTORS) / MIB;
  std::vector<std::uint64_t> expected(BLOCK / sizeof(std::uint64_t));
  std::vector<std::uint64_t> actual = expected;
  for (std::uint64_t index = 0; index < blocks; ++index) {
    mark(expected, volumeId, index);
    const auto position = static_cast<off_t>(index * BLOCK);
    const ssize_t done = write ? ::pwrite(device.get(), expected.data(), BLOCK, position)
                               : ::pread(device.get(), actual.data(), BLOCK, position);
    if (done != static_cast<ssize_t>(BLOCK) || (!write && actual != expected)) {
      found.push_back(
          node + (write ? ": cannot write MiB " : ": other contents in MiB ") + std::to_string(index));
      return;
    }
  }
  if (write && ::fsync(device.get()) != 0) {
    found.push_back(node + ": cannot sync");
  }
}

void World::clear() {
  const voltvk::LvmCommand lvm("lvm");
  lvm.attempt({"vgremove", "-ff", "-y", "tvp"});
  lvm.attempt({"pvremove", "-ff", "-y", "/dev/sda", "/dev/sdb", "/dev/sdc", "/dev/sdd"});
  for (const auto& entry : std::filesystem::directory_iterator(DIRECTORY)) {
    if (entry.path().filename().string().substr(0, 5) == "state") {
      std::filesystem::remove(entry.path());
    }
  }
}

}  // namespace tvp::test
