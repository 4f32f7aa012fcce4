// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Broker.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <pthread.h>
#include <unistd.h>

namespace tvp::host {
namespace {

/* These functions do not take a broker: they are POSIX functions under other names. */

static_assert(sizeof(pthread_t) == sizeof(void*), "a thread's handle travels as a pointer");
static_assert(sizeof(pthread_once_t) == sizeof(int), "the standard's once flag is the system's");

pthread_t threadOf(void* handle) {
  pthread_t thread{};
  std::memcpy(&thread, &handle, sizeof thread);
  return thread;
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

int threadSleep(CMPIUint32 milliseconds) {
  timespec rest{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
  while (nanosleep(&rest, &rest) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int createThreadKey(unsigned long* key, void (*destroy)(void*)) {
  pthread_key_t created{};
  const int failure = pthread_key_create(&created, destroy);
  if (failure == 0) {
    *key = created;
  }
  return failure;
}

/** Creates a mutex or a condition variable; null on failure. */
template <class Thing, class Attributes>
void* newThing(int (*initialise)(Thing*, const Attributes*)) {
  auto thing = std::make_unique<Thing>();
  return initialise(thing.get(), nullptr) == 0 ? thing.release() : nullptr;
}

template <class Thing>
void destroyThing(void* handle, int (*destroy)(Thing*)) {
  const std::unique_ptr<Thing> owned(static_cast<Thing*>(handle));
  if (owned != nullptr) {
    destroy(owned.get());
  }
}

pthread_mutex_t* mutexOf(void* handle) {
  return static_cast<pthread_mutex_t*>(handle);
}

pthread_cond_t* conditionOf(void* handle) {
  return static_cast<pthread_cond_t*>(handle);
}

CMPIBrokerExtFT makeTable() {
  CMPIBrokerExtFT table{};
  table.ftVersion = CMPIVersion200;
  table.resolveFileName = [](const char* name) {  // the caller frees the result
    return name == nullptr ? nullptr : strdup(("lib" + std::string(name) + ".so").c_str());
  };
  table.newThread = newThread;
  table.joinThread = [](void* thread, void** result) { return pthread_join(threadOf(thread), result); };
  table.exitThread = [](void* result) -> int { pthread_exit(result); };
  table.cancelThread = [](void* thread) { return pthread_cancel(threadOf(thread)); };
  table.threadSleep = threadSleep;
  table.threadOnce = pthread_once;
  table.createThreadKey = createThreadKey;
  table.destroyThreadKey = [](unsigned long key) {
    return pthread_key_delete(static_cast<pthread_key_t>(key));
  };
  table.getThreadSpecific = [](unsigned long key) {
    return pthread_getspecific(static_cast<pthread_key_t>(key));
  };
  table.setThreadSpecific = [](unsigned long key, void* value) {
    return pthread_setspecific(static_cast<pthread_key_t>(key), value);
  };
  table.newMutex = [](int) { return newThing(pthread_mutex_init); };
  table.destroyMutex = [](void* mutex) { destroyThing(mutex, pthread_mutex_destroy); };
  table.lockMutex = [](void* mutex) { pthread_mutex_lock(mutexOf(mutex)); };
  table.unlockMutex = [](void* mutex) { pthread_mutex_unlock(mutexOf(mutex)); };
  table.newCondition = [](int) { return newThing(pthread_cond_init); };
  table.destroyCondition = [](void* condition) { destroyThing(condition, pthread_cond_destroy); };
  table.condWait = [](void* condition, void* mutex) {
    return pthread_cond_wait(conditionOf(condition), mutexOf(mutex));
  };
  table.timedCondWait = [](void* condition, void* mutex, timespec* until) {
    return pthread_cond_timedwait(conditionOf(condition), mutexOf(mutex), until);
  };
  table.signalCondition = [](void* condition) { return pthread_cond_signal(conditionOf(condition)); };
  return table;
}

}  // namespace

CMPIBrokerExtFT* brokerSystemTable() {
  static CMPIBrokerExtFT table = makeTable();
  return &table;
}

}  // namespace tvp::host
