// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSMUTEXGUARD_H
#define OSLIB_KVSMUTEXGUARD_H

#include "oslib/KVSMutex.h"

/**
 * Holds a mutex for a scope. Locking may fail (no mutex, or a system error): ask locked() before
 * touching what the mutex protects. One guard belongs to one thread.
 */
class KvsMutexGuard {
public:
  explicit KvsMutexGuard(KvsMutexHandle handle) : m_handle(handle), m_locked(KvsMutexLock(handle) == 0) {}
  ~KvsMutexGuard() { unlock(); }

  KvsMutexGuard(const KvsMutexGuard&) = delete;
  KvsMutexGuard& operator=(const KvsMutexGuard&) = delete;

  /** @return whether this guard holds the mutex. */
  bool locked() const noexcept { return m_locked; }

  /** Gives the mutex back before the scope ends. Without effect when it is not held. */
  void unlock() {
    if (m_locked) {
      m_locked = false;
      KvsMutexUnlock(m_handle);
    }
  }

  /** Leaves the mutex locked when the scope ends; the caller's thread goes on holding it. */
  void keepLocked() noexcept { m_locked = false; }

private:
  KvsMutexHandle m_handle;
  bool m_locked;
};

#endif
