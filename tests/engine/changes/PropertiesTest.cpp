// SPDX-License-Identifier: Apache-2.0
// Properties that hold for all inputs: of the allocation, of texts, of many threads at once.
#include "engine/EngineFixture.h"
#include "text/Utf8.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/state/PlainText.h"

#include <atomic>
#include <numeric>
#include <random>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;
using voltvk::Extent;

namespace {

TEST(Allocation, TakesFreeChunksOnlyAndAllOfThem) {
  std::mt19937_64 random(11);
  for (int round = 0; round < 300; ++round) {
    const std::uint64_t total = 1 + random() % 200;
    std::vector<bool> taken(total);
    std::vector<Extent> used;
    for (std::uint64_t position = random() % 5; position < total; position += 1 + random() % 20) {
      const std::uint64_t length = 1 + random() % std::min<std::uint64_t>(total - position, 9);
      used.push_back({position, length});
      std::fill_n(taken.begin() + static_cast<std::ptrdiff_t>(position), length, true);
      position += length;
    }
    std::shuffle(used.begin(), used.end(), random);
    const auto free = static_cast<std::uint64_t>(std::count(taken.begin(), taken.end(), false));
    voltvk::ChunkAllocator allocator(total, used);
    ASSERT_EQ(allocator.freeChunks(), free);
    EXPECT_TRUE(allocator.allocate(free + 1).empty());
    while (allocator.freeChunks() > 0) {
      const std::uint64_t wanted = 1 + random() % allocator.freeChunks();
      std::uint64_t got = 0;
      std::uint64_t last = 0;
      for (const Extent& extent : allocator.allocate(wanted)) {
        EXPECT_GE(extent.first, last);
        last = extent.first + extent.chunks;
        ASSERT_LE(last, total);
        for (std::uint64_t chunk = extent.first; chunk < last; ++chunk, ++got) {
          ASSERT_FALSE(taken[chunk]) << "chunk " << chunk << " given twice";
          taken[chunk] = true;
        }
      }
      ASSERT_EQ(got, wanted);
    }
    EXPECT_EQ(std::count(taken.begin(), taken.end(), false), 0);
  }
}

TEST(Allocation, AGapThatFitsExactlyIsUsedWhole) {
  voltvk::ChunkAllocator allocator(30, {{3, 7}, {15, 15}});  // gaps of 3 and 5 chunks
  const auto take = [&](std::uint64_t chunks) {
    const std::vector<Extent> taken = allocator.allocate(chunks);
    EXPECT_EQ(taken.size(), 1U);
    return taken.empty() ? std::uint64_t{99} : taken.front().first;
  };
  EXPECT_EQ(take(5), 10U);
  EXPECT_EQ(take(3), 0U);
  EXPECT_EQ(allocator.freeChunks(), 0U);
  EXPECT_TRUE(allocator.allocate(1).empty());
}

TEST(Allocation, SharesAreAsEvenAsTheDrivesAllow) {
  std::mt19937_64 random(12);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::uint64_t> capacities(1 + random() % 8);
    std::generate(capacities.begin(), capacities.end(), [&] { return random() % 50; });
    const auto total = std::accumulate(capacities.begin(), capacities.end(), std::uint64_t{0});
    const std::uint64_t chunks = random() % (total + 1);
    const std::vector<std::uint64_t> shares = voltvk::shareOut(chunks, capacities);
    EXPECT_EQ(std::accumulate(shares.begin(), shares.end(), std::uint64_t{0}), chunks);
    const std::uint64_t largest = *std::max_element(shares.begin(), shares.end());
    for (std::size_t i = 0; i < shares.size(); ++i) {
      EXPECT_LE(shares[i], capacities[i]);
      EXPECT_TRUE(shares[i] == capacities[i] || shares[i] + 1 >= largest)
          << "drive " << i << " could take more";
    }
  }
}

TEST(Texts, AnyBytesBecomeValidUtf8) {
  std::mt19937_64 random(13);
  const std::string pieces[] = {
      "a",
      " ",
      "[",
      "\n",
      std::string(1, '\0'),
      "\xC3\xA9",
      "\xE2\x82\xAC",
      "\xF0\x9F\x92\xBE",
      "\xF0\x9F",
      "\xC0\x80",
      "\xED\xA0\x80",
      "\xF4\x90\x80\x80",
      "\xFF",
      "\x80"};
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (std::uint64_t i = random() % 60; i > 0; --i) {
      text += pieces[random() % std::size(pieces)];
    }
    const std::string clean = voltvk::cleanText(text);
    EXPECT_TRUE(tvp::text::isUtf8(clean));
    EXPECT_EQ(voltvk::cleanText(clean), clean);
    const std::string_view cut = tvp::text::cutToSize(clean, 20);
    EXPECT_LE(cut.size(), 20U);
    EXPECT_TRUE(clean.size() <= 20 ? cut == clean : cut.size() >= 17);
    EXPECT_TRUE(tvp::text::isUtf8(cut));
  }
}

