// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/StateBackups.h"

#include "voltvk/engine/changes/LayoutAdoption.h"
#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/contract/ChangeNote.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Intents.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <filesystem>

namespace voltvk {

namespace {

namespace fs = std::filesystem;

bool exists(const std::string& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

/** @throws Refusal if a file is one of those of the state */
void requireForeign(const std::string& path, const std::string& state) {
  const std::string file = StateFile(path).path();
  for (const char* suffix : {"", "-wal", "-shm", "-journal", "-changes"}) {
    std::error_code error;
    require(
        file != state + suffix && !fs::equivalent(file, state + suffix, error), TVK_INVALID_ARGUMENT,
        [&] { return path + " belongs to the state itself; name another file"; });
  }
}

BackupOutcome outcomeOf(BackupFile& backup, const Configuration& configuration) {
  return {backup.label(), configuration.pools.size(), configuration.volumes.size(), {}};
}

std::vector<std::string> troublesOfDrives(const Configuration& configuration) {
  const Health health(configuration.drives, configuration.pools, configuration.volumes);
  std::vector<std::string> troubles;
  for (const DriveRecord& drive : configuration.drives) {
    if (!health.ofDrive(drive.number).empty()) {
      troubles.push_back(health.ofDrive(drive.number));
    }
  }
  return troubles;
}

std::string textOf(const BackingChoice& backing) {
  return std::string(nameOf(backing.kind)) + (backing.isReal() ? ", volume group " + backing.group : "");
}

}  // namespace

/** One restoration. What is to be found out is found out on the copy in memory, before the state is changed.
 */
class StateBackups::Restoration {
public:
  Restoration(State& state, const std::string& path, bool isTrial)
      : m_state(state), m_backup(path), m_isTrial(isTrial), m_isNew(!exists(state.path())),
        m_backing(Backing::of(m_backup.label().backing)) {}

  /** @param isAlone no change of real pools and volumes is under way, and none can begin */
  BackupOutcome examine(bool isAlone) {
    if (!m_isNew || isAlone) {
      requireReplaceable(isAlone);
    }
    m_backing->requireUsable();
    adoptDrives();
    requireSameAsOnDrives();
    std::vector<std::string> notes =
        isAlone && m_backing->isReal() ? adoptLayouts() : std::vector<std::string>();
    const Configuration adopted = configuration();
    const std::vector<std::string> remaining =
        m_backing->isReal() ? m_backing->differences(adopted) : troublesOfDrives(adopted);
    notes.insert(notes.end(), remaining.begin(), remaining.end());
    BackupOutcome outcome = outcomeOf(m_backup, adopted);
    outcome.notes = notes;
    return outcome;
  }

  void carryOut(const BackupOutcome& outcome) {
    m_state.change([&](Connection& connection) {
      m_backup.copyTo(connection, m_isNew);
      SnapshotReader(connection).configuration();  // nothing is committed that could not be read again
      EventJournal(connection)
          .append(
              TVK_EVENT_STATE_RESTORED, TVK_EVENT_WARNING,
              "The configuration was restored from a backup: {} pools, {} volumes",
              {std::to_string(outcome.pools), std::to_string(outcome.volumes)});
    });
    ChangeNote(m_state.path()).erase();
  }

private:
  Configuration configuration() { return SnapshotReader(m_backup.contents()).configuration(); }

  void requireReplaceable(bool isAlone) {
    std::size_t pools = 0;
    bool isUnsettled = false;
    BackingChoice present;
    try {
      m_state.read([&](Connection& connection) {
        pools = SnapshotReader(connection).pools().size();
        isUnsettled = !Intents(connection).list().empty();
        present = SnapshotReader(connection).backing();
        m_backup.adoptNumbers(connection);
      });
    } catch (const Refusal& refusal) {
      require(refusal.status() != TVK_NO_DRIVER, TVK_NO_DRIVER, [&] {
        return "what is to be replaced cannot be used: " + std::string(refusal.what()) +
               ". Before a backup can be restored, move it away together with the files beside it: " +
               m_state.path() + "*";
      });
      throw;
    }
    const BackingChoice& wanted = m_backup.label().backing;
    const bool isSameBacking =
        wanted.kind == present.kind && (!wanted.isReal() || wanted.group == present.group);
    require(isSameBacking || pools == 0, TVK_POOL_IN_USE, [&] {
      return "the backup " + m_backup.path() + " is of the backing " + textOf(wanted) + ", and there " +
             (pools == 1 ? "is " : "are ") + counted(pools, "pool") + " with the backing " + textOf(present) +
             "; delete them first, or use another backup";
    });
    require(
        !isUnsettled || !(isAlone || m_isTrial), TVK_BACKING_FAILED,
        "a change of pools and volumes is not completed; `voltvkctl check --repair` waits for one that is "
        "under "
        "way, and settles one that was cut off");
  }

  /** Gives the machine's drives their numbers, and marks those that it does not have. */
  void adoptDrives() {
    Transaction change(m_backup.contents(), Transaction::Kind::Change);
    DriveRegistry(m_backup.contents()).reconcile(m_state.drivesOfMachine(m_backup.label().backing));
    change.commit();
  }

  void requireSameAsOnDrives() {
    const std::vector<std::string> contradictions = m_backing->contradictions(configuration());
    require(contradictions.empty(), TVK_BACKING_FAILED, [&] {
      const std::size_t more = contradictions.size() - 1;
      return "the backup " + m_backup.path() +
             " does not match what is on the drives: " + contradictions.front() +
             (more > 0 ? ", and " + counted(more, "more difference") : "") +
             "; attach drives that are missing, or rebuild the state from the drives with `voltvkctl "
             "recover`";
    });
  }

  /** A round has moved chunks since the backup was made. */
  std::vector<std::string> adoptLayouts() {
    std::vector<std::string> notes;
    const Configuration before = configuration();
    for (const VolumeRecord& volume : before.volumes) {
      const std::vector<VolumeExtentRecord> layout = m_backing->layout(volume, before);
      Transaction change(m_backup.contents(), Transaction::Kind::Change);
      if (!layout.empty() && adoptLayout(m_backup.contents(), volume, layout)) {
        notes.push_back("recorded where the chunks of " + nameOf(volume) + " are now");
      }
      change.commit();
    }
    return notes;
  }

  State& m_state;
  BackupFile m_backup;
  const bool m_isTrial;
  const bool m_isNew;
  const std::unique_ptr<Backing> m_backing;
};

BackupOutcome StateBackups::make(const std::string& path, const std::string& product, bool mayReplace) {
  const std::string state = m_state.path();
  require(exists(state), TVK_INVALID_ARGUMENT, [&] {
    return "there is no state " + state + " to back up; set VOLTVK_STATE if it is another file";
  });
  requireForeign(path, state);
  m_state.read([&](Connection& connection) { BackupFile::write(connection, path, product, mayReplace); });
  BackupFile backup(path);  // also finds out that it can be read
  return outcomeOf(backup, SnapshotReader(backup.contents()).configuration());
}

BackupOutcome StateBackups::restore(const std::string& path, bool dryRun) {
  requireForeign(path, m_state.path());
  Restoration restoration(m_state, path, dryRun);
  BackupOutcome outcome = restoration.examine(false);
  if (dryRun || m_state.isDryRun()) {
    return outcome;
  }
  m_state.read([](Connection&) {});  // makes the state if there is none
  const BackingLock lock(m_state.path(), State::Clock::now() + BACKING_TIMEOUT);
  outcome = restoration.examine(true);
  restoration.carryOut(outcome);
  return outcome;
}

}  // namespace voltvk
