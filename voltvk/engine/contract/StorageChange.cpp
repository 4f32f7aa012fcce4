// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/StorageChange.h"

#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace voltvk {

namespace {

bool isDescribedAlike(const PoolRecord& one, const PoolRecord& other) {
  return std::tie(one.name, one.description, one.tierLevel) ==
         std::tie(other.name, other.description, other.tierLevel);
}

bool isDescribedAlike(const VolumeRecord& one, const VolumeRecord& other) {
  return std::tie(one.name, one.description, one.knob) == std::tie(other.name, other.description, other.knob);
}

template <typename Record>
void addRemovals(
    std::vector<Intent>& steps, Step remove, const std::vector<Record>& before,
    const std::vector<Record>& after) {
  for (const Record& record : before) {
    if (findById(after, record.id) == nullptr) {
      steps.push_back({remove, record.id, {}});
    }
  }
}

template <typename Record>
void addDescriptions(
    std::vector<Intent>& steps, Step describe, const std::vector<Record>& before,
    const std::vector<Record>& after) {
  for (const Record& record : after) {
    const Record* earlier = findById(before, record.id);
    if (earlier != nullptr && !isDescribedAlike(*earlier, record)) {
      steps.push_back({describe, record.id, {}});
    }
  }
}

std::vector<std::uint16_t> drivesOf(const PoolRecord& pool) {
  std::vector<std::uint16_t> drives;
  for (const PoolMemberRecord& member : pool.members) {
    drives.push_back(member.drive);
  }
  return drives;
}

void addDriveSteps(std::vector<Intent>& steps, const PoolRecord& before, const PoolRecord& after) {
  for (std::size_t position = 0; position < after.members.size(); ++position) {
    const std::uint16_t drive = after.members[position].drive;
    if (position >= before.members.size()) {
      steps.push_back({Step::ExtendPool, after.id, {drive}});
    } else if (before.members[position].drive != drive) {
      steps.push_back({Step::ReplaceDrive, after.id, {before.members[position].drive, drive}});
    }
  }
}

}  // namespace

/** Carries out the steps of one change. */
class StorageChange::Steps {
public:
  Steps(
      Backing& backing, const Configuration& before, const Configuration& after, const MoveProgress& progress)
      : m_backing(backing), m_before(before), m_after(after), m_progress(progress) {}

  void carryOut(const Intent& intent) {
    switch (intent.step) {
    case Step::MakePool:
      m_backing.makePool(*findById(m_after.pools, intent.object), m_after);
      break;
    case Step::RemovePool:
      m_backing.removePool(*findById(m_before.pools, intent.object), m_before);
      break;
    case Step::DescribePool:
      m_backing.describePool(*findById(m_after.pools, intent.object), m_after);
      break;
    case Step::MakeVolume:
      m_backing.makeVolume(*findById(m_after.volumes, intent.object), m_after);
      break;
    case Step::RemoveVolume:
      m_backing.removeVolume(intent.object);
      break;
    case Step::DescribeVolume:
      m_backing.describeVolume(*findById(m_after.volumes, intent.object));
      break;
    case Step::ExtendPool:
      m_backing.extendPool(*findById(m_after.pools, intent.object), m_after);
      break;
    case Step::ReplaceDrive:
      m_backing.replaceDrive(
          *findById(m_before.pools, intent.object), exchangeOf(intent), m_before, m_progress);
      break;
    case Step::GrowVolume:
      m_backing.resizeVolume(*findById(m_after.volumes, intent.object), m_after);
      break;
    case Step::MoveChunks:
    case Step::Flush:
      break;  // not part of a change of the configuration
    }
  }

  void undo(const Intent& intent) {
    switch (intent.step) {
    case Step::MakePool:
      m_backing.removePool(*findById(m_after.pools, intent.object), m_after);
      break;
    case Step::DescribePool:
      m_backing.describePool(*findById(m_before.pools, intent.object), m_before);
      break;
    case Step::MakeVolume:
      m_backing.removeVolume(intent.object);
      break;
    case Step::DescribeVolume:
      m_backing.describeVolume(*findById(m_before.volumes, intent.object));
      break;
    case Step::RemovePool:
      m_backing.makePool(*findById(m_before.pools, intent.object), m_before);
      break;
    case Step::ExtendPool:
      m_backing.releaseDrive(*findById(m_before.pools, intent.object), intent.drives.front(), m_before);
      break;
    case Step::ReplaceDrive:
      require(
          m_backing.undoReplacement(*findById(m_before.pools, intent.object), exchangeOf(intent), m_before),
          TVK_BACKING_FAILED, "what has been moved stays where it is, until the rest follows");
      break;
    case Step::GrowVolume:
      m_backing.resizeVolume(*findById(m_before.volumes, intent.object), m_before);
      break;
    case Step::RemoveVolume:
    case Step::MoveChunks:
    case Step::Flush:
      break;  // a volume that is still there stays; the others are undone by those who do them
    }
  }

