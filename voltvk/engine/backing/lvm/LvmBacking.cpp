// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmBacking.h"

#include "voltvk/engine/backing/lvm/CacheCleaner.h"
#include "voltvk/engine/backing/lvm/LvmComparison.h"
#include "voltvk/engine/backing/lvm/LvmMoves.h"
#include "voltvk/engine/backing/lvm/LvmPools.h"
#include "voltvk/engine/backing/lvm/LvmReplacement.h"
#include "voltvk/engine/backing/lvm/LvmVolumes.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>
#include <utility>

#include <unistd.h>

namespace voltvk {

namespace {

/** What is described is not made larger or smaller: a state that says so is older than the drives. */
void requireSameSize(const std::string& name, bool isSame) {
  require(isSame, TVK_BACKING_FAILED, [&] {
    return name +
           " has another size on the drives than in the state, which is older; move the state away and "
           "rebuild it from the drives with `voltvkctl recover`";
  });
}

}  // namespace

LvmBacking::LvmBacking(std::string group, LvmCommand command)
    : m_group(std::move(group)), m_command(std::move(command)), m_counters(m_group, m_mapper) {}

void LvmBacking::requireUsable() {
  require(geteuid() == 0, TVK_BACKING_UNAVAILABLE, "only root can use the volume manager; run this as root");
  m_command.requireProgram();
  require(!pathOfProgram("cache_check").empty(), TVK_BACKING_UNAVAILABLE, [] {
    return "the program cache_check is missing, without which no cache can be made; install it (on Debian: "
           "apt-get install thin-provisioning-tools)";
  });
  const std::string obstacle = m_mapper.obstacle();
  require(obstacle.empty(), TVK_BACKING_UNAVAILABLE, obstacle);
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  requireOurGroup(group);
  require(!group.exists || group.extentSectors == EXTENT_SECTORS, TVK_BACKING_UNAVAILABLE, [&] {
    return "the volume group " + m_group + " has extents of " + sizeText(group.extentSectors) +
           " instead of " + sizeText(EXTENT_SECTORS) +
           "; choose another name with `voltvkctl backing lvm --group NAME`";
  });
}

void LvmBacking::activate() {
  LvmGroup group = LvmGroup::read(m_command, m_group);
  if (!group.isOurs()) {
    return;
  }
  LvmPools(m_command, m_group).restoreReturned(group);
  // Volumes that lack a drive stay inactive, which the volume manager reports as a failure.
  const std::string message = m_command.attempt({"vgchange", "-ay", "--poll", "n", m_group});
  LvmMoves(m_command, m_group).complete();
  group = LvmGroup::read(m_command, m_group);
  for (const LvmVolume& volume : group.volumes) {
    const bool isUsable = volume.isActive || volume.isPartial || volume.isHidden;
    require(isUsable || volumeIdIn(volume.tags) == 0, TVK_BACKING_FAILED, [&] {
      return "could not activate " + m_group + "/" + volume.name + ": " + message + "; see `voltvkctl check`";
    });
  }
}

void LvmBacking::requireUnknown(const std::vector<Intent>& steps, const Configuration&) {
  const bool makesSomething = std::any_of(steps.begin(), steps.end(), [](const Intent& intent) {
    return intent.step == Step::MakePool || intent.step == Step::MakeVolume;
  });
  if (!makesSomething) {
    return;
  }
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const auto refuseIf = [&](bool exists, const char* what, std::uint32_t id) {
    require(!exists, TVK_BACKING_FAILED, [&] {
      return std::string(what) + " " + std::to_string(id) +
             " is on the drives already, and the state does not have "
             "it; compare both with `voltvkctl check`, and rebuild a state that is older than the drives";
    });
  };
  for (const Intent& step : steps) {
    if (step.step == Step::MakePool) {
      const auto isOfPool = [&](const LvmDrive& drive) { return poolIdIn(drive.tags) == step.object; };
      refuseIf(std::any_of(group.drives.begin(), group.drives.end(), isOfPool), "pool", step.object);
    } else if (step.step == Step::MakeVolume) {
      const auto isOfVolume = [&](const LvmVolume& volume) { return volumeIdIn(volume.tags) == step.object; };
      refuseIf(std::any_of(group.volumes.begin(), group.volumes.end(), isOfVolume), "volume", step.object);
    }
  }
}

void LvmBacking::makePool(const PoolRecord& pool, const Configuration& configuration) {
  LvmPools(m_command, m_group).make(pool, configuration);
}

void LvmBacking::removePool(const PoolRecord& pool, const Configuration& configuration) {
  LvmPools(m_command, m_group).remove(pool, configuration);
}

void LvmBacking::extendPool(const PoolRecord& pool, const Configuration& configuration) {
  LvmPools(m_command, m_group).make(pool, configuration, "extend");
}

void LvmBacking::releaseDrive(
    const PoolRecord& pool, std::uint16_t drive, const Configuration& configuration) {
  LvmPools pools(m_command, m_group);
  pools.release(pool, drive, configuration);
  pools.describe(pool);
}

void LvmBacking::replaceDrive(
    const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration,
    const MoveProgress& progress) {
  LvmReplacement(m_command, m_group, pool, drives, configuration).carryOut(progress);
}

bool LvmBacking::undoReplacement(
    const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration) {
  return LvmReplacement(m_command, m_group, pool, drives, configuration).undo();
}

bool LvmBacking::describePool(const PoolRecord& pool, const Configuration&) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  for (std::size_t position = 0; position < pool.members.size(); ++position) {
    const LvmDrive* drive = group.member(pool.id, position);
    const std::optional<PoolTag> tag = drive == nullptr ? std::nullopt : poolTagIn(drive->tags);
    requireSameSize(
        nameOf(pool), !tag || (tag->pool.chunks == pool.chunks && tag->members == pool.members.size() &&
                               tag->chunks == pool.members[position].chunks));
  }
  return LvmPools(m_command, m_group).describe(pool);
}

