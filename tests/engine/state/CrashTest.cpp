// SPDX-License-Identifier: Apache-2.0
// Killed processes and concurrent processes leave a consistent state behind.
#include "engine/EngineFixture.h"

#include <csignal>
#include <filesystem>
#include <map>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;

namespace {

class CrashTest : public EngineTest {
protected:
  static constexpr std::uint8_t DRIVES = 8;

  CrashTest() {
    for (std::uint8_t i = 0; i < DRIVES; ++i) {
      addDrive(i % 2 == 0 ? TVK_DEVICE_HDD : TVK_DEVICE_SSD, 100 * MIB);
    }
  }

  /** Makes random changes until it is killed or the time is up. */
  static void changeThings(unsigned int seed, std::chrono::milliseconds time) {
    std::mt19937 random(seed);
    TvkLib lib;
    TvkAdapter adapter;
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
      const auto drive = static_cast<std::uint8_t>(random() % DRIVES);
      const std::uint8_t tier = drive % 2 == 0 ? TVK_TIER_HDD : TVK_TIER_SSD;
      const std::string name = "name" + std::to_string(random() % 6);
      const std::uint32_t id = pick(random, adapter);
      VirtualPoolSpec pool = poolSpec(name.c_str(), {drive}, 80 * MIB, tier);
      VirtualPoolSpec ssd;
      ssd.poolId = id;
      ssd.capacityInSectors = 5 * MIB;
      VirtualVolumeSpec volume = volumeSpec(name.c_str(), TVK_VOLUME_TIERED, {{id, 30 * MIB}});
      switch (random() % 7) {
      case 0:
      case 1:
        adapter.createVirtualPool(pool);
        break;
      case 2:
        adapter.deleteVirtualPool(id);
        break;
      case 3:
        adapter.createVirtualVolume(volume);
        break;
      case 4:
        volume.featureType1 = TVK_VOLUME_CACHED;
        adapter.createCachedLD(ssd, pool, volume);
        break;
      case 5:
        adapter.modifyVirtualPool(id, poolSpec(name.c_str(), {}, 0, 0));
        break;
      default:
        adapter.deleteVirtualVolume(pickVolume(random, adapter));
      }
    }
  }

  static std::uint32_t pick(std::mt19937& random, TvkAdapter& adapter) {
    const Listing<VirtualPool> pools(&adapter, "VirtualPool");
    return pools.size() == 0 ? 0 : pools[random() % pools.size()]->getPoolId();
  }
  static std::uint32_t pickVolume(std::mt19937& random, TvkAdapter& adapter) {
    const Listing<VirtualVolume> volumes(&adapter, "VirtualVolume");
    return volumes.size() == 0 ? 0 : volumes[random() % volumes.size()]->getVolumeId();
  }

  static pid_t start(unsigned int seed, std::chrono::milliseconds time) {
    const pid_t child = fork();
    if (child == 0) {
      changeThings(seed, time);
      _exit(0);
    }
    return child;
  }

  /** Checks that capacities add up, nothing overlaps, and every internal pool has its volume. */
  void checkEverything() {
    m_lib = std::make_unique<TvkLib>();
    ASSERT_STREQ(m_lib->getOpenError(), "");
    const FilterCollection all(m_lib->getRootObject());
    std::map<const VirtualPool*, std::uint64_t> used;
    std::map<std::uint16_t, int> memberships;
    std::map<const VirtualPool*, std::map<std::uint64_t, std::uint64_t>> ranges;
    for (int i = 0; i < all.size(); ++i) {
      if (const auto* volume = dynamic_cast<VirtualVolume*>(all.elementAt(i))) {
        EXPECT_GE(volume->getVirtualPoolsCount(), 1);
        for (const Chunk* chunk : chunksOf(all.elementAt(i))) {
          const VirtualPool* pool = chunk->getProviderVirtualPool();
          used[pool] += chunk->getEndRange() + 1 - chunk->getStartRange();
          ranges[pool][chunk->getStartRange()] = chunk->getEndRange();
        }
      } else if (dynamic_cast<VirtualPool*>(all.elementAt(i)) != nullptr) {
        for (const Chunk* chunk : chunksOf(all.elementAt(i))) {
          ++memberships[chunk->getProviderLogical()->getDeviceNumber()];
        }
      }
    }
    for (int i = 0; i < all.size(); ++i) {
      if (const auto* pool = dynamic_cast<VirtualPool*>(all.elementAt(i))) {
        EXPECT_EQ(pool->getUsedCapacityInSectors(), used[pool]);
        EXPECT_LE(used[pool], pool->getCapacityInSectors());
        EXPECT_EQ(pool->isInternal(), pool->isInternal() && pool->getNumberOfVirtualVolumes() == 1);
      } else if (const auto* drive = dynamic_cast<LogicalDevice*>(all.elementAt(i))) {
        EXPECT_EQ(memberships[drive->getDeviceNumber()], drive->isUsed() ? 1 : 0);
      }
    }
    for (const auto& [pool, extents] : ranges) {
      std::uint64_t position = 0;
      for (const auto& [first, last] : extents) {
        EXPECT_GE(first, position) << "extents overlap";
        position = last + 1;
      }
    }
  }
};

TEST_F(CrashTest, AProcessKilledAtAnyMomentLeavesASoundState) {
  m_lib.reset();
  std::mt19937 random(1);
  for (unsigned int round = 0; round < 12; ++round) {
    const pid_t child = start(round, std::chrono::seconds(60));
    usleep(20000 + static_cast<useconds_t>(random() % 150000));  // the moment of the kill is the point
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    checkEverything();
    m_lib.reset();
  }
}

TEST_F(CrashTest, AProcessKilledWhileItCreatesTheStateLeavesAUsableOne) {
  for (unsigned int round = 0; round < 30; ++round) {
    ::setenv("VOLTVK_STATE", m_directory.file("new" + std::to_string(round)).c_str(), 1);
    const pid_t child = fork();
    if (child == 0) {
      TvkLib lib;
      _exit(0);
    }
    usleep(round * 1000);  // the moment of the kill is the point
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    TvkLib lib;
    EXPECT_STREQ(lib.getOpenError(), "");
  }
}

TEST_F(CrashTest, TwoProcessesMayChangeTheStateAtOnce) {
  m_lib.reset();
  const pid_t first = start(101, std::chrono::seconds(2));
  const pid_t second = start(202, std::chrono::seconds(2));
  for (pid_t child : {first, second}) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  checkEverything();
}

TEST_F(CrashTest, TheFileDoesNotGrowWithTheNumberOfChanges) {
  const std::string path = m_directory.file("state.db");
  const auto rounds = [&](int count) {
    for (int i = 0; i < count; ++i) {
      const std::uint32_t pool = createPool(poolSpec("a name of a usual length", {0}, 80 * MIB));
      ASSERT_EQ(adapter().deleteVirtualPool(pool).getReturn(), TVK_OK);
    }
  };
  rounds(10);
  const auto early = std::filesystem::file_size(path);
  rounds(1000);
  EXPECT_LE(std::filesystem::file_size(path), early * 12 / 10);
  EXPECT_LE(std::filesystem::file_size(path + "-wal"), 2U << 20U);
  m_lib.reset();
  EXPECT_LE(std::filesystem::file_size(path), early * 12 / 10);
}

}  // namespace
