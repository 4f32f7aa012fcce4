// SPDX-License-Identifier: Apache-2.0
// What the kernel tells about real volumes: open counts, reads and writes by chunk, the state of a cache.
#include "voltvk/engine/backing/lvm/DeviceMapper.h"

#include "voltvk/engine/backing/lvm/VolumeCounters.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

using voltvk::DeviceMapper;
using voltvk::FileDescriptor;
using voltvk::KernelCounters;
using voltvk::VolumeCounters;
using voltvk::VolumeRecord;

namespace {

constexpr std::uint64_t MIB = 2048;  ///< in sectors

using Counts = std::vector<std::array<std::uint64_t, 4>>;  // first chunk, chunks, reads, writes

Counts countsOf(const KernelCounters& counters) {
  Counts counts;
  for (const voltvk::AreaCounters& area : counters.areas) {
    counts.push_back({area.firstChunk, area.chunks, area.reads, area.writes});
  }
  return counts;
}

void run(const std::string& command) {
  ASSERT_EQ(std::system(("{ " + command + "; } >/tmp/output 2>&1").c_str()), 0)
      << command << ": " << std::ifstream("/tmp/output").rdbuf();
}

/** Reads or writes 4 KiB of a volume some times, past the page cache. */
void access(const std::string& volume, int flags, std::uint64_t mebibyte, int times) {
  const FileDescriptor device(open(("/dev/tvp/" + volume).c_str(), flags | O_DIRECT | O_CLOEXEC));
  alignas(4096) std::array<char, 4096> block{};
  for (int i = 0; i < times; ++i) {
    const auto offset = static_cast<off_t>((mebibyte << 20U) + static_cast<std::uint64_t>(i % 256) * 4096);
    const ssize_t done = flags == O_RDONLY ? pread(device.get(), block.data(), block.size(), offset)
                                           : pwrite(device.get(), block.data(), block.size(), offset);
    ASSERT_EQ(done, 4096);
  }
}

/** A volume group on a hard disk and an SSD, without volumes. */
class DeviceMapperTest : public testing::Test {
protected:
  void SetUp() override {
    std::string line;
    std::getline(std::ifstream("/proc/cmdline"), line);
    ASSERT_NE(line.find("machine.drives="), std::string::npos)
        << "this test runs in the emulated machine only";
    run("vgcreate -s 1m tvp /dev/sda /dev/sdc");
  }
  void TearDown() override { run("vgchange -an tvp && vgremove -y tvp && pvremove /dev/sda /dev/sdc"); }

