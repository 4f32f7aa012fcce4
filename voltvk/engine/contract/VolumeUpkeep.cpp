// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/VolumeUpkeep.h"

#include "voltvk/engine/activity/KernelActivity.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/changes/LayoutAdoption.h"
#include "voltvk/engine/changes/VolumeChanges.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/rules/VolumeRules.h"
#include "voltvk/engine/state/Intents.h"
#include "voltvk/engine/state/SnapshotReader.h"

namespace voltvk {

VolumeRecord VolumeUpkeep::find(std::uint32_t volumeId) {
  VolumeRecord found;
  m_state.read([&](Connection& connection) {
    const std::vector<VolumeRecord> volumes = SnapshotReader(connection).volumes();
    found = VolumeRules({}, volumes).volume(volumeId);
  });
  return found;
}

void VolumeUpkeep::collect(Backing& backing, const VolumeRecord& volume) {
  // Taken when nothing can keep the state from recording them any more.
  m_state.change([&](Connection& connection) {
    KernelActivity(connection, volume, backing.takeCounters(volume)).collect(connection);
  });
}

void VolumeUpkeep::flush(std::uint32_t volumeId, const FlushProgress& progress) {
  if (!m_state.backing()->isReal()) {
    m_state.change([&](Connection& connection) { VolumeChanges(connection).flush(volumeId); });
    return;
  }
  withBacking(m_state, [&](Backing& backing) {
    VolumeRecord volume;
    m_state.change([&](Connection& connection) {
      volume = VolumeChanges(connection).flushable(volumeId);
      recordIntents(m_state, connection, {{Step::Flush, volumeId, {}}});
    });
    std::uint64_t written = 0;
    try {
      written = backing.flush(
          volume, progress ? progress : [](std::uint64_t) { return true; });
    } catch (...) {
      settleIntents(m_state, backing);
      throw;
    }
    m_state.change([&](Connection& connection) {
      VolumeChanges(connection).reportFlushed(volumeId, written);
      Intents(connection).clear();
    });
  });
}

void VolumeUpkeep::collect(std::uint32_t volumeId) {
  if (m_state.backing()->isReal()) {
    withBacking(m_state, [&](Backing& backing) { collect(backing, find(volumeId)); });
  }
}

void VolumeUpkeep::resetStatistics(std::uint32_t volumeId) {
  const auto reset = [&] {
    m_state.change([&](Connection& connection) { VolumeChanges(connection).resetStatistics(volumeId); });
  };
  if (!m_state.backing()->isReal()) {
    reset();
    return;
  }
  withBacking(m_state, [&](Backing& backing) {
    collect(backing, find(volumeId));
    reset();
  });
}

d_ioctl_user_stat VolumeUpkeep::statistics(std::uint32_t volumeId) {
  const std::shared_ptr<Backing> backing = m_state.backing();
  d_ioctl_user_stat statistics{};
  m_state.read([&](Connection& connection) {
    const std::vector<VolumeRecord> volumes = SnapshotReader(connection).volumes();
    const VolumeRecord& volume = VolumeRules({}, volumes).volume(volumeId);
    if (backing->isReal()) {
      readStatistics(connection, volume, backing->counters(volume), statistics);
    } else {
      readStatistics(connection, volume, statistics);
    }
  });
  return statistics;
}

RoundResult VolumeUpkeep::planRound(Backing& backing, std::uint32_t volumeId) {
  const VolumeRecord volume = find(volumeId);
  const KernelCounters counted = backing.isReal() ? backing.counters(volume) : KernelCounters();
  PolicyChoice choice;
  tryOut(m_state, [&](Connection& connection) {
    if (backing.isReal()) {
      KernelActivity(connection, volume, counted).collect(connection);
    }
    choice = PolicyEngine(connection).choose(volume);
  });
  return {choice.promoted.size(), choice.demoted.size()};
}

RoundResult VolumeUpkeep::runRound(std::uint32_t volumeId, bool dryRun) {
  const std::shared_ptr<Backing> backing = m_state.backing();
  RoundResult result;
  if (dryRun) {
    result = planRound(*backing, volumeId);
  } else if (backing->isReal()) {
    withBacking(m_state, [&](Backing& real) { result = runRoundOnDrives(real, volumeId); });
  } else {
    m_state.change(
        [&](Connection& connection) { result.promoted = PolicyEngine(connection).runRound(volumeId); });
  }
  return result;
}

RoundResult VolumeUpkeep::runRoundOnDrives(Backing& backing, std::uint32_t volumeId) {
  const VolumeRecord volume = find(volumeId);
  collect(backing, volume);
  if (volume.isCached()) {
    return {};  // the kernel itself decides what is in a cache
  }
  PolicyChoice choice;
  Configuration configuration;
  m_state.change([&](Connection& connection) {
    PolicyEngine engine(connection);
    configuration = SnapshotReader(connection).configuration();
    choice = engine.choose(volume);
    if (choice.promoted.empty()) {
      engine.finishRound(volume, 0);
    } else {
      recordIntents(m_state, connection, {{Step::MoveChunks, volumeId, {}}});
    }
  });
  if (choice.promoted.empty()) {
    return {};
  }
  try {
    backing.exchange(volume, choice.demoted, choice.promoted, configuration);
  } catch (...) {
    settleIntents(m_state, backing);
    throw;
  }
  const std::vector<VolumeExtentRecord> layout = backing.layout(volume, configuration);
  m_state.change([&](Connection& connection) {
    adoptLayout(connection, volume, layout);
    PolicyEngine(connection).finishRound(volume, choice.promoted.size());
    Intents(connection).clear();
  });
  return {choice.promoted.size(), choice.demoted.size()};
}

}  // namespace voltvk
