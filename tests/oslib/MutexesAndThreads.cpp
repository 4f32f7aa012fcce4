// SPDX-License-Identifier: Apache-2.0
// The mutexes that guard the provider, and the functions behind the listener's thread.
#include "oslib/KVSMutex.h"
#include "oslib/KVSMutexGuard.h"
#include "oslib/KVSThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>

#include <pthread.h>

/** These tests misuse mutexes on purpose, which the thread sanitizer must not report. */
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() {
  return "report_mutex_bugs=0";
}

namespace {

using Clock = std::chrono::steady_clock;

/** A mutex of one test. */
class Mutex : public ::testing::Test {
protected:
  ~Mutex() override { KvsMutexDelete(&m_mutex); }

  /** What unlocking returns in a thread that does not hold the mutex. */
  int unlockElsewhere() const {
    return std::async(std::launch::async, [this] { return KvsMutexUnlock(m_mutex); }).get();
  }

  /** Starts a thread that locks and unlocks the mutex. */
  std::future<void> takeElsewhere() const {
    return std::async(std::launch::async, [this] {
      KvsMutexLock(m_mutex);
      KvsMutexUnlock(m_mutex);
    });
  }

  KvsMutexHandle m_mutex = KvsMutexInit();
};

TEST_F(Mutex, IsRecursiveAndNeedsAsManyUnlocks) {
  ASSERT_EQ(KvsMutexLock(m_mutex), 0);
  ASSERT_EQ(KvsMutexLock(m_mutex), 0);
  std::future<void> other = takeElsewhere();
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 0);
  EXPECT_EQ(other.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 0);
  EXPECT_EQ(other.wait_for(std::chrono::minutes(2)), std::future_status::ready);
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 1);
}

TEST_F(Mutex, RefusesMissingHandlesStrangersAndDeletionWhileHeld) {
  KvsMutexHandle none = nullptr;
  EXPECT_EQ(KvsMutexLock(none), 3);
  EXPECT_EQ(KvsMutexUnlock(none), 3);
  EXPECT_EQ(KvsMutexDelete(&none), 3);
  EXPECT_EQ(KvsMutexDelete(nullptr), 3);

  ASSERT_EQ(KvsMutexLock(m_mutex), 0);
  EXPECT_EQ(unlockElsewhere(), 1);
  const KvsMutexHandle handle = m_mutex;
  EXPECT_EQ(KvsMutexDelete(&m_mutex), 1);
  EXPECT_EQ(m_mutex, handle);
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 0);
  EXPECT_EQ(KvsMutexDelete(&m_mutex), 0);
  EXPECT_EQ(m_mutex, nullptr);
}

TEST_F(Mutex, GuardHoldsForItsScopeUnlessToldOtherwise) {
  {
    const KvsMutexGuard guard(m_mutex);
    EXPECT_TRUE(guard.locked());
    EXPECT_EQ(unlockElsewhere(), 1);
  }
  {
    KvsMutexGuard guard(m_mutex);
    guard.unlock();
    EXPECT_FALSE(guard.locked());
  }
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 1) << "still locked after its scope or an early unlock";
  {
    KvsMutexGuard guard(m_mutex);
    guard.keepLocked();
  }
  EXPECT_EQ(KvsMutexUnlock(m_mutex), 0) << "given back although it was to be kept";
  EXPECT_FALSE(KvsMutexGuard(nullptr).locked());
}

struct Observed {
  std::atomic<int> runs{0};
  std::atomic<std::size_t> stackSize{0};
};

void* observe(void* argument) {
  auto* observed = static_cast<Observed*>(argument);
  pthread_attr_t attributes;
  std::size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  }
  observed->stackSize = size;
  ++observed->runs;
  return nullptr;
}

TEST(Thread, RunsWithItsArgumentAndStackUntilItIsJoined) {
  Observed observed;
  const KvsThreadHandle thread = KvsThreadCreate(observe, &observed);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(KvsCancelThreadSyncIO(thread), 0);
  EXPECT_EQ(KvsWaitForThreadTerminate(thread), 0);
  EXPECT_EQ(observed.runs, 1);
  EXPECT_EQ(observed.stackSize, 10485760U);
  KvsThreadRelease(thread);
  EXPECT_EQ(KvsWaitForThreadTerminate(nullptr), 0);
  KvsThreadRelease(nullptr);
}

/** Frees the thread handle that it is given and ends its own thread. */
void* endEarly(void* handle) {
  KvsThreadExit(handle);
}

TEST(Thread, ExitEndsTheThreadWithZeroAndFreesTheHandle) {
  Observed observed;
  const KvsThreadHandle handle = KvsThreadCreate(observe, &observed);
  KvsWaitForThreadTerminate(handle);
  for (const KvsThreadHandle argument : {handle, KvsThreadHandle{nullptr}}) {
    pthread_t thread{};
    void* value = nullptr;
    ASSERT_EQ(pthread_create(&thread, nullptr, endEarly, argument), 0);
    ASSERT_EQ(pthread_join(thread, &value), 0);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(*static_cast<int*>(value), 0);
  }
}

TEST(Thread, CurrentThreadIdReturnsErrno) {
  std::uint64_t identifier = 0;
  errno = ENOENT;
  EXPECT_EQ(KvsGetCurrentThreadId(&identifier), ENOENT);
  EXPECT_EQ(identifier, static_cast<std::uint64_t>(pthread_self()));
  errno = 0;
  EXPECT_EQ(KvsGetCurrentThreadId(nullptr), 0);
}

TEST(Thread, SleepsAtLeastTheGivenTime) {
  for (const int milliseconds : {0, 20, 1010}) {
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(KvsMilliSleep(milliseconds), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(milliseconds));
  }
  EXPECT_EQ(KvsMilliSleep(-1), 0);
  EXPECT_EQ(KvsSleep(0), 0);
}

}  // namespace
