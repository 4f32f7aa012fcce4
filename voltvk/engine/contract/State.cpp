// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/State.h"

#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Schema.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

namespace voltvk {

namespace {

/** The volume group whose devices are no foreign use of drives; empty if there is none. */
std::string ownGroup(const BackingChoice& backing) {
  return backing.isReal() ? backing.group : "";
}

/** Whatever is not clearly a no is taken as a yes: it does no harm. */
bool isDryRunWanted() {
  const char* wanted = std::getenv("VOLTVK_DRY_RUN");
  return wanted != nullptr && *wanted != '\0' && std::string_view(wanted) != "0";
}

}  // namespace

std::shared_ptr<State> State::forProcess() {
  struct Registry {
    std::mutex mutex;
    std::map<std::pair<std::string, Purpose>, std::weak_ptr<State>> states;
    std::vector<std::shared_ptr<State>> dryRuns;
  };
  // Never destroyed: a thread of a host that exits without clean-up may still be in here.
  static auto& registry = *new Registry;
  const std::string path = StateFile(StateFile::defaultPath()).path();
  const Purpose purpose = isDryRunWanted() ? Purpose::DryRun : Purpose::Change;
  std::lock_guard<std::mutex> lock(registry.mutex);
  std::weak_ptr<State>& known = registry.states[{path, purpose}];
  std::shared_ptr<State> state = known.lock();
  if (state == nullptr) {
    state = std::make_shared<State>(path, HostDriveScanner::ofThisMachine(), purpose);
    known = state;
    if (state->isDryRun()) {
      registry.dryRuns.push_back(state);  // nobody else keeps what it has changed
    }
  }
  return state;
}

State::State(const std::string& path, HostDriveScanner scanner, Purpose purpose)
    : m_scanner(std::move(scanner)),
      m_copy(purpose == Purpose::DryRun ? std::make_unique<PrivateCopy>(path) : nullptr), m_file(path) {}

const std::string& State::shownPath() const {
  return isDryRun() ? m_copy->original() : m_file.path();
}

std::string State::path() {
  std::lock_guard<std::mutex> lock(m_readerMutex);
  return shownPath();
}

std::string State::openError() {
  try {
    read([](Connection&) {});
    return {};
  } catch (const Refusal& refusal) {
    return refusal.what();
  }
}

bool State::isUsable() const {
  return m_isOpen && !m_suspect && (isDryRun() || m_file.isSame());
}

void State::open() {
  std::scoped_lock lock(m_writerMutex, m_readerMutex);
  if (isUsable()) {
    return;  // another thread has already done it
  }
  closeConnections();
  const auto now = Clock::now();
  try {
    openConnections(m_isImpatient ? now : now + BUSY_TIMEOUT);
    m_isImpatient = false;
  } catch (const DatabaseError& error) {
    closeConnections();
    m_isImpatient = error.isBusy();
    if (m_isImpatient) {
      throw busy(error.what());
    }
    throw Refusal(
        TVK_NO_DRIVER,
        "the state file " + shownPath() + " cannot be used (" + error.what() + "); " + error.advice());
  } catch (const Refusal& refusal) {
    closeConnections();
    m_isImpatient = refusal.status() == TVK_BUSY;
    throw;
  } catch (...) {
    closeConnections();
    throw;
  }
}

void State::closeConnections() {
  m_isOpen = false;
  m_snapshot.reset();
  m_versionQuery.reset();
  m_reader.reset();
  m_writer.reset();
  m_file.close();
  if (isDryRun()) {
    m_copy->vanish();
  }
}

void State::openConnections(Clock::time_point until) {
  const bool sameFile = m_file.isSame();
  bool canBeChanged = true;
  if (isDryRun()) {
    canBeChanged = m_copy->make(until);
    m_file.moveTo(m_copy->path());
  }
  m_file.prepare(until);
  if (m_file.isReadOnly() || !canBeChanged) {
    openReadOnly();
  } else {
    openForChanges();
  }
  m_versionQuery = std::make_unique<Statement>(*m_reader, "PRAGMA data_version");
  readSnapshot(*m_reader);  // damage is found before anything is written
  if (m_writer != nullptr) {
    // The drives that the machine has from the beginning are not worth an event.
    recordDrivesAtOpening();
  }
  m_file.release();
  const std::int64_t newest = EventJournal(*m_reader).newest();
  if (!sameFile || newest < m_lastEvent) {
    m_lastEvent = newest;
  }
  if (isDryRun()) {
    m_copy->vanish();  // both connections have read, so they have all of its files open
  }
  m_suspect = false;
  m_damaged = false;
  m_isOpen = true;
}

void State::openReadOnly() {
  const auto access = m_file.isFrozen() ? Connection::Access::Frozen : Connection::Access::Read;
  m_reader = std::make_unique<Connection>(m_file.path(), access);
  Schema::accept(*m_reader, shownPath(), m_file.wasLeftOpen() || m_damaged);
}

void State::openForChanges() {
  m_writer = std::make_unique<Connection>(m_file.path());
  Schema::establish(*m_writer, shownPath(), m_file.wasLeftOpen() || m_damaged);
  m_reader = std::make_unique<Connection>(m_file.path());
  m_reader->execute("PRAGMA query_only = ON");
}

void State::recordDrivesAtOpening() {
  const std::vector<DriveRecord> found = m_scanner.scan(ownGroup(m_snapshot->configuration().backing));
  if (!DriveRegistry(*m_writer).differs(found)) {
    return;
  }
  m_writer->waitAtMost(m_file.isNew() ? BUSY_TIMEOUT : std::chrono::milliseconds(0));
  try {
    Transaction transaction(*m_writer, Transaction::Kind::Change);
    DriveRegistry(*m_writer).reconcile(found);
    transaction.commit();
  } catch (const DatabaseError& error) {
    if (!error.isBusy()) {
      throw;
    }
    // Somebody is changing the state, so what is known of the drives will do until the next scan.
  }
}

Refusal State::busy(const char* reason) const {
  return {
      TVK_BUSY, "the state file " + shownPath() + " is held by another process (" + reason +
                    "); try again when that has ended"};
}

void State::fail(const DatabaseError& error) {
  if (error.isBusy()) {
    throw busy(error.what());
  }
  if (error.isFileLost()) {
    m_suspect = true;  // the next call opens the file again and finds out what is wrong with it
    m_damaged = error.isDamage();
  }
  throw Refusal(
      TVK_INTERNAL, "the state file " + shownPath() + " could not be read or written (" + error.what() +
                        "); " + error.advice());
}

void State::useReader(const Work& work) {
  std::unique_lock<std::mutex> lock(m_readerMutex);
  while (!isUsable()) {
    lock.unlock();
    open();
    lock.lock();
  }
  m_reader->waitAtMost(m_isImpatient ? std::chrono::milliseconds(0) : BUSY_TIMEOUT);
  try {
    work(*m_reader);
    m_isImpatient = false;
    if (m_file.isFrozen() && !m_file.isSame()) {
      throw busy("it was changed while it was read");
    }
  } catch (const DatabaseError& error) {
    m_isImpatient = error.isBusy();
    fail(error);
  }
}

void State::read(const Work& work) {
  useReader([&](Connection& connection) {
    Transaction transaction(connection, Transaction::Kind::Read);
    work(connection);
    transaction.commit();
  });
}

void State::lockWriter(std::unique_lock<std::timed_mutex>& lock, Clock::time_point until) {
  // Relative to the clock of the calendar, since sanitizers do not know the function that waits by the other
  // one.
  if (!lock.try_lock_until(std::chrono::system_clock::now() + (until - Clock::now()))) {
    throw busy("this process is waiting for it in another thread");
  }
}

void State::change(const Work& work, Clock::time_point until) {
  std::unique_lock<std::timed_mutex> lock(m_writerMutex, std::defer_lock);
  lockWriter(lock, until);
  while (!isUsable()) {
    lock.unlock();
    open();
    lockWriter(lock, until);
  }
  require(m_writer != nullptr, TVK_INTERNAL, [&] {
    return "the state file " + shownPath() +
           " lies on a read-only file system, so it can be read but not changed; mount it with write access";
  });
  const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
  m_writer->waitAtMost(std::max(rest, std::chrono::milliseconds(0)));
  try {
    Transaction transaction(*m_writer, Transaction::Kind::Change);
    work(*m_writer);
    transaction.commit();
    tidyUp();
  } catch (const DatabaseError& error) {
    fail(error);
  }
}

void State::changeWithDrives(const Work& work) {
  const std::vector<DriveRecord> found = scanDrives();
  change([&](Connection& connection) {
    DriveRegistry registry(connection);
    if (registry.differs(found)) {
      registry.reconcile(found);  // somebody was changing the state when it was tried without waiting
    }
    work(connection);
  });
}

void State::changeIfIdle(const Work& work) {
  std::unique_lock<std::timed_mutex> lock(m_writerMutex, std::try_to_lock);
  if (!lock || !isUsable() || m_writer == nullptr) {
    return;
  }
  {
    const HasteGuard haste(*m_writer);
    Transaction transaction(*m_writer, Transaction::Kind::Change);
    work(*m_writer);
    transaction.commit();
  }
  tidyUp();
}

void State::tidyUp() {
  // A process that ends without closing the file leaves its log behind, and the next one checks the whole
  // file. That takes no time unless the file is large.
  constexpr std::uint64_t LARGE = std::uint64_t{2} << 20U;
  if (m_file.currentSize() > LARGE) {
    m_writer->emptyLog();
  }
}

std::shared_ptr<const Snapshot> State::snapshot() {
  scanDrivesWhenDue();
  std::shared_ptr<const Snapshot> current;
  useReader([&](Connection& connection) {
    readSnapshot(connection);
    current = m_snapshot;
  });
  return current;
}

void State::readSnapshot(Connection& connection) {
  // Taken before the rows are read, so that a change in between makes the next call read again.
  m_versionQuery->rebind();
  const std::int64_t version = m_versionQuery->step() ? m_versionQuery->integer(0) : 0;
  m_versionQuery->rebind();  // ends its read transaction
  if (m_snapshot != nullptr && version == m_snapshotVersion) {
    return;
  }
  Transaction transaction(connection, Transaction::Kind::Read);
  const std::int64_t generation = SnapshotReader(connection).generation();
  if (m_snapshot == nullptr || generation != m_snapshotGeneration) {
    m_snapshot = std::make_shared<const Snapshot>(SnapshotReader(connection).configuration());
    m_snapshotGeneration = generation;
  }
  transaction.commit();
  m_snapshotVersion = version;
}

std::shared_ptr<Backing> State::backing() {
  const BackingChoice choice = snapshot()->configuration().backing;
  std::lock_guard<std::mutex> lock(m_backingMutex);
  if (m_backing == nullptr || choice.kind != m_choice.kind || choice.group != m_choice.group) {
    m_backing = Backing::of(choice);
    if (isDryRun() && choice.isReal()) {
      m_backing = std::make_shared<RehearsedBacking>(std::move(m_backing), m_rehearsal);
    }
    m_choice = choice;
  }
  return m_backing;
}

void State::scanDrivesWhenDue() {
  std::unique_lock<std::mutex> lock(m_scanMutex, std::try_to_lock);
  if (!lock || Clock::now() < m_nextScan) {
    return;  // recent enough, or being scanned by another thread
  }
  try {
    scanDrives();
  } catch (const Refusal& refusal) {
    if (refusal.status() == TVK_NO_DRIVER) {
      throw;
    }
    // Whoever needs the state next learns why it cannot be used.
  }
  m_nextScan = Clock::now() + DRIVE_SCAN_INTERVAL;
}

std::vector<DriveRecord> State::drivesOfMachine(const BackingChoice& backing) const {
  return m_scanner.scan(ownGroup(backing));
}

std::vector<DriveRecord> State::scanDrives() {
  BackingChoice backing;
  read([&](Connection& connection) { backing = SnapshotReader(connection).backing(); });
  std::vector<DriveRecord> found = m_scanner.scan(ownGroup(backing));
  bool differs = false;
  read([&](Connection& connection) { differs = DriveRegistry(connection).differs(found); });
  if (differs) {
    try {
      changeIfIdle([&](Connection& connection) { DriveRegistry(connection).reconcile(found); });
    } catch (const DatabaseError& error) {
      if (!error.isBusy()) {
        fail(error);
      }
      // Somebody is changing the state, so what is known of the drives will do until the next scan.
    }
  }
  return found;
}

std::int64_t State::takeEvents(VolEventCollection& events) {
  std::lock_guard<std::mutex> lock(m_eventMutex);
  EventJournal::Progress progress;
  read([&](Connection& connection) { progress = EventJournal(connection).readAfter(m_lastEvent, events); });
  m_lastEvent = progress.newest;
  return progress.lost;
}

}  // namespace voltvk
