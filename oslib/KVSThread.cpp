// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSThread.h"

#include <cerrno>
#include <new>

#include <pthread.h>
#include <sys/select.h>
#include <unistd.h>

namespace {

constexpr std::size_t STACK_SIZE = 10485760;

struct Thread {
  pthread_t identifier;
  bool started;  ///< a thread that could not be started must not be joined
};

int exitValue = 0;

}  // namespace

KvsThreadHandle KvsThreadCreate(KvsThreadRoutine routine, void* argument) {
  auto* thread = new (std::nothrow) Thread{};
  if (thread == nullptr) {
    return nullptr;
  }
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) == 0) {
    pthread_attr_setstacksize(&attributes, STACK_SIZE);
    thread->started = pthread_create(&thread->identifier, &attributes, routine, argument) == 0;
    pthread_attr_destroy(&attributes);
  }
  return thread;
}

void KvsThreadExit(KvsThreadHandle handle) {
  KvsThreadRelease(handle);
  pthread_exit(&exitValue);
}

int KvsWaitForThreadTerminate(KvsThreadHandle handle) {
  const auto* thread = static_cast<const Thread*>(handle);
  if (thread != nullptr && thread->started) {
    pthread_join(thread->identifier, nullptr);
  }
  return 0;
}

void KvsThreadRelease(KvsThreadHandle handle) {
  delete static_cast<Thread*>(handle);
}

int KvsThreadSetPriority(int) {
  return 0;
}

int KvsCancelThreadSyncIO(KvsThreadHandle) {
  return 0;
}

int KvsGetCurrentThreadId(std::uint64_t* identifier) {
  if (identifier != nullptr) {
    *identifier = pthread_self();
  }
  return errno;
}

int KvsSleep(std::uint32_t seconds) {
  sleep(seconds);
  return 0;
}

int KvsMilliSleep(std::int32_t milliseconds) {
  timeval duration{};
  duration.tv_sec = milliseconds / 1000;
  duration.tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000;
  select(0, nullptr, nullptr, nullptr, &duration);
  return 0;
}
