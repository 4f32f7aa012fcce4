// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSLOGSWITCH_H
#define OSLIB_KVSLOGSWITCH_H

#include <atomic>
#include <cstdint>

/**
 * Whether there is a log at all, checked before its lock is taken: without a log, which is the usual case,
 * threads do not wait for each other's check of a missing file. Every line checks again, so that it reaches a
 * log that was just created.
 *
 * The quick check can only ever say "switched off". It does not say so while the last check under the lock
 * found the file, nor while a thread keeps the lock.
 * COMPAT: a kept lock holds up the other threads whether there is a log or not.
 *
 * All members may be called from any thread; threads may log until the process ends, so an object of this
 * class needs no destruction.
 */
class KvsLogSwitch {
public:
  /**
   * Sets the path of the log. Called without the lock.
   * @throws std::bad_alloc leaving everything as it was
   */
  void watch(const char* path);

  /** Removes the path: there is no log from now on. Called with the lock held. */
  void stopWatching();

  /** Whether there is certainly no log to write to; also false if only a check under the lock can tell. */
  bool isOff() const;

  /**
   * Looks for the file. Called with the lock held.
   * @param size set to the file's size in bytes
   * @return whether the file exists
   */
  bool look(const char* path, std::uint64_t& size);

  /** Whether a thread keeps the lock because of a line that failed. */
  bool isLockKept() const { return m_lockKept; }
  void setLockKept(bool kept) { m_lockKept = kept; }

private:
  std::atomic<const char*> m_path{nullptr};
  std::atomic<bool> m_fileSeen{false};  ///< the last check under the lock found the file
  std::atomic<bool> m_lockKept{false};
};

#endif
