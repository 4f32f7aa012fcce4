// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSSINGLETON_H
#define OSLIB_KVSSINGLETON_H

#include "oslib/KVSMutexGuard.h"

#include <atomic>
#include <mutex>
#include <new>

// How the singletons of the process are created: on first use, each under its own mutex, which is made during
// static construction. Their pointers are not reset when they are deleted: nothing may use them afterwards.

/** The result of kvsCreateSingleton. */
enum class KvsSingletonCreation {
  NotLocked,  ///< the mutex cannot be locked
  Found,      ///< the singleton already exists
  Created,
  Failed  ///< out of memory, or create refused
};

/**
 * Creates a singleton unless it exists. The pointer is written only with the lock held; what happens to the
 * lock is up to the caller.
 * @param lock the guard of the singleton's mutex
 * @param create T*(): creates the object with new (std::nothrow); the constructor may throw std::bad_alloc
 */
template <typename T, typename Create>
KvsSingletonCreation kvsCreateSingleton(std::atomic<T*>& pointer, const KvsMutexGuard& lock, Create create) {
  if (!lock.locked()) {
    return KvsSingletonCreation::NotLocked;
  }
  if (pointer.load() != nullptr) {
    return KvsSingletonCreation::Found;
  }
  T* created = nullptr;
  try {
    created = create();
  } catch (const std::bad_alloc&) {
    created = nullptr;
  }
  pointer.store(created);
  return created != nullptr ? KvsSingletonCreation::Created : KvsSingletonCreation::Failed;
}

/**
 * Destroys a singleton when the library is unloaded. It creates the mutexes when the library is loaded and
 * deletes them after the singleton, the further one first.
 */
template <typename T>
class KvsSingletonCleanUp {
public:
  /** @param mutex, further variables that live as long as this; further may be null */
  explicit KvsSingletonCleanUp(KvsMutexHandle* mutex, KvsMutexHandle* further = nullptr)
      : m_mutex(mutex), m_further(further) {
    *mutex = KvsMutexInit();
    if (further != nullptr) {
      *further = KvsMutexInit();
    }
  }
  ~KvsSingletonCleanUp() {
    delete m_instance;
    KvsMutexDelete(m_further);
    KvsMutexDelete(m_mutex);
  }
  KvsSingletonCleanUp(const KvsSingletonCleanUp&) = delete;
  KvsSingletonCleanUp& operator=(const KvsSingletonCleanUp&) = delete;

  /** Registers what to destroy; only the first registration counts. */
  void SetInstance(T* instance) {
    if (m_instance == nullptr) {
      m_instance = instance;
    }
  }

private:
  T* m_instance = nullptr;
  KvsMutexHandle* m_mutex;
  KvsMutexHandle* m_further;
};

/**
 * The singleton, created by the first caller and registered for clean-up.
 *
 * COMPAT: the thread that creates it keeps the mutex, which is harmless because later calls find the
 * singleton before they reach the lock. Threads that make the first call together must not block on it, hence
 * the second mutex.
 * @return null if the mutex cannot be locked or the object cannot be created; a later call tries again
 */
template <typename T, typename Create>
T* kvsSingletonThatKeepsItsLock(
    std::atomic<T*>& pointer, KvsMutexHandle mutex, KvsSingletonCleanUp<T>& cleanUp, Create create) {
  if (T* existing = pointer.load(std::memory_order_acquire)) {
    return existing;
  }
  static std::mutex creation;
  const std::lock_guard<std::mutex> oneCreator(creation);
  if (T* existing = pointer.load()) {
    return existing;
  }
  KvsMutexGuard lock(mutex);
  if (kvsCreateSingleton(pointer, lock, create) == KvsSingletonCreation::Created) {
    cleanUp.SetInstance(pointer.load());
    lock.keepLocked();
  }
  return pointer.load();
}

#endif
