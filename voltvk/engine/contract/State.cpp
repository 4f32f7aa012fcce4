// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/State.h"

#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Schema.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <map>

namespace voltvk {

std::shared_ptr<State> State::forProcess() {
  struct Registry {
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<State>> states;
  };
  // Never destroyed: a thread of a host that exits without clean-up may still be in here.
  static auto& registry = *new Registry;
  const std::string path = StateFile(StateFile::defaultPath()).path();
  std::lock_guard<std::mutex> lock(registry.mutex);
  std::shared_ptr<State> state = registry.states[path].lock();
  if (state == nullptr) {
    state = std::make_shared<State>(path, HostDriveScanner::ofThisMachine());
    registry.states[path] = state;
  }
  return state;
}

State::State(const std::string& path, HostDriveScanner scanner)
    : m_scanner(std::move(scanner)), m_file(path) {}

std::string State::path() {
  std::lock_guard<std::mutex> lock(m_readerMutex);
  return m_file.path();
}

std::string State::openError() {
  try {
    read([](Connection&) {});
    return {};
  } catch (const Refusal& refusal) {
    return refusal.what();
  }
}

bool State::isUsable(const std::unique_ptr<Connection>& connection) const {
  return connection != nullptr && !m_suspect && m_file.isSame();
}

void State::open() {
  std::scoped_lock lock(m_writerMutex, m_readerMutex);
  if (isUsable(m_reader)) {
    return;  // another thread has already done it
  }
  closeConnections();
  try {
    openConnections();
  } catch (const DatabaseError& error) {
    closeConnections();
    if (error.isBusy()) {
      throw Refusal(
          TVK_BUSY, "the state file " + m_file.path() + " is held by another process (" + error.what() +
                        "); try again when that has ended");
    }
    throw Refusal(
        TVK_NO_DRIVER,
        "the state file " + m_file.path() + " cannot be used (" + error.what() + "); " + error.advice());
  } catch (...) {
    closeConnections();
    throw;
  }
}

void State::closeConnections() {
  m_snapshot.reset();
  m_versionQuery.reset();
  m_reader.reset();
  m_writer.reset();
  m_file.close();
}

void State::openConnections() {
  const bool sameFile = m_file.isSame();
  m_file.prepare();
  auto writer = std::make_unique<Connection>(m_file.path());
  Schema::establish(*writer, m_file.path());
  {
    // The drives that the machine has from the beginning are not worth an event.
    Transaction transaction(*writer, Transaction::Kind::Change);
    DriveRegistry(*writer).reconcile(m_scanner.scan());
    const std::int64_t newest = EventJournal(*writer).newest();
    if (!sameFile || newest < m_lastEvent) {
      m_lastEvent = newest;
    }
    transaction.commit();
  }
  auto reader = std::make_unique<Connection>(m_file.path());
  reader->execute("PRAGMA query_only = ON");
  m_file.release();
  m_writer = std::move(writer);
  m_reader = std::move(reader);
  m_versionQuery = std::make_unique<Statement>(*m_reader, "PRAGMA data_version");
  m_suspect = false;
}

void State::fail(const DatabaseError& error) {
  const std::string file = "the state file " + m_file.path();
  if (error.isBusy()) {
    throw Refusal(
        TVK_BUSY, file + " is held by another process (" + error.what() + "); try again when that has ended");
  }
  if (error.isFileLost()) {
    m_suspect = true;  // the next call opens the file again and finds out what is wrong with it
  }
  throw Refusal(
      TVK_INTERNAL, file + " could not be read or written (" + error.what() + "); " + error.advice());
}

void State::use(
    std::mutex& mutex, std::unique_ptr<Connection>& connection,
    const std::function<void(Connection&)>& work) {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isUsable(connection)) {
    lock.unlock();
    open();
    lock.lock();
  }
  try {
    work(*connection);
  } catch (const DatabaseError& error) {
    fail(error);
  }
}

void State::read(const std::function<void(Connection&)>& work) {
  use(m_readerMutex, m_reader, [&](Connection& connection) {
    Transaction transaction(connection, Transaction::Kind::Read);
    work(connection);
    transaction.commit();
  });
}

void State::change(const std::function<void(Connection&)>& work) {
  use(m_writerMutex, m_writer, [&](Connection& connection) {
    Transaction transaction(connection, Transaction::Kind::Change);
    work(connection);
    transaction.commit();
  });
}

void State::changeIfIdle(const std::function<void(Connection&)>& work) {
  std::unique_lock<std::mutex> lock(m_writerMutex, std::try_to_lock);
  if (!lock || !isUsable(m_writer)) {
    return;
  }
  const HasteGuard haste(*m_writer);
  Transaction transaction(*m_writer, Transaction::Kind::Change);
  work(*m_writer);
  transaction.commit();
}

std::shared_ptr<const Snapshot> State::snapshot() {
  scanDrivesWhenDue();
  std::shared_ptr<const Snapshot> current;
  use(m_readerMutex, m_reader, [&](Connection& connection) {
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
  m_snapshot = std::make_shared<const Snapshot>(SnapshotReader(connection).configuration());
  transaction.commit();
  m_snapshotVersion = version;
}

void State::scanDrivesWhenDue() {
  std::unique_lock<std::mutex> lock(m_scanMutex, std::try_to_lock);
  if (!lock || std::chrono::steady_clock::now() < m_nextScan) {
    return;  // recent enough, or being scanned by another thread
  }
  try {
    scanDrives();
  } catch (const Refusal& refusal) {
    if (refusal.status() == TVK_NO_DRIVER) {
      throw;
    }
    // Others are using the state: what is known of the drives will do until the next scan.
  }
  m_nextScan = std::chrono::steady_clock::now() + DRIVE_SCAN_INTERVAL;
}

void State::scanDrives() {
  bool differs = false;
  read([&](Connection& connection) { differs = DriveRegistry(connection).differs(m_scanner.scan()); });
  if (differs) {
    // Scanned again under the write lock, so that of two processes' scans the later is recorded last.
    change([&](Connection& connection) { DriveRegistry(connection).reconcile(m_scanner.scan()); });
  }
}

void State::takeEvents(VolEventCollection& events) {
  std::lock_guard<std::mutex> lock(m_eventMutex);
  read(
      [&](Connection& connection) { m_lastEvent = EventJournal(connection).readAfter(m_lastEvent, events); });
}

}  // namespace voltvk
