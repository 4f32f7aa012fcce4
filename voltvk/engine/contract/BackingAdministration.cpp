// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/BackingAdministration.h"

#include "text/Quote.h"
#include "voltvk/engine/changes/LayoutAdoption.h"
#include "voltvk/engine/changes/RecordWriter.h"
#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <algorithm>
#include <functional>

namespace voltvk {

namespace {

/** What the volume manager takes as the name of a volume group. */
void requireGroupName(const std::string& name) {
  constexpr std::size_t LONGEST = 100;  // the names of volumes are added to it
  const char* const ALLOWED = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+_.-";
  require(
      !name.empty() && name.size() <= LONGEST && name.find_first_not_of(ALLOWED) == std::string::npos &&
          name.front() != '-' && name != "." && name != "..",
      TVK_INVALID_ARGUMENT, [&] {
        return tvp::text::quoted(name) + " is not a valid name of a volume group; use up to " +
               std::to_string(LONGEST) + " letters, digits and + _ . -, not beginning with -";
      });
}

void requireNoPools(Connection& connection, const char* before) {
  const std::size_t pools = SnapshotReader(connection).pools().size();
  require(pools == 0, TVK_POOL_IN_USE, [&] {
    return "there " + std::string(pools == 1 ? "is " : "are ") + counted(pools, "pool") +
           ", internal ones included; delete them before " + before;
  });
}

/** One repair. Why it cannot be made becomes a difference, so that the others are made. */
void attempt(BackingReport& report, const std::function<void()>& repair) {
  try {
    repair();
  } catch (const Refusal& refusal) {
    if (refusal.status() != TVK_BACKING_FAILED) {
      throw;
    }
    report.differences.emplace_back(refusal.what());
  }
}

}  // namespace

void BackingAdministration::choose(const BackingChoice& choice) {
  if (choice.isReal()) {
    requireGroupName(choice.group);
  }
  const std::unique_ptr<BackingLock> lock = lockChanges(m_state);
  settleIntents(m_state, *m_state.backing());  // another backing knows nothing of them
  m_state.read([](Connection& connection) { requireNoPools(connection, "the backing changes"); });
  Backing::of(choice)->requireUsable();
  m_state.change([&](Connection& connection) {
    requireNoPools(connection, "the backing changes");
    Statement(connection, "UPDATE backing SET kind = ?, volume_group = ?", choice.kind, choice.group).run();
  });
}

BackingReport BackingAdministration::check(bool repairs) {
  const std::shared_ptr<Backing> backing = m_state.backing();
  BackingReport report;
  if (!backing->isReal()) {
    return report;
  }
  const std::unique_ptr<BackingLock> lock = lockChanges(m_state);
  if (repairs) {
    repair(*backing, report);
  } else {
    bool unsettled = false;
    m_state.read([&](Connection& connection) { unsettled = !Intents(connection).list().empty(); });
    if (unsettled) {
      report.differences.emplace_back("a change was cut off; the next change or a repair settles it");
    }
  }
  const auto differences = backing->differences(m_state.snapshot()->configuration());
  report.differences.insert(report.differences.end(), differences.begin(), differences.end());
  return report;
}

void BackingAdministration::repair(Backing& backing, BackingReport& report) {
  report.repairs = settleIntents(m_state, backing);
  backing.activate();
  const std::shared_ptr<const Snapshot> snapshot = m_state.snapshot();
  const Configuration& configuration = snapshot->configuration();
  const std::vector<std::string> differences = backing.differences(configuration);
  if (differences.empty()) {
    return;
  }
  const auto hasOtherMarks = [&](const std::string& name) {
    return std::any_of(differences.begin(), differences.end(), [&](const std::string& sentence) {
      return sentence.find(name + " " + OTHER_MARKS) != std::string::npos;
    });
  };
  for (const PoolRecord& pool : configuration.pools) {
    attempt(report, [&] {
      if (hasOtherMarks(nameOf(pool)) && backing.describePool(pool, configuration)) {
        report.repairs.push_back("recorded the name and description of " + nameOf(pool) + " on its drives");
      }
    });
  }
  for (const VolumeRecord& volume : configuration.volumes) {
    attempt(report, [&] {
      if (hasOtherMarks(nameOf(volume)) && backing.describeVolume(volume)) {
        report.repairs.push_back("recorded the name and description of " + nameOf(volume) + " on its drives");
      }
      const std::vector<VolumeExtentRecord> layout = backing.layout(volume, configuration);
      if (layout.empty()) {
        return;  // it does not exist, which remains as a difference
      }
      m_state.change([&](Connection& connection) {
        if (adoptLayout(connection, volume, layout)) {
          report.repairs.push_back("recorded where the chunks of " + nameOf(volume) + " are");
        }
      });
    });
  }
}

RecoveredState BackingAdministration::recover() {
  require(
      m_state.backing()->isReal(), TVK_NOT_POSSIBLE_HERE,
      "pools and volumes are book-keeping only, so nothing is on the drives to rebuild the state from; "
      "choose the backing that they were made with first");
  RecoveredState recovered;
  withBacking(m_state, [&](Backing& backing) {
    m_state.read([](Connection& connection) { requireNoPools(connection, "the state is rebuilt"); });
    backing.activate();
    m_state.changeWithDrives(
        [](Connection&) {});  // an empty state has to give the drives their numbers first
    const Configuration found = backing.recovered(m_state.snapshot()->configuration().drives);
    m_state.change([&](Connection& connection) {
      requireNoPools(connection, "the state is rebuilt");
      RecordWriter writer(connection);
      for (const PoolRecord& pool : found.pools) {
        writer.insert(pool);
      }
      for (const VolumeRecord& volume : found.volumes) {
        writer.insert(volume);
        adoptLayout(connection, volume, volume.extents);
      }
      SnapshotReader(connection).configuration();  // refuses what does not fit together
    });
    recovered = {found.pools.size(), found.volumes.size()};
  });
  return recovered;
}

}  // namespace voltvk