  DeviceMapper m_mapper;
  VolumeCounters m_counters{"tvp", m_mapper};
};

TEST_F(DeviceMapperTest, CountsReadsAndWritesOfChunksWhereverTheyAre) {
  run("lvcreate -y -Wy -Zy -l 32 -n vol1 tvp /dev/sda:0-31 && lvextend -l +8 tvp/vol1 /dev/sdc:0-7");
  VolumeRecord volume;
  volume.id = 1;
  volume.type = 1;
  volume.chunkSectors = 2 * MIB;
  volume.hddChunks = 16;
  volume.ssdChunks = 4;
  const std::string device = DeviceMapper::deviceName("tvp", "vol1");
  EXPECT_EQ(m_mapper.obstacle(), "");
  EXPECT_TRUE(countsOf(m_counters.counters(volume)).empty());
  EXPECT_TRUE(m_mapper.createRegion(device, 40 * MIB, 2 * MIB + 8)) << m_mapper.lastError();
  m_counters.begin(volume);
  const auto region = m_mapper.region(device);
  ASSERT_TRUE(region) << m_mapper.lastError();
  m_counters.begin(volume);
  EXPECT_EQ(region->areas(), 20U);

  access("vol1", O_RDONLY, 6, 10);
  access("vol1", O_RDONLY, 7, 1);
  access("vol1", O_WRONLY, 39, 5);
  const Counts counted = {{3, 1, 11, 0}, {19, 1, 0, 5}};
  EXPECT_EQ(countsOf(m_counters.counters(volume)), counted);
  run("lvchange --refresh tvp/vol1 && pvmove --atomic -i 0 -n vol1 /dev/sda:6-7 /dev/sdc:20-21");
  access("vol1", O_RDONLY, 6, 4);
  VolumeCounters other("tvp", m_mapper);
  EXPECT_EQ(countsOf(other.counters(volume)), (Counts{{3, 1, 15, 0}, {19, 1, 0, 5}}));
  EXPECT_EQ(countsOf(other.take(volume)), (Counts{{3, 1, 15, 0}, {19, 1, 0, 5}}));
  EXPECT_TRUE(countsOf(m_counters.counters(volume)).empty()) << "what was taken is shown twice";
  EXPECT_TRUE(countsOf(m_counters.take(volume)).empty());

  EXPECT_EQ(m_mapper.device(device)->openCount, 0U);
  {
    const FileDescriptor user(open("/dev/tvp/vol1", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(m_mapper.device(device)->openCount, 1U);
  }
  run("vgchange -an tvp");
  EXPECT_FALSE(m_mapper.device(device));
  run("vgchange -ay tvp");
  EXPECT_TRUE(countsOf(m_counters.take(volume)).empty());
  access("vol1", O_WRONLY, 0, 1);
  EXPECT_EQ(countsOf(m_counters.take(volume)), (Counts{{0, 1, 0, 1}}));
}

TEST_F(DeviceMapperTest, CountsAsManyAreasAsThereMayBe) {
  run("lvcreate -y -Wy -Zy -l 256 -n vol1 tvp /dev/sda");
  const std::string device = DeviceMapper::deviceName("tvp", "vol1");
  const auto region = m_mapper.createRegion(device, 256 * MIB, 8);
  ASSERT_TRUE(region) << m_mapper.lastError();
  ASSERT_EQ(region->areas(), VolumeCounters::MAX_AREAS);
  for (const std::uint64_t mebibyte : {0U, 3U, 4U, 100U, 255U}) {
    access("vol1", O_RDONLY, mebibyte, 256);
  }
  for (const auto& areas : {m_mapper.read(device, *region), m_mapper.take(device, *region)}) {
    ASSERT_EQ(areas.size(), 5U * 256);
    EXPECT_EQ(areas[255].firstSector, 255U * 8);
    EXPECT_EQ(areas.back().firstSector, 65535U * 8);
    EXPECT_EQ(areas.back().reads, 1U);
  }
  EXPECT_TRUE(m_mapper.read(device, *region).empty());
  // The kernel allows its counters a quarter of the memory.
  const auto coarser = m_mapper.createRegion(device, std::uint64_t{1} << 23U, 1);
  ASSERT_TRUE(coarser) << m_mapper.lastError();
  EXPECT_GT(coarser->areaSectors, 1U);
  EXPECT_EQ(m_mapper.lastError(), "");
  EXPECT_EQ(m_mapper.region(device)->areaSectors, coarser->areaSectors);
}

TEST_F(DeviceMapperTest, ShowsWhatACacheDoes) {
  run("lvcreate -y -Wy -Zy -l 200 -n vol2 tvp /dev/sda && lvcreate -y -Wy -Zy -l 40 -n vol2_cache tvp "
      "/dev/sdc");
  EXPECT_FALSE(m_mapper.cacheStatus(DeviceMapper::deviceName("tvp", "vol2"))) << "not cached yet";
  run("lvconvert -y --type cache --cachevol vol2_cache --cachemode writeback --chunksize 1m tvp/vol2");
  VolumeRecord volume;
  volume.id = 2;
  volume.type = 2;
  access("vol2", O_WRONLY, 5, 1000);
  access("vol2", O_RDONLY, 5, 1000);
  // The cache keeps its counters beside the data.
  for (const char* change : {"true", "lvchange --refresh tvp/vol2", "vgchange -an tvp && vgchange -ay tvp"}) {
    run(change);
    const voltvk::CacheCounters cache = m_counters.take(volume).cache;
    EXPECT_EQ(cache.readHits + cache.readMisses, 1000U) << change;
    EXPECT_EQ(cache.writeHits + cache.writeMisses, 1000U) << change;
    EXPECT_GT(cache.readHits, 900U) << change;
    EXPECT_EQ(cache.blockSectors, 2048U);
    EXPECT_EQ(cache.usedBlocks, 1U) << change;
    EXPECT_GT(cache.totalBlocks, 30U);
  }
  const auto status = m_mapper.cacheStatus(DeviceMapper::deviceName("tvp", "vol2"));
  EXPECT_TRUE(status && !status->policy.empty() && !status->hasFailed && !status->needsCheck);
}

}  // namespace
