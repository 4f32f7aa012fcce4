// SPDX-License-Identifier: Apache-2.0
#include "host/broker/BrokerState.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <pthread.h>
#include <unistd.h>

namespace tvp::host {
namespace {

/* These functions have no broker among their arguments: they are POSIX under other names. */

static_assert(sizeof(pthread_t) == sizeof(void*), "a thread's handle travels as a pointer");
static_assert(sizeof(pthread_once_t) == sizeof(int), "the standard's once flag is the system's");

pthread_t threadOf(void* handle) {
  pthread_t thread{};
  std::memcpy(&thread, &handle, sizeof thread);
  return thread;
}

/** The caller frees the name. */
char* resolveFileName(const char* name) {
  return name == nullptr ? nullptr : strdup(("lib" + std::string(name) + ".so").c_str());
}

void* newThread(void* (*start)(void*), void* argument, int detached) {
  pthread_t thread{};
  if (start == nullptr || pthread_create(&thread, nullptr, start, argument) != 0) {
    return nullptr;
  }
  if (detached != 0) {
    pthread_detach(thread);
  }
  void* handle = nullptr;
  std::memcpy(&handle, &thread, sizeof handle);
  return handle;
}

int joinThread(void* thread, void** result) {
  return pthread_join(threadOf(thread), result);
}

int exitThread(void* result) {
  pthread_exit(result);
}

int cancelThread(void* thread) {
  return pthread_cancel(threadOf(thread));
}

int threadSleep(CMPIUint32 milliseconds) {
  timespec rest{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
  while (nanosleep(&rest, &rest) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int threadOnce(int* once, void (*initialise)()) {
  return pthread_once(once, initialise);
}

int createThreadKey(unsigned long* key, void (*destroy)(void*)) {
  pthread_key_t created{};
  const int failure = pthread_key_create(&created, destroy);
  if (failure == 0) {
    *key = created;
  }
  return failure;
}

int destroyThreadKey(unsigned long key) {
  return pthread_key_delete(static_cast<pthread_key_t>(key));
}

void* getThreadSpecific(unsigned long key) {
  return pthread_getspecific(static_cast<pthread_key_t>(key));
}

int setThreadSpecific(unsigned long key, void* value) {
  return pthread_setspecific(static_cast<pthread_key_t>(key), value);
}

void* newMutex(int) {
  auto mutex = std::make_unique<pthread_mutex_t>();
  return pthread_mutex_init(mutex.get(), nullptr) == 0 ? mutex.release() : nullptr;
}

void destroyMutex(void* mutex) {
  const std::unique_ptr<pthread_mutex_t> owned(static_cast<pthread_mutex_t*>(mutex));
  if (owned != nullptr) {
    pthread_mutex_destroy(owned.get());
  }
}

void lockMutex(void* mutex) {
  pthread_mutex_lock(static_cast<pthread_mutex_t*>(mutex));
}

void unlockMutex(void* mutex) {
  pthread_mutex_unlock(static_cast<pthread_mutex_t*>(mutex));
}

void* newCondition(int) {
  auto condition = std::make_unique<pthread_cond_t>();
  return pthread_cond_init(condition.get(), nullptr) == 0 ? condition.release() : nullptr;
}

void destroyCondition(void* condition) {
  const std::unique_ptr<pthread_cond_t> owned(static_cast<pthread_cond_t*>(condition));
  if (owned != nullptr) {
    pthread_cond_destroy(owned.get());
  }
}

int condWait(void* condition, void* mutex) {
  return pthread_cond_wait(static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex));
}

int timedCondWait(void* condition, void* mutex, timespec* until) {
  return pthread_cond_timedwait(
      static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex), until);
}

int signalCondition(void* condition) {
  return pthread_cond_signal(static_cast<pthread_cond_t*>(condition));
}

}  // namespace

CMPIBrokerExtFT* brokerSystemTable() {
  static CMPIBrokerExtFT table = {CMPIVersion200,  resolveFileName,  newThread,         joinThread,
                                  exitThread,      cancelThread,     threadSleep,       threadOnce,
                                  createThreadKey, destroyThreadKey, getThreadSpecific, setThreadSpecific,
                                  newMutex,        destroyMutex,     lockMutex,         unlockMutex,
                                  newCondition,    destroyCondition, condWait,          timedCondWait,
                                  signalCondition};
  return &table;
}

}  // namespace tvp::host
