// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSLOGSWITCH_H
#define OSLIB_KVSLOGSWITCH_H

#include <atomic>
#include <cstdint>

/**
 * Whether there is a log at all, asked before its lock is taken: without a log, which is the usual case,
 * threads do not wait for each other's look at a file that is not there. Every line looks again, so that a
 * log that was just created gets it.
 *
 * The quick answer is only ever "switched off". It is not given while the last look under the lock found the
 * file, nor while a thread keeps the lock.
 * COMPAT: a kept lock holds up the other threads whether there is a log or not.
 *
 * All members may be called from any thread; threads may log until the process is gone, so an object of this
 * class needs no destruction.
 */
class KvsLogSwitch {
public:
  /**
   * From now on the log is at this path. Without the lock.
   * @throws std::bad_alloc leaving everything as it was
   */
  void watch(const char* path);

  /** There is no log from now on. The lock is held. */
  void stopWatching();

  /** Whether there is certainly no log to write to; false also when only a look under the lock can tell. */
  bool isOff() const;

  /**
   * Looks for the file. The lock is held.
   * @param size set to the file's size in bytes
   * @return whether the file exists
   */
  bool look(const char* path, std::uint64_t& size);

  /** Whether a thread keeps the lock, which it was left by a line that went wrong. */
  bool isLockKept() const { return m_lockKept; }
  void setLockKept(bool kept) { m_lockKept = kept; }

private:
  std::atomic<const char*> m_path{nullptr};
  std::atomic<bool> m_fileSeen{false};  ///< the last look under the lock found the file
  std::atomic<bool> m_lockKept{false};
};

#endif