void LvmBacking::makeVolume(const VolumeRecord& volume, const Configuration& configuration) {
  LvmVolumes(m_command, m_group).make(volume, configuration);
  m_counters.begin(volume);
}

void LvmBacking::removeVolume(std::uint32_t volumeId) {
  LvmVolumes(m_command, m_group).remove(volumeId, [&] { return isOpen(volumeId); });
}

bool LvmBacking::describeVolume(const VolumeRecord& volume) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const LvmVolume* found = group.volume(lvmNameOf(volume.id));
  const std::optional<VolumeRecord> marked = found == nullptr ? std::nullopt : volumeIn(found->tags);
  requireSameSize(
      nameOf(volume), !marked || marked->id != volume.id ||
                          (marked->hddChunks == volume.hddChunks && marked->ssdChunks == volume.ssdChunks));
  return LvmVolumes(m_command, m_group).describe(volume);
}

void LvmBacking::resizeVolume(const VolumeRecord& volume, const Configuration& configuration) {
  LvmVolumes(m_command, m_group).resize(volume, configuration);
  m_counters.begin(volume);
}

void LvmBacking::exchange(
    const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
    const std::vector<std::uint64_t>& promoted, const Configuration& configuration) {
  LvmMoves moves(m_command, m_group);
  moves.complete();
  moves.exchange(volume, demoted, promoted, configuration);
}

std::vector<VolumeExtentRecord>
LvmBacking::layout(const VolumeRecord& volume, const Configuration& configuration) {
  LvmGroup group = LvmGroup::read(m_command, m_group);
  const bool isMoving = std::any_of(group.volumes.begin(), group.volumes.end(), [](const LvmVolume& part) {
    return !part.movedFrom.empty();
  });
  if (isMoving) {
    LvmMoves(m_command, m_group).complete();
    group = LvmGroup::read(m_command, m_group);
  }
  return layoutOf(group, volume, configuration.pools);
}

std::uint64_t LvmBacking::flush(const VolumeRecord& volume, const FlushProgress& progress) {
  return CacheCleaner(m_command, m_mapper, m_group, lvmNameOf(volume.id)).clean(progress);
}

void LvmBacking::endFlush(const VolumeRecord& volume) {
  CacheCleaner(m_command, m_mapper, m_group, lvmNameOf(volume.id)).restore();
}

std::vector<std::string> LvmBacking::differences(const Configuration& configuration) {
  return differencesBetween(configuration, LvmGroup::read(m_command, m_group));
}

std::vector<std::string> LvmBacking::contradictions(const Configuration& configuration) {
  return contradictionsBetween(configuration, LvmGroup::read(m_command, m_group));
}

Configuration LvmBacking::recovered(const std::vector<DriveRecord>& drives) {
  return configurationIn(LvmGroup::read(m_command, m_group), drives);
}

std::string LvmBacking::deviceName(std::uint32_t volumeId) const {
  return DeviceMapper::deviceName(m_group, lvmNameOf(volumeId));
}

std::string LvmBacking::devicePath(std::uint32_t volumeId) const {
  return m_mapper.device(deviceName(volumeId)) ? "/dev/" + m_group + "/" + lvmNameOf(volumeId) : "";
}

bool LvmBacking::isOpen(std::uint32_t volumeId) const {
  const std::optional<MappedDevice> device = m_mapper.device(deviceName(volumeId));
  return device && device->openCount > 0;
}

KernelCounters LvmBacking::counters(const VolumeRecord& volume) const {
  return m_counters.counters(volume);
}

KernelCounters LvmBacking::takeCounters(const VolumeRecord& volume) {
  return m_counters.take(volume);
}

}  // namespace voltvk
