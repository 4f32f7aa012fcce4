// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSMUTEXGUARD_H
#define OSLIB_KVSMUTEXGUARD_H

#include "oslib/KVSMutex.h"

/**
 * Holds a mutex for a scope. Locking may fail (no mutex, or a system error): check locked() before touching
 * what the mutex protects. A guard belongs to one thread.
 */
class KvsMutexGuard {
public:
  explicit KvsMutexGuard(KvsMutexHandle handle) : m_handle(handle), m_locked(KvsMutexLock(handle) == 0) {}
  ~KvsMutexGuard() { unlock(); }

  KvsMutexGuard(const KvsMutexGuard&) = delete;
  KvsMutexGuard& operator=(const KvsMutexGuard&) = delete;

  /** @return whether this guard holds the mutex. */
  bool locked() const noexcept { return m_locked; }

  /** Releases the mutex before the scope ends. Has no effect if it is not held. */
  void unlock() {
    if (m_locked) {
      m_locked = false;
      KvsMutexUnlock(m_handle);
    }
  }

  /** Leaves the mutex locked when the scope ends; the calling thread continues to hold it. */
  void keepLocked() noexcept { m_locked = false; }

private:
  KvsMutexHandle m_handle;
  bool m_locked;
};

#endif
