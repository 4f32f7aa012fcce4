// SPDX-License-Identifier: Apache-2.0
// What can be said about the kernel's counters without a device: the rest is tested in the emulated machine.
#include "voltvk/engine/backing/lvm/DeviceMapper.h"

#include "voltvk/engine/backing/lvm/StatisticsText.h"
#include "voltvk/engine/backing/lvm/VolumeCounters.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>

using voltvk::DeviceMapper;

namespace {

TEST(DeviceMapper, ReadsNothingWhereThereIsNothingAndSaysWhyWithoutPrinting) {
  EXPECT_EQ(DeviceMapper::deviceName("my-group", "vol1_cache"), "my--group-vol1_cache");
  const voltvk::FileDescriptor control(open("/dev/mapper/control", O_RDWR | O_CLOEXEC));
  const DeviceMapper mapper;
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const std::string name = DeviceMapper::deviceName("no-such-group", "vol1");
  EXPECT_FALSE(mapper.device(name));
  EXPECT_FALSE(mapper.cacheStatus(name));
  EXPECT_FALSE(mapper.region(name));
  EXPECT_TRUE(mapper.take(name, {}).empty());
  EXPECT_FALSE(mapper.lastError().empty());
  EXPECT_FALSE(mapper.createRegion(name, 2048, 2048));
  EXPECT_EQ(mapper.obstacle().empty(), static_cast<bool>(control)) << mapper.obstacle();
  EXPECT_EQ(testing::internal::GetCapturedStderr() + testing::internal::GetCapturedStdout(), "");
}

TEST(DeviceMapper, UnderstandsWhatTheKernelPrints) {
  std::vector<voltvk::AreaStatistics> areas;
  voltvk::parseStatistics(
      "0+2048 0 0 0 0 0 0 0 0 0 0 0 0 0\n2048+2048 3 1 24 5 0 0 0 0 0 4 5 4 0\n\nnonsense\n4096+ 1\n"
      "18446744073709551616+8 1 0 8 0 1 0 8 0 0 0 0 0 0\n4096+8 18446744073709551615 0 8 0 7 0 8 0 0 0 0 0 0",
      areas);
  ASSERT_EQ(areas.size(), 2U);
  EXPECT_EQ(areas[0].firstSector, 2048U);
  EXPECT_EQ(areas[0].reads, 3U);
  EXPECT_EQ(areas[0].writes, 0U);
  EXPECT_EQ(areas[1].sectors, 8U);
  EXPECT_EQ(areas[1].reads, UINT64_MAX);
  EXPECT_EQ(areas[1].writes, 7U);
}

TEST(VolumeCounters, AreasAreChunksUntilThereAreTooMany) {
  voltvk::VolumeRecord volume;
  volume.type = 1;
  volume.chunkSectors = 2048;
  volume.ssdChunks = 36;
  for (const auto& [hdd, chunks] : {std::pair{100U, 1U}, {65500U, 1U}, {65501U, 2U}, {1000000U, 16U}}) {
    volume.hddChunks = hdd;
    EXPECT_EQ(voltvk::VolumeCounters::areaSectors(volume), 2048U * chunks) << hdd;
  }
}

}  // namespace