TEST(Texts, FieldsAreCutBetweenCharacters) {
  char field[6];
  EXPECT_TRUE(tvkSetText(field, sizeof field, "abcde"));
  EXPECT_STREQ(field, "abcde");
  EXPECT_FALSE(tvkSetText(field, sizeof field, "abcd\xC3\xA9"));
  EXPECT_STREQ(field, "abcd");
  EXPECT_FALSE(tvkSetText(field, sizeof field, "\xF0\x9F\x92\xBE\xF0\x9F\x92\xBE"));
  EXPECT_STREQ(field, "\xF0\x9F\x92\xBE");
  EXPECT_TRUE(tvkSetText(field, sizeof field, nullptr));
  EXPECT_STREQ(field, "");
  EXPECT_FALSE(tvkSetText(field, 0, "a"));
}

class ThreadsTest : public EngineTest {};

TEST_F(ThreadsTest, EveryEventIsFetchedOnceAndCapacitiesAddUp) {
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 15;
  for (int i = 0; i < THREADS; ++i) {
    addDrive(TVK_DEVICE_HDD, 100 * MIB);
  }
  newEvents();
  std::atomic<int> working{THREADS};
  std::vector<std::thread> threads;
  threads.reserve(THREADS + 2);
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&, i] {
      TvkAdapter own;
      for (int round = 0; round < ROUNDS; ++round) {
        auto pool = poolSpec(("pool" + std::to_string(i)).c_str(), {static_cast<std::uint8_t>(i)}, 100 * MIB);
        EXPECT_EQ(own.createVirtualPool(pool).getReturn(), TVK_OK);
        auto volume =
            volumeSpec(("volume" + std::to_string(i)).c_str(), TVK_VOLUME_TIERED, {{pool.poolId, 100 * MIB}});
        EXPECT_EQ(own.createVirtualVolume(volume).getReturn(), TVK_OK);
        EXPECT_EQ(own.deleteVirtualVolume(volume.volumeId).getReturn(), TVK_OK);
        EXPECT_EQ(own.deleteVirtualPool(pool.poolId).getReturn(), TVK_OK);
      }
      --working;
    });
  }
  std::vector<std::uint32_t> fetched[2];
  for (auto& ids : fetched) {
    threads.emplace_back([&] {
      TvkAdapter own;
      bool last = false;
      while (!last) {
        last = working == 0;
        VolEventCollection events(0, 8, 0);
        EXPECT_EQ(own.getEvents(events).getReturn(), TVK_OK);
        for (long k = 0; k < events.count(); ++k) {
          ids.push_back(events.Obj_P(k)->id);
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<std::uint32_t> all(fetched[0].begin(), fetched[0].end());
  all.insert(fetched[1].begin(), fetched[1].end());
  EXPECT_EQ(fetched[0].size() + fetched[1].size(), all.size()) << "an event was fetched twice";
  EXPECT_EQ(all.size(), static_cast<std::size_t>(THREADS * ROUNDS * 4));
  EXPECT_TRUE(std::is_sorted(fetched[0].begin(), fetched[0].end()));
  EXPECT_EQ(pools().size() + volumes().size(), 0U);
}

TEST_F(ThreadsTest, CachedDrivesMadeAtOnceGetPoolsWithDifferentNames) {
  constexpr std::uint8_t EACH = 8;
  const std::uint32_t ssd =
      (addDrive(TVK_DEVICE_SSD, 100 * MIB), createPool(poolSpec("s", {0}, 100 * MIB, TVK_TIER_SSD)));
  for (int i = 0; i < 2 * EACH; ++i) {
    addDrive(TVK_DEVICE_HDD, 10 * MIB);
  }
  const auto create = [&](std::uint8_t drive) {
    VirtualPoolSpec cache;
    cache.poolId = ssd;
    cache.capacityInSectors = 2 * MIB;
    VirtualPoolSpec pool = poolSpec("InternalPool1", {drive}, 10 * MIB);
    VirtualVolumeSpec volume = volumeSpec(("v" + std::to_string(drive)).c_str(), TVK_VOLUME_CACHED, {});
    return TvkAdapter().createCachedLD(cache, pool, volume).getReturn();
  };
  m_lib.reset();
  for (std::uint8_t drive = EACH + 1; drive <= 2 * EACH; ++drive) {
    if (fork() == 0) {
      _exit(static_cast<int>(create(drive)));
    }
  }
  for (int status = 0; wait(&status) > 0;) {
    EXPECT_EQ(status, 0);
  }
  std::vector<std::thread> threads;
  for (std::uint8_t drive = 1; drive <= EACH; ++drive) {
    threads.emplace_back([&, drive] { EXPECT_EQ(create(drive), TVK_OK); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  m_lib = std::make_unique<TvkLib>();
  std::set<std::string> names;
  const Listing<VirtualPool> all = pools();
  for (std::size_t i = 0; i < all.size(); ++i) {
    names.insert(all[i]->getName());
  }
  EXPECT_EQ(names.size(), 2U * EACH + 1);
  EXPECT_EQ(names.count("InternalPool" + std::to_string(2 * EACH)), 1U);
}

}  // namespace