  /** Whether everything that has been begun can be undone: not if a volume, or its cache, is gone. */
  bool canBeUndone(const std::vector<Intent>& begun) {
    return std::all_of(begun.begin(), begun.end(), [&](const Intent& intent) {
      return intent.step != Step::RemoveVolume || isWhole(*findById(m_before.volumes, intent.object));
    });
  }

private:
  bool isWhole(const VolumeRecord& volume) {
    std::uint64_t sectors = 0;
    for (const VolumeExtentRecord& part : m_backing.layout(volume, m_before)) {
      sectors += part.extent.chunks * findById(m_before.pools, part.pool)->chunkSectors;
    }
    return sectors == (volume.hddChunks + volume.ssdChunks) * volume.chunkSectors;
  }

  Backing& m_backing;
  const Configuration& m_before;
  const Configuration& m_after;
  const MoveProgress& m_progress;
};

std::vector<Intent> stepsBetween(const Configuration& before, const Configuration& after) {
  std::vector<Intent> steps;
  addRemovals(steps, Step::RemoveVolume, before.volumes, after.volumes);
  addRemovals(steps, Step::RemovePool, before.pools, after.pools);
  for (const PoolRecord& pool : after.pools) {
    if (findById(before.pools, pool.id) == nullptr) {
      steps.push_back({Step::MakePool, pool.id, drivesOf(pool)});
    }
  }
  for (const PoolRecord& pool : after.pools) {
    if (const PoolRecord* earlier = findById(before.pools, pool.id)) {
      addDriveSteps(steps, *earlier, pool);
    }
  }
  for (const VolumeRecord& volume : after.volumes) {
    const VolumeRecord* earlier = findById(before.volumes, volume.id);
    if (earlier != nullptr && earlier->capacityChunks() != volume.capacityChunks()) {
      steps.push_back({Step::GrowVolume, volume.id, {}});
    } else if (earlier == nullptr) {
      steps.push_back({Step::MakeVolume, volume.id, {}});
    }
  }
  addDescriptions(steps, Step::DescribePool, before.pools, after.pools);
  addDescriptions(steps, Step::DescribeVolume, before.volumes, after.volumes);
  return steps;
}

void StorageChange::change(const State::Work& work, bool withDrives) {
  if (withDrives) {
    m_state.changeWithDrives(work);
  } else {
    m_state.change(work);
  }
}

void StorageChange::run(const State::Work& work, bool withDrives) {
  if (m_state.backing()->isReal()) {
    withBacking(m_state, [&](Backing& backing) { runWithSteps(backing, work, withDrives); });
    return;
  }
  change(
      [&](Connection& connection) {
        // Who chooses a real backing makes sure that there are no pools, not that none is being made.
        require(
            !SnapshotReader(connection).backing().isReal(), TVK_BUSY,
            "another backing was chosen meanwhile; try again");
        work(connection);
      },
      withDrives);
}

void StorageChange::runWithSteps(Backing& backing, const State::Work& work, bool withDrives) {
  Configuration before;
  Configuration after;
  if (withDrives) {
    m_state.changeWithDrives([](Connection&) {});  // so that the drives of before are those of now
  }
  tryOut(m_state, [&](Connection& connection) {
    before = SnapshotReader(connection).configuration();
    work(connection);
    after = SnapshotReader(connection).configuration();
  });
  const std::vector<Intent> steps = stepsBetween(before, after);
  backing.requireUnknown(steps, after);
  m_state.change([&](Connection& connection) { recordIntents(m_state, connection, steps); });
  Steps carrier(backing, before, after, m_progress);
  std::vector<Intent> begun;
  try {
    for (const Intent& step : steps) {
      begun.insert(begun.begin(), step);
      carrier.carryOut(step);
    }
    m_state.change([&](Connection& connection) {
      for (const Intent& step : steps) {
        // A scan may have seen meanwhile what the step has put there.
        DriveRegistry(connection).forgetContents(step.drives);
      }
      work(connection);
      Intents(connection).clear();
    });
  } catch (...) {
    if (!isSettled(backing, carrier, begun)) {
      throw;
    }
  }
}

bool StorageChange::isSettled(Backing& backing, Steps& carrier, const std::vector<Intent>& begun) {
  try {
    if (!carrier.canBeUndone(begun)) {
      settleIntents(m_state, backing);
      return true;
    }
    for (const Intent& step : begun) {
      carrier.undo(step);
    }
    m_state.change([](Connection& connection) { Intents(connection).clear(); });
    eraseNote(m_state);
  } catch (const std::exception&) {
    // The next change finds the intents and tries once more; the caller learns why the change failed.
  }
  return false;
}

std::unique_ptr<BackingLock> lockChanges(State& state) {
  return state.isDryRun()
             ? nullptr
             : std::make_unique<BackingLock>(state.path(), State::Clock::now() + BACKING_TIMEOUT);
}

void tryOut(State& state, const State::Work& work) {
  struct TriedOut {};
  try {
    state.change([&](Connection& connection) {
      work(connection);
      throw TriedOut{};
    });
  } catch (const TriedOut&) {
    // Undone with its transaction.
  }
}

void withBacking(State& state, const std::function<void(Backing&)>& work) {
  const std::unique_ptr<BackingLock> lock = lockChanges(state);
  const std::shared_ptr<Backing> backing = state.backing();
  settleIntents(state, *backing);
  work(*backing);
  eraseNote(state);
}

}  // namespace voltvk
