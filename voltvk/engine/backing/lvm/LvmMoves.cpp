// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmMoves.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/engine/backing/lvm/LvmVolumes.h"
#include "voltvk/engine/backing/lvm/PoolLayout.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>
#include <map>

namespace voltvk {

namespace {

/** Ranges in one command: a single argument of a program may have 128 KiB. */
constexpr std::size_t LARGEST_BATCH = 1000;

/** Pieces of a volume between two of its extents. */
std::vector<LvmPart> slice(const std::vector<LvmPart>& parts, std::uint64_t first, std::uint64_t extents) {
  std::vector<LvmPart> pieces;
  for (const LvmPart& part : parts) {
    const std::uint64_t from = std::max(first, part.logical);
    const std::uint64_t to = std::min(first + extents, part.logical + part.extents);
    if (from < to) {
      pieces.push_back({part.drive, part.first + (from - part.logical), to - from, from});
    }
  }
  return pieces;
}

/** Free places of a pool, given away in the order of the chunks. */
class FreePlaces {
public:
  FreePlaces(const LvmGroup& group, const PoolRecord& pool) : m_group(group), m_pool(pool), m_layout(pool) {
    std::vector<DrivePart> used;
    for (const LvmVolume& volume : group.volumes) {
      for (const LvmPart& part : volume.parts) {
        const std::optional<PoolTag> tag = poolTagIn(group.drives[part.drive].tags);
        if (tag && tag->pool.id == pool.id) {
          used.push_back({tag->position, part.first, part.extents});
        }
      }
    }
    m_free = m_layout.freeChunks(used);
  }

  std::uint64_t chunks() const {
    std::uint64_t sum = 0;
    for (const Extent& extent : m_free) {
      sum += extent.chunks;
    }
    return sum;
  }

  /** Places for so many chunks: the first gap that holds them all, or else several. */
  std::vector<LvmPart> take(std::uint64_t count) {
    const auto gap = std::find_if(
        m_free.begin(), m_free.end(), [&](const Extent& extent) { return extent.chunks >= count; });
    std::vector<LvmPart> places;
    for (auto from = gap == m_free.end() ? m_free.begin() : gap; count > 0; ++from) {
      const std::uint64_t taken = std::min(count, from->chunks);
      for (const DrivePart& place : m_layout.placesOf({from->first, taken})) {
        places.push_back({driveIndex(place.member), place.first, place.extents, 0});
      }
      from->first += taken;
      from->chunks -= taken;
      count -= taken;
    }
    return places;
  }

  std::uint64_t extentsPerChunk() const { return m_layout.extentsPerChunk(); }

private:
  std::size_t driveIndex(std::size_t position) const {
    const LvmDrive* drive = m_group.member(m_pool.id, position);
    require(drive != nullptr && !drive->isMissing, TVK_BACKING_FAILED, [&] {
      return "a drive of " + nameOf(m_pool) + " is missing from the volume group " + m_group.name +
             "; see `voltvkctl check`";
    });
    return m_group.indexOf(*drive);
  }

  const LvmGroup& m_group;
  const PoolRecord& m_pool;
  PoolLayout m_layout;
  std::vector<Extent> m_free;
};

/** Pairs what moves with where it moves to, piece by piece. */
std::vector<LvmMove> paired(const std::vector<LvmPart>& pieces, std::vector<LvmPart> places) {
  std::vector<LvmMove> moves;
  auto place = places.begin();
  for (LvmPart piece : pieces) {
    while (piece.extents > 0) {
      const std::uint64_t extents = std::min(piece.extents, place->extents);
      moves.push_back({piece.drive, piece.first, place->drive, place->first, extents});
      piece.first += extents;
      piece.extents -= extents;
      place->first += extents;
      place->extents -= extents;
      place += place->extents == 0 ? 1 : 0;
    }
  }
  return moves;
}

bool continues(const LvmMove& before, const LvmMove& move) {
  return before.fromDrive == move.fromDrive && before.toDrive == move.toDrive &&
         before.to + before.extents == move.to;
}

/**
 * Groups moves into commands. Within a command, the volume manager decides what goes where: it takes the
 * pieces in the order of the volume's addresses, and the places by size. If pieces are whole chunks of the
 * target, any of its decisions is good. If they are smaller, a command gets one place, which is then filled
 * in order.
 */
std::vector<LvmMoveBatch> batched(const std::vector<LvmMove>& moves, bool inAnyOrder) {
  std::vector<LvmMoveBatch> batches;
  std::map<std::size_t, std::size_t> batchOfDrive;
  for (const LvmMove& move : moves) {
    std::size_t batch = batches.size();
    if (inAnyOrder) {
      batch = batchOfDrive.emplace(move.fromDrive, batch).first->second;
      if (batch < batches.size() && batches[batch].size() == LARGEST_BATCH) {
        batch = batchOfDrive[move.fromDrive] = batches.size();
      }
    } else if (
        !batches.empty() && continues(batches.back().back(), move) && batches.back().size() < LARGEST_BATCH) {
      --batch;
    }
    batches.resize(std::max(batches.size(), batch + 1));
    batches[batch].push_back(move);
  }
  return batches;
}

/** Arguments like "/dev/sda:1-2:7-7", one for each drive. */
class Ranges {
public:
  explicit Ranges(const LvmGroup& group) : m_group(group) {}

  void add(std::size_t drive, std::uint64_t first, std::uint64_t extents) {
    std::vector<Extent>& ranges = m_ranges[drive];
    if (!ranges.empty() && ranges.back().first + ranges.back().chunks == first) {
      ranges.back().chunks += extents;
    } else {
      ranges.push_back({first, extents});
    }
  }

