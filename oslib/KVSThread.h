// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSTHREAD_H
#define OSLIB_KVSTHREAD_H

#include <cstdint>

/** A thread created by KvsThreadCreate. */
typedef void* KvsThreadHandle;

extern "C" {

typedef void* (*KvsThreadRoutine)(void* argument);

/**
 * Starts a joinable thread with a stack of 10 MiB.
 * @return a handle that ends with KvsThreadExit in the thread itself, or with KvsThreadRelease after waiting
 *         for the thread; null if memory runs out. A refusal of the system to start the thread is not
 *         reported: the handle is then that of a thread that has ended.
 */
KvsThreadHandle KvsThreadCreate(KvsThreadRoutine routine, void* argument);

/**
 * Ends the calling thread with an exit value that points to a 0; does not return. Frees the handle, which may
 * be null; it can no longer be used to wait for this thread.
 */
[[noreturn]] void KvsThreadExit(KvsThreadHandle handle);

/** Waits until the thread has ended. The handle may be null; it is not freed. @return 0. */
int KvsWaitForThreadTerminate(KvsThreadHandle handle);

/** Frees the handle of a thread that was waited for. The handle may be null. */
void KvsThreadRelease(KvsThreadHandle handle);

/** Does nothing: threads keep the default priority. @return 0. */
int KvsThreadSetPriority(int priority);

/** Does nothing: a blocking call of the thread is not interrupted. @return 0. */
int KvsCancelThreadSyncIO(KvsThreadHandle handle);

/**
 * Stores the calling thread's identifier where identifier points, unless it is null.
 * @return the calling thread's current errno, which is not a status. COMPAT: callers log it.
 */
int KvsGetCurrentThreadId(std::uint64_t* identifier);

/** Sleeps for the given seconds, less when a signal arrives. @return 0. */
int KvsSleep(std::uint32_t seconds);

/** Sleeps for the given milliseconds, less if a signal arrives. @return 0. */
int KvsMilliSleep(std::int32_t milliseconds);
}

#endif
