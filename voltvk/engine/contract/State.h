// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_STATE_H
#define VOLTVK_ENGINE_CONTRACT_STATE_H

#include "voltvk/VolEvent.h"
#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/backing/RehearsedBacking.h"
#include "voltvk/engine/drives/HostDriveScanner.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/PrivateCopy.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Snapshot.h"
#include "voltvk/engine/state/StateFile.h"
#include "voltvk/engine/state/Statement.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace voltvk {

class DatabaseError;

/**
 * The state of one process: the database, the snapshot that is current, and the position in the event
 * journal. Every function may be called from any thread.
 *
 * There is one connection for reading and one for changing, so a reader never waits behind a change that is
 * waiting for another process. Both are opened on first use, and reopened if the file has been replaced, was
 * damaged, or could not be opened before. After a fork a child must not use the parent's State.
 *
 * Functions throw Refusal: TVK_NO_DRIVER if the state cannot be used, TVK_BUSY if another process held it
 * longer than BUSY_TIMEOUT, TVK_INTERNAL if it could not be read or written. Once opening or reading has been
 * waited for in vain, further calls do not wait for it until one of them succeeds.
 */
class State {
public:
  using Clock = std::chrono::steady_clock;
  using Work = std::function<void(Connection&)>;

  /** Maximum age of what is known of the machine's drives. */
  static constexpr std::chrono::milliseconds DRIVE_SCAN_INTERVAL{1000};

  /**
   * The state that $VOLTVK_STATE names, shared by all its users in this process. With VOLTVK_DRY_RUN=1 in the
   * environment it is a dry run.
   */
  static std::shared_ptr<State> forProcess();

  /** Constructs a separate state; two states in one process must not use the same file. */
  enum class Purpose {
    Change,
    DryRun  ///< works on a private copy, and real backings carry out no step
  };
  State(const std::string& path, HostDriveScanner scanner, Purpose purpose = Purpose::Change);

  std::string path();

  /** Changes have no effect outside of this process, in which they can be looked at. */
  bool isDryRun() const { return m_copy != nullptr; }
  /** What a real backing would have done for the changes of a dry run so far, a sentence each. */
  std::vector<std::string> rehearsedSteps() const { return m_rehearsal->list(); }

  /** Opens the state if needed. @return why it cannot be used, for an administrator; empty if it can. */
  std::string openError();

  /**
   * The current configuration. Re-reads the database only when it has changed; scans the machine's drives if
   * the last scan was longer than DRIVE_SCAN_INTERVAL ago.
   */
  std::shared_ptr<const Snapshot> snapshot();

  /** Where the chunks are, as chosen now. Stays usable when another backing is chosen meanwhile. */
  std::shared_ptr<Backing> backing();

  /**
   * Scans the machine's drives now and records what has changed, unless somebody else is changing the state.
   * @return the drives that the machine has
   */
  std::vector<DriveRecord> scanDrives();

  /** What the machine has as drives, with a backing; records nothing and does not need the state. */
  std::vector<DriveRecord> drivesOfMachine(const BackingChoice& backing) const;

  /** Runs work in a read transaction. Exceptions from work are passed on. */
  void read(const Work& work);

  /** Runs work in a transaction that is committed when work returns and undone when it throws. */
  void change(const Work& work) { change(work, Clock::now() + BUSY_TIMEOUT); }
  /** @param until when to stop waiting for other threads and processes; the past: at once */
  void change(const Work& work, Clock::time_point until);

  /** Does the same for changes that are decided by the drives that the machine has now. */
  void changeWithDrives(const Work& work);

  /**
   * Does the same for changes that are not worth waiting for: does nothing while another thread or process is
   * changing the state, and does not wait for the disk, so a power failure may undo the change. A state that
   * cannot be written is not examined further. Also throws DatabaseError.
   */
  void changeIfIdle(const Work& work);

  /**
   * Appends the events that this process has not seen yet, oldest first.
   * @return how many it will never see, because the journal has dropped them
   */
  std::int64_t takeEvents(VolEventCollection& events);

private:
  void useReader(const Work& work);
  void lockWriter(std::unique_lock<std::timed_mutex>& lock, Clock::time_point until);
  bool isUsable() const;
  void open();
  void openConnections(Clock::time_point until);
  void openReadOnly();
  void openForChanges();
  void recordDrivesAtOpening();
  void tidyUp();
  void closeConnections();
  Refusal busy(const char* reason) const;
  [[noreturn]] void fail(const DatabaseError& error);
  void readSnapshot(Connection& connection);
  void scanDrivesWhenDue();
  const std::string& shownPath() const;

  const HostDriveScanner m_scanner;
  const std::unique_ptr<PrivateCopy> m_copy;  ///< of a dry run; used with both mutexes held
  const std::shared_ptr<Rehearsal> m_rehearsal = std::make_shared<Rehearsal>();

  // Opening takes both, the writer's first.
  std::timed_mutex m_writerMutex;
  std::mutex m_readerMutex;
  StateFile m_file;
  std::unique_ptr<Connection> m_writer;
  std::unique_ptr<Connection> m_reader;
  std::unique_ptr<Statement> m_versionQuery;  // of the reader: each request runs it several times
  bool m_isOpen = false;                      // written with both mutexes held, like m_file
  bool m_isImpatient = false;                 // guarded by the reader's mutex
  std::atomic<bool> m_suspect{false};
  std::atomic<bool> m_damaged{false};
  std::shared_ptr<const Snapshot> m_snapshot;  // guarded by the reader's mutex, like the next one
  std::int64_t m_snapshotVersion = 0;
  std::int64_t m_snapshotGeneration = 0;

  std::mutex m_scanMutex;
  std::chrono::steady_clock::time_point m_nextScan;

  std::mutex m_backingMutex;
  BackingChoice m_choice;  // guarded by the mutex before, like the next one
  std::shared_ptr<Backing> m_backing;

  std::mutex m_eventMutex;
  std::atomic<std::int64_t> m_lastEvent{0};
};

}  // namespace voltvk

#endif
