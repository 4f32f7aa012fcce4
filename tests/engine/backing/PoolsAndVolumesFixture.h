// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ENGINE_BACKING_POOLSANDVOLUMESFIXTURE_H
#define TESTS_ENGINE_BACKING_POOLSANDVOLUMESFIXTURE_H

#include "engine/EngineFixture.h"
#include "engine/backing/TestedBacking.h"
#include "voltvk/engine/contract/BackingAdministration.h"
#include "voltvk/engine/contract/StorageGrowth.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <map>
#include <thread>

namespace tvp::test {

/** Two empty hard disks, 0 and 1, and two empty SSDs, 2 and 3, of 2 GiB each, with the backing under test. */
class PoolsAndVolumes : public EngineTest {
protected:
  static constexpr std::uint64_t DRIVE = 2 * GIB;

  void SetUp() override {
    reopen([this] { ::unsetenv(m_backing->isReal() ? "VOLTVK_HOST_ROOT" : "NONE"); });
    m_backing->prepare();
    ASSERT_EQ(m_backing->onDrives(), "") << "left by another test";
    newEvents();
  }

  void TearDown() override {
    const std::string failures = deleteAll();
    EXPECT_EQ(failures + m_backing->onDrives(), "");
    EXPECT_THAT(differences(), testing::IsEmpty());
  }

  /** Does something while this process does not use the state. */
  void reopen(const std::function<void()>& work) {
    m_lib.reset();
    work();
    m_lib = std::make_unique<TvkLib>();
  }

  /** Refusals of the deletion of everything, the newest first. */
  std::string deleteAll() {
    std::string failures;
    const auto expectDone = [&](const Ret& ret) {
      failures += ret.getReturn() == TVK_OK ? "" : ret.getDetail();
    };
    while (failures.empty() && volumes().size() > 0) {
      expectDone(adapter().deleteVirtualVolume(volumes().last()->getVolumeId()));
    }
    while (failures.empty() && pools().size() > 0) {
      expectDone(adapter().deleteVirtualPool(pools().last()->getPoolId()));
    }
    return failures;
  }

  /** Creates a volume of a whole hard disk with a cache. @return the refusal, or its number in `volume` */
  Ret createCachedDrive(const char* name, std::uint8_t drive, std::uint32_t ssdPool, std::uint64_t cache) {
    VirtualPoolSpec ssd;
    ssd.poolId = ssdPool;
    ssd.capacityInSectors = cache;
    VirtualPoolSpec hdd = poolSpec("disk", {drive}, DRIVE);
    VirtualVolumeSpec volume = volumeSpec(name, TVK_VOLUME_CACHED, {});
    return adapter().createCachedLD(ssd, hdd, volume);
  }

  /** Per pool: name, capacity, used capacity, both in MiB, number of drives and of volumes. */
  std::vector<std::string> poolTexts() const {
    std::vector<std::string> texts;
    const auto listed = pools();
    for (std::size_t i = 0; i < listed.size(); ++i) {
      std::ostringstream text;
      text << listed[i]->getName() << ' ' << mib(listed[i]->getCapacityInSectors()) << ' '
           << mib(listed[i]->getUsedCapacityInSectors()) << ' ' << int{listed[i]->getNumberOfLogicalDevices()}
           << ' ' << int{listed[i]->getNumberOfVirtualVolumes()};
      texts.push_back(text.str());
    }
    return texts;
  }

  /** Per volume: name, type, capacity in MiB, and what its extents have from which pool. */
  std::vector<std::string> volumeTexts() const {
    std::vector<std::string> texts;
    const auto listed = volumes();
    for (std::size_t i = 0; i < listed.size(); ++i) {
      std::map<std::string, std::uint64_t> parts;
      for (const Chunk* extent : chunksOf(listed[i])) {
        parts[extent->getProviderVirtualPool()->getName()] +=
            extent->getEndRange() + 1 - extent->getStartRange();
      }
      std::ostringstream text;
      text << listed[i]->getName() << ' ' << int{listed[i]->getVolumeType()} << ' '
           << mib(listed[i]->getCapacityInSectors());
      for (const auto& [pool, sectors] : parts) {
        text << ' ' << pool << ':' << mib(sectors);
      }
      texts.push_back(text.str());
    }
    return texts;
  }

  /** All that the state says of pools and volumes, but for their activity. */
  static std::string configuration() {
    return Storage::rows("SELECT * FROM pool") + Storage::rows("SELECT * FROM pool_member") +
           Storage::rows(
               "SELECT id, name, description, type, chunk_sectors, hdd_chunks, ssd_chunks, knob, device"
               " FROM volume") +
           Storage::rows("SELECT * FROM volume_extent") +
           Storage::rows("SELECT volume, number, ssd FROM chunk JOIN volume ON volume = id AND type = 1"
                         " WHERE ssd <> (number >= hdd_chunks)") +
           Storage::rows("SELECT * FROM intent");
  }

  static std::vector<std::string> differences() {
    return voltvk::BackingAdministration(*state()).check(false).differences;
  }

  static voltvk::RoundResult runRound(std::uint32_t volume, bool dryRun = false) {
    return voltvk::VolumeUpkeep(*state()).runRound(volume, dryRun);
  }

  /** What growing is answered with, as if it were an operation of the contract. */
  static Ret grow(const std::function<void(voltvk::StorageGrowth&)>& work) {
    try {
      voltvk::StorageGrowth growth(*state());
      work(growth);
      return Ret();
    } catch (const voltvk::Refusal& refusal) {
      return Ret(refusal.status(), refusal.what());
    }
  }
  static Ret growVolume(std::uint32_t id, const voltvk::VolumeGrowth& wanted) {
    return grow([&](voltvk::StorageGrowth& growth) { growth.growVolume(id, wanted); });
  }
  static Ret addDriveTo(std::uint32_t pool, std::uint16_t drive) {
    return grow([&](voltvk::StorageGrowth& growth) { growth.addDrive(pool, drive); });
  }
  static Ret replaceDrive(
      std::uint32_t pool, std::uint16_t from, std::uint16_t to, const voltvk::MoveProgress& progress = {}) {
    return grow([&](voltvk::StorageGrowth& growth) { growth.replaceDrive(pool, {from, to}, progress); });
  }

  d_ioctl_user_stat statistics(std::uint32_t volume) const {
    d_ioctl_user_stat statistics{};
    EXPECT_EQ(adapter().getVirtualVolumeStats(&statistics, volume).getReturn(), TVK_OK);
    return statistics;
  }

  /** Waits until so many reads are counted, of which so many went to SSDs: what was counted may be a second
   * old. */
  void expectReads(std::uint32_t volume, std::uint64_t reads, std::uint64_t ssdReads) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (statistics(volume).readIoCount < reads && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    EXPECT_EQ(statistics(volume).readIoCount, reads);
    EXPECT_EQ(statistics(volume).ssdReadIoCount, ssdReads);
  }

  static std::uint64_t mib(std::uint64_t sectors) { return sectors / MIB; }
  /** What a drive has for the chunks of pools, in MiB. */
  std::uint64_t usableMib() const { return m_backing->isReal() ? 2048 - 17 : 2048; }
  /** Chunks of a pool that are kept for moves. */
  std::uint64_t reservedChunks() const { return m_backing->isReal() ? 32 : 0; }

  const std::unique_ptr<TestedBacking> m_backing = TestedBacking::make();
};

}  // namespace tvp::test

#endif
