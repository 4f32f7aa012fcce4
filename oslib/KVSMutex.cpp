// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSMutex.h"

#include "oslib/KVSStatus.h"

#include <new>

#include <pthread.h>

namespace {

pthread_mutex_t* mutexOf(KvsMutexHandle handle) {
  return static_cast<pthread_mutex_t*>(handle);
}

int initRecursive(pthread_mutex_t* mutex) {
  pthread_mutexattr_t attributes;
  if (int failure = pthread_mutexattr_init(&attributes); failure != 0) {
    return failure;
  }
  int result = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  if (result == 0) {
    result = pthread_mutex_init(mutex, &attributes);
  }
  pthread_mutexattr_destroy(&attributes);
  return result;
}

}  // namespace

KvsMutexHandle KvsMutexInit() {
  auto* mutex = new (std::nothrow) pthread_mutex_t;
  if (mutex == nullptr) {
    return nullptr;
  }
  // COMPAT: the block is not freed after a failure.
  return initRecursive(mutex) == 0 ? mutex : nullptr;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
}

int KvsMutexLock(KvsMutexHandle handle) {
  if (handle == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  return pthread_mutex_lock(mutexOf(handle)) == 0 ? KVS_DONE : KVS_FAILED;
}

int KvsMutexUnlock(KvsMutexHandle handle) {
  if (handle == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  return pthread_mutex_unlock(mutexOf(handle)) == 0 ? KVS_DONE : KVS_FAILED;
}

int KvsMutexDelete(KvsMutexHandle* handle) {
  if (handle == nullptr || *handle == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  if (pthread_mutex_destroy(mutexOf(*handle)) != 0) {
    return KVS_FAILED;
  }
  delete mutexOf(*handle);
  *handle = nullptr;
  return KVS_DONE;
}
