// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/RehearsedBacking.h"

#include "voltvk/engine/drives/DriveClaim.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Refusal.h"

#include <map>

namespace voltvk {

namespace {

std::string driveText(std::uint16_t number, const Configuration& configuration) {
  const DriveRecord* drive = driveNumbered(configuration.drives, number);
  return drive == nullptr ? "drive " + std::to_string(number) : nameOf(*drive);
}

/** The drives that a step would write to for the first time. */
std::vector<std::uint16_t> claimedBy(const Intent& intent) {
  const bool claims =
      intent.step == Step::MakePool || intent.step == Step::ExtendPool || intent.step == Step::ReplaceDrive;
  const auto first = intent.drives.begin() + (intent.step == Step::ReplaceDrive ? 1 : 0);
  return claims ? std::vector<std::uint16_t>(first, intent.drives.end()) : std::vector<std::uint16_t>();
}

std::string drivesText(const PoolRecord& pool, const Configuration& configuration) {
  std::vector<std::string> names;
  for (const PoolMemberRecord& member : pool.members) {
    names.push_back(driveText(member.drive, configuration));
  }
  return enumerated(names);
}

/** "100 MiB of pool 1 (slow) and 64 MiB of pool 2 (fast)". */
std::string partsText(const VolumeRecord& volume, const Configuration& configuration) {
  std::map<std::uint32_t, std::uint64_t> chunks;
  for (const VolumeExtentRecord& part : volume.extents) {
    chunks[part.pool] += part.extent.chunks;
  }
  std::vector<std::string> parts;
  for (const auto& [id, count] : chunks) {
    if (const PoolRecord* pool = findById(configuration.pools, id)) {
      parts.push_back(sizeText(count * pool->chunkSectors) + " of " + nameOf(*pool));
    }
  }
  return enumerated(parts);
}

}  // namespace

void Rehearsal::add(const std::string& step) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_steps.push_back(step);
}

std::vector<std::string> Rehearsal::list() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_steps;
}

void RehearsedBacking::requireUnknown(const std::vector<Intent>& steps, const Configuration& configuration) {
  m_real->requireUnknown(steps, configuration);
  for (const Intent& step : steps) {
    for (const std::uint16_t number : claimedBy(step)) {
      if (const DriveRecord* drive = driveNumbered(configuration.drives, number)) {
        requireUntouched(*drive);
      }
    }
  }
}

void RehearsedBacking::makePool(const PoolRecord& pool, const Configuration& configuration) {
  m_rehearsal->add("claim " + drivesText(pool, configuration) + " for " + nameOf(pool));
}

void RehearsedBacking::removePool(const PoolRecord& pool, const Configuration& configuration) {
  m_rehearsal->add("release " + drivesText(pool, configuration) + " of " + nameOf(pool));
}

void RehearsedBacking::extendPool(const PoolRecord& pool, const Configuration& configuration) {
  m_rehearsal->add("claim " + driveText(pool.members.back().drive, configuration) + " for " + nameOf(pool));
}

void RehearsedBacking::replaceDrive(
    const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration,
    const MoveProgress& /*progress*/) {
  const std::string from = driveText(drives.from, configuration);
  const std::string to = driveText(drives.to, configuration);
  m_rehearsal->add("claim " + to + " for " + nameOf(pool));
  m_rehearsal->add("move what is on " + from + " to " + to);
  m_rehearsal->add("release " + from + " of " + nameOf(pool));
}

bool RehearsedBacking::describePool(const PoolRecord& pool, const Configuration& configuration) {
  m_rehearsal->add("record the description of " + nameOf(pool) + " on " + drivesText(pool, configuration));
  return true;
}

void RehearsedBacking::makeVolume(const VolumeRecord& volume, const Configuration& configuration) {
  m_rehearsal->add("make " + nameOf(volume) + " of " + partsText(volume, configuration));
}

void RehearsedBacking::removeVolume(std::uint32_t volumeId) {
  require(!isOpen(volumeId), TVK_VOLUME_OPEN, [&] {
    return "volume " + std::to_string(volumeId) + " (" + devicePath(volumeId) +
           ") is mounted or otherwise open; unmount or close it first";
  });
  m_rehearsal->add("remove volume " + std::to_string(volumeId) + " with its data");
}

bool RehearsedBacking::describeVolume(const VolumeRecord& volume) {
  m_rehearsal->add("record the description of " + nameOf(volume) + " beside its data");
  return true;
}

void RehearsedBacking::resizeVolume(const VolumeRecord& volume, const Configuration& configuration) {
  m_rehearsal->add("extend " + nameOf(volume) + " to " + partsText(volume, configuration));
}

void RehearsedBacking::exchange(
    const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
    const std::vector<std::uint64_t>& promoted, const Configuration& /*configuration*/) {
  m_rehearsal->add(
      "move " + counted(promoted.size(), "chunk") + " of " + nameOf(volume) + " to SSDs and " +
      std::to_string(demoted.size()) + " to hard disks");
}

std::uint64_t RehearsedBacking::flush(const VolumeRecord& volume, const FlushProgress& /*progress*/) {
  const std::uint64_t dirty = m_real->counters(volume).cache.dirtyBlocks;
  m_rehearsal->add("write back " + counted(dirty, "block") + " of the cache of " + nameOf(volume));
  return dirty;
}

void RehearsedBacking::endFlush(const VolumeRecord& volume) {
  m_rehearsal->add("let the cache of " + nameOf(volume) + " work as usual again");
}

}  // namespace voltvk