  void appendTo(LvmCommand::Words& command) const {
    for (const auto& [drive, ranges] : m_ranges) {
      std::string argument = m_group.drives[drive].node;
      for (const Extent& range : ranges) {
        argument += ":" + std::to_string(range.first) + "-" + std::to_string(range.first + range.chunks - 1);
      }
      command.push_back(argument);
    }
  }

private:
  const LvmGroup& m_group;
  std::map<std::size_t, std::vector<Extent>> m_ranges;
};

std::uint64_t
extentsPerChunk(const std::vector<VolumeExtentRecord>& extents, const Configuration& configuration) {
  std::uint64_t smallest = UINT64_MAX;
  for (const VolumeExtentRecord& extent : extents) {
    smallest = std::min(smallest, poolOf(extent, configuration).chunkSectors / EXTENT_SECTORS);
  }
  return smallest;
}

}  // namespace

ProgramLimits limitsFor(std::uint64_t extents) {
  ProgramLimits limits;
  limits.timeout += std::chrono::seconds(2 * extents);
  return limits;
}

std::vector<LvmMoveBatch> planMoves(
    const LvmGroup& group, const VolumeRecord& volume, std::vector<std::uint64_t> chunks,
    const PoolRecord& target, const Configuration& configuration) {
  const std::vector<LvmPart> parts = partsOf(group, volume.id);
  const std::uint64_t extentsOfChunk = volume.chunkSectors / EXTENT_SECTORS;
  std::sort(chunks.begin(), chunks.end());
  std::vector<LvmPart> pieces;
  for (const std::uint64_t chunk : chunks) {
    for (const LvmPart& piece : slice(parts, chunk * extentsOfChunk, extentsOfChunk)) {
      if (poolIdIn(group.drives[piece.drive].tags) != target.id) {
        pieces.push_back(piece);
      }
    }
  }
  std::uint64_t extents = 0;
  for (const LvmPart& piece : pieces) {
    extents += piece.extents;
  }
  FreePlaces free(group, target);
  const std::uint64_t needed = extents / free.extentsPerChunk();
  require(needed <= free.chunks(), TVK_NOT_ENOUGH_SPACE, [&] {
    return nameOf(target) + " has " + counted(free.chunks(), "free chunk") + " for moves, and " +
           std::to_string(needed) + " are needed to move chunks of " + nameOf(volume) +
           "; remove what else is on its drives, see `voltvkctl check`";
  });
  const std::vector<LvmMove> moves = paired(pieces, free.take(needed));
  // Every move can split what it is taken from in three, and is a part of the move itself meanwhile.
  require(group.parts() + 3 * moves.size() <= LvmMoves::MAX_PARTS, TVK_NOT_ENOUGH_SPACE, [&] {
    return "the volumes of the volume group " + group.name + " are in " + std::to_string(group.parts()) +
           " pieces, and it manages " + std::to_string(LvmMoves::MAX_PARTS) + " well; moving chunks of " +
           nameOf(volume) + " would make too many: use larger chunks, or stop the policy engine";
  });
  return batched(moves, extentsPerChunk(volume.extents, configuration) >= free.extentsPerChunk());
}

void LvmMoves::carryOut(const LvmGroup& group, const VolumeRecord& volume, const LvmMoveBatch& batch) {
  Ranges from(group);
  Ranges to(group);
  std::uint64_t extents = 0;
  for (const LvmMove& move : batch) {
    from.add(move.fromDrive, move.from, move.extents);
    to.add(move.toDrive, move.to, move.extents);
    extents += move.extents;
  }
  LvmCommand::Words command = {"pvmove", "--atomic", "-i", "0", "-n", lvmNameOf(volume.id)};
  from.appendTo(command);
  to.appendTo(command);
  m_command.run("move chunks of " + nameOf(volume), command, limitsFor(extents));
}

void LvmMoves::move(
    const VolumeRecord& volume, const std::vector<std::uint64_t>& chunks, std::uint8_t tierLevel,
    const Configuration& configuration) {
  if (chunks.empty()) {
    return;
  }
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const auto extent =
      std::find_if(volume.extents.begin(), volume.extents.end(), [&](const VolumeExtentRecord& candidate) {
        return poolOf(candidate, configuration).tierLevel == tierLevel;
      });
  require(extent != volume.extents.end(), TVK_NOT_ENOUGH_SPACE, [&] {
    return nameOf(volume) + " has no pool of " + (tierLevel == TVK_TIER_SSD ? "SSDs" : "hard disks") +
           ", so its chunks cannot move there";
  });
  for (const LvmMoveBatch& batch :
       planMoves(group, volume, chunks, poolOf(*extent, configuration), configuration)) {
    carryOut(group, volume, batch);
  }
}

void LvmMoves::exchange(
    const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
    const std::vector<std::uint64_t>& promoted, const Configuration& configuration) {
  move(volume, demoted, TVK_TIER_HDD, configuration);
  move(volume, promoted, TVK_TIER_SSD, configuration);
}

bool LvmMoves::complete() {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  bool found = false;
  for (const LvmVolume& volume : group.volumes) {
    if (!volume.movedFrom.empty()) {
      const LvmVolume* source = group.volume(volume.name + "_mimage_0");
      m_command.run(
          "complete the move of extents from " + volume.movedFrom, {"pvmove", "-i", "1", volume.movedFrom},
          limitsFor(source == nullptr ? 0 : source->extents()));
      found = true;
    }
  }
  return found;
}

}  // namespace voltvk
