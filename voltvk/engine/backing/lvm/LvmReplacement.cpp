// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmReplacement.h"

#include "voltvk/engine/backing/lvm/LvmMoves.h"
#include "voltvk/engine/backing/lvm/LvmPools.h"
#include "voltvk/engine/state/Refusal.h"

#include <algorithm>
#include <utility>

namespace voltvk {

namespace {

/** Moved in one command: what an interruption has to wait for. */
constexpr std::uint64_t LARGEST_MOVE = 256;

std::string rangeOf(const DriveRecord& drive, const LvmPart& part) {
  return drive.name + ":" + std::to_string(part.first) + "-" + std::to_string(part.first + part.extents - 1);
}

std::uint64_t sectorsOf(const std::vector<LvmPart>& parts) {
  std::uint64_t extents = 0;
  for (const LvmPart& part : parts) {
    extents += part.extents;
  }
  return extents * EXTENT_SECTORS;
}

}  // namespace

LvmReplacement::LvmReplacement(
    const LvmCommand& command, std::string group, const PoolRecord& pool, const DriveExchange& drives,
    const Configuration& configuration)
    : m_command(command), m_group(std::move(group)), m_pool(pool), m_configuration(configuration),
      m_from(driveOf(drives.from, configuration)), m_to(driveOf(drives.to, configuration)) {}

std::vector<LvmPart> LvmReplacement::partsOn(const LvmGroup& group, const DriveRecord& drive) {
  std::vector<LvmPart> parts;
  for (const LvmVolume& volume : group.volumes) {
    for (const LvmPart& part : volume.parts) {
      for (std::uint64_t moved = 0; group.drives[part.drive].node == drive.name && moved < part.extents;
           moved += LARGEST_MOVE) {
        parts.push_back({part.drive, part.first + moved, std::min(LARGEST_MOVE, part.extents - moved), 0});
      }
    }
  }
  std::sort(parts.begin(), parts.end(), [](const LvmPart& a, const LvmPart& b) { return a.first < b.first; });
  return parts;
}

void LvmReplacement::move(const LvmPart& part) {
  m_command.run(
      "move what is on " + nameOf(m_from) + " to " + nameOf(m_to),
      {"pvmove", "--atomic", "-i", "0", rangeOf(m_from, part), rangeOf(m_to, part)}, limitsFor(part.extents));
}

void LvmReplacement::requireNoneMissing() const {
  for (const LvmDrive& drive : LvmGroup::read(m_command, m_group).drives) {
    require(!drive.isMissing, TVK_BACKING_FAILED, [&] {
      return "could not replace " + nameOf(m_from) + ": another drive, of pool " +
             std::to_string(poolIdIn(drive.tags)) +
             ", is missing, and no drive can be added to the volume group " + m_group +
             " until it is back; attach it, or delete what is on it, and try again";
    });
  }
}

void LvmReplacement::carryOut(const MoveProgress& progress) {
  LvmMoves(m_command, m_group).complete();
  LvmPools pools(m_command, m_group);
  const auto member = std::find_if(m_pool.members.begin(), m_pool.members.end(), [&](const auto& candidate) {
    return candidate.drive == m_from.number;
  });
  if (!m_from.present) {
    // Nothing of a volume is on it; while it is in the group, nothing can be added to that.
    pools.dropGoneDrives(m_pool, m_configuration, "replace " + nameOf(m_from));
    requireNoneMissing();
  }
  pools.claimReplacement(m_pool, static_cast<std::size_t>(member - m_pool.members.begin()), m_to);
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const std::vector<LvmPart> parts = partsOn(group, m_from);
  std::uint64_t moved = sectorsOf(partsOn(group, m_to));
  const std::uint64_t total = moved + sectorsOf(parts);
  for (const LvmPart& part : parts) {
    require(!progress || progress(moved, total), TVK_BACKING_FAILED, [&] {
      return moved == 0
                 ? "ended early, before anything was moved: " + nameOf(m_pool) + " is as before"
                 : "ended early: " + sizeText(moved) + " of " + sizeText(total) + " are on " + nameOf(m_to) +
                       " now; the next change moves the rest, or `voltvkctl check --repair`";
    });
    move(part);
    moved += part.extents * EXTENT_SECTORS;
  }
  if (m_from.present) {
    pools.release(m_pool, m_from.number, m_configuration);
  }
}

bool LvmReplacement::undo() {
  LvmMoves(m_command, m_group).complete();
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const LvmDrive* replaced = m_from.present ? group.driveAt(m_from.name) : nullptr;
  // Of a drive that has been missing from the beginning, there was nothing to be moved.
  const bool isStillMember =
      !m_from.present || (replaced != nullptr && poolIdIn(replaced->tags) == m_pool.id);
  if (!isStillMember || !partsOn(group, m_to).empty()) {
    return false;
  }
  LvmPools(m_command, m_group).release(m_pool, m_to.number, m_configuration);
  return true;
}

}  // namespace voltvk
