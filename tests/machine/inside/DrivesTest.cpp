// SPDX-License-Identifier: Apache-2.0
// The drives that a kernel really shows, which the recorded trees of other tests only imitate.
#include "voltvk/engine/drives/HostDriveScanner.h"
#include "voltvk/voltvk.h"

#include <gtest/gtest.h>

namespace {

TEST(DrivesInside, AreFoundWithTheirKindAndIdentity) {
  const std::vector<voltvk::DriveRecord> drives = voltvk::HostDriveScanner::ofThisMachine().scan();
  ASSERT_EQ(drives.size(), 4U);
  for (std::size_t i = 0; i < drives.size(); ++i) {
    const voltvk::DriveRecord& drive = drives[i];
    const bool isHardDisk = i < 2;
    const std::string kind = isHardDisk ? "HDD" : "SSD";
    SCOPED_TRACE(drive.name);
    EXPECT_EQ(drive.name, "/dev/sd" + std::string(1, static_cast<char>('a' + i)));
    EXPECT_EQ(drive.type, isHardDisk ? TVK_DEVICE_HDD : TVK_DEVICE_SSD);
    EXPECT_EQ(drive.sectors, 2U << 21U);  // 2 GiB
    EXPECT_EQ(drive.vendor + " " + drive.model, "EMULATED " + kind);
    EXPECT_EQ(drive.serial, kind + std::to_string(i % 2));
    EXPECT_EQ(drive.wwid, "naa.500000000000000" + std::to_string(i + 1));
    EXPECT_FALSE(drive.bootable || drive.partitioned || drive.mounted || drive.readOnly || drive.removable);
  }
}

}  // namespace
