// SPDX-License-Identifier: Apache-2.0
// What many ask for at once is made once, and a failure to make it stays with whoever made it.
#include "host/tvpcim/remote/Kept.h"

#include "support/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace tvp::test {
namespace {

using host::tvpcim::Kept;

TEST(Kept, IsMadeOnceAnIntervalWhoeverAsks) {
  std::atomic<int> made{0};
  Kept<int> kept(std::chrono::hours(1), [&] { return ++made; });
  std::vector<std::thread> threads(8);
  std::atomic<int> sum{0};
  for (std::thread& thread : threads) {
    thread = std::thread([&] { sum += *kept.get(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(made, 1);
  EXPECT_EQ(sum, 8);  // who came before it was made has waited for it
}

TEST(Kept, TheOneBeforeServesWhileTheNextIsMade) {
  std::atomic<int> made{0};
  std::atomic<bool> mayEnd{true};
  Kept<int> kept(std::chrono::milliseconds(0), [&] {
    const int number = ++made;
    waitFor([&] { return mayEnd.load(); });
    return number;
  });
  EXPECT_EQ(*kept.get(), 1);
  mayEnd = false;
  std::thread maker([&] { EXPECT_EQ(*kept.get(), 2); });
  ASSERT_TRUE(waitFor([&] { return made == 2; }));
  EXPECT_EQ(*kept.get(), 1);
  mayEnd = true;
  maker.join();
}

TEST(Kept, AFailureIsNotKept) {
  bool fails = true;
  Kept<int> kept(std::chrono::hours(1), [&] { return fails ? throw std::runtime_error("not now") : 7; });
  EXPECT_THROW(kept.get(), std::runtime_error);
  fails = false;
  EXPECT_EQ(*kept.get(), 7);
}

}  // namespace
}  // namespace tvp::test
