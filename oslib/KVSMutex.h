// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSMUTEX_H
#define OSLIB_KVSMUTEX_H

/** A recursive mutex. Null means no mutex. Made by KvsMutexInit, freed by KvsMutexDelete. */
typedef void* KvsMutexHandle;

extern "C" {

/** @return a new recursive mutex that the caller owns, or null if none can be created. */
KvsMutexHandle KvsMutexInit();

/**
 * Locks the mutex; if the calling thread already holds it, only the depth is incremented.
 * @return 0 locked; 1 the lock failed; 3 the handle is null.
 */
int KvsMutexLock(KvsMutexHandle handle);

/** @return 0 unlocked one level; 1 the unlock failed (not the holder); 3 the handle is null. */
int KvsMutexUnlock(KvsMutexHandle handle);

/**
 * Frees the mutex and sets the variable to null.
 * @return 0 done; 1 the mutex is in use, and both it and the variable are unchanged; 3 the pointer or the
 *         variable is null.
 */
int KvsMutexDelete(KvsMutexHandle* handle);
}

#endif
