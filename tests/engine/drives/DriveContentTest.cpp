// SPDX-License-Identifier: Apache-2.0
// A drive on which something is stored never joins a pool that writes to it.
#include "support/TemporaryDirectory.h"
#include "voltvk/engine/drives/ContentProbe.h"
#include "voltvk/engine/drives/DriveClaim.h"
#include "voltvk/engine/drives/DriveContents.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Refusal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>
#include <vector>

using namespace tvp::test;
using namespace std::string_literals;

namespace {

/** Pieces of an image and their offsets; between them are zeros. */
using Image = std::vector<std::pair<std::size_t, std::string>>;

const Image EMPTY;
const Image LUKS = {{0, "LUKS\xba\xbe\0\1"s}};
const Image SWAP = {{1024, "\1\0\0\0\xd0\7"s}, {4086, "SWAPSPACE2"}};

std::string write(const TemporaryDirectory& directory, const Image& image) {
  std::string bytes(std::size_t{8} << 20U, '\0');
  for (const auto& [offset, piece] : image) {
    bytes.replace(offset, piece.size(), piece);
  }
  return directory.write("dev/sda", bytes);
}

TEST(DriveContentTest, WhateverIsStoredIsRecognised) {
  const TemporaryDirectory directory;
  const std::vector<std::pair<Image, std::string>> cases = {
      {EMPTY, ""},
      {LUKS, "is encrypted (LUKS)"},
      {SWAP, "holds swap space"},
      {{LUKS[0], SWAP[0], SWAP[1]}, "is encrypted (LUKS) and holds swap space"},
      {{{1080, "\x53\xef"}, {1120, "\x40"}}, "holds an ext4 file system"},
      {{{1080, "\x53\xef"}}, "holds an ext2 file system"},
      {{{65536 + 64, "_BHRfS_M"}}, "holds a btrfs file system"},
      // The checksum of the label is wrong, as after damage.
      {{{512, "LABELONE\1\0\0\0\0\0\0\0\0\0\0\0\x20\0\0\0LVM2 001"s}}, voltvk::PHYSICAL_VOLUME},
      {{{4096, "\xfc\x4e\x2b\xa9\1"}, {4096 + 144, "\x08"}}, "is a member of a software RAID"},
      {{{450, "\x83\0\0\0\0\x08\0\0\0\x08"s}, {510, "\x55\xaa"}}, "holds a partition table (dos)"},
      // Without the entry in the first sector that protects it from old programs.
      {{{512, "EFI "
              "PART\0\0\1\0\x5c\0\0\0\xbc\xa9\xb9\x11\0\0\0\0\1\0\0\0\0\0\0\0\xff\x3f\0\0\0\0\0\0\x22\0\0\0\0"
              "\0\0\0"
              "\xde\x3f\0\0\0\0\0\0000123456789abcdef\2\0\0\0\0\0\0\0\x80\0\0\0\x80\0\0\0\x86\xd2T\xab"s}},
       "holds a partition table (gpt)"},
  };
  for (const auto& [image, expected] : cases) {
    EXPECT_EQ(voltvk::contentOf(write(directory, image)), expected);
  }
  EXPECT_EQ(voltvk::contentOf(directory.file("nothing")), "cannot be read (No such file or directory)");
}

TEST(DriveContentTest, ADriveIsOpenedAgainWhenItIsAnotherOneOrAfterAWhile) {
  using Contents = voltvk::DriveContents;
  const TemporaryDirectory directory;
  Contents contents(directory.path().string());
  voltvk::DriveRecord drive;
  drive.name = "/dev/sda";
  const Contents::Clock::time_point begin;
  const auto look = [&](std::chrono::milliseconds after) {
    return contents.of(drive, directory.file("sda"), begin + after);
  };
  write(directory, SWAP);
  EXPECT_EQ(look({}), "holds swap space");
  write(directory, EMPTY);
  EXPECT_EQ(look(Contents::LONGEST - std::chrono::milliseconds(1)), "holds swap space");
  EXPECT_EQ(look(Contents::LONGEST), "");
  write(directory, LUKS);
  EXPECT_EQ(look(Contents::LONGEST), "");
  directory.write("sda/diskseq", "2\n");
  EXPECT_EQ(look(Contents::LONGEST), "is encrypted (LUKS)");
  write(directory, SWAP);
  drive.sectors = 9;
  EXPECT_EQ(look(Contents::LONGEST), "holds swap space");
}

TEST(DriveContentTest, OnlyAnUntouchedDriveIsClaimed) {
  const TemporaryDirectory directory;
  voltvk::DriveRecord drive;
  drive.number = 3;
  drive.name = "/dev/sdb";
  drive.sectors = 4096;
  const auto refusal = [&](const voltvk::DriveFinding& finding) {
    try {
      voltvk::requireUntouched(drive, finding);
    } catch (const voltvk::Refusal& refused) {
      return std::to_string(refused.status()) + " " + refused.what();
    }
    return std::string("none");
  };
  const std::string other = " and cannot join a pool; choose another drive";
  const std::vector<std::pair<voltvk::DriveFinding, std::string>> cases = {
      {{0, true, false, 4096, ""}, "none"},
      {{ENXIO, false, false, 0, ""},
       "20 drive 3 (/dev/sdb) is gone; plug it in again, or choose another drive"},
      {{EBUSY, false, false, 0, ""},
       "23 drive 3 (/dev/sdb) is mounted, used for swap or held by something else" + other},
      {{EACCES, false, false, 0, ""},
       "23 drive 3 (/dev/sdb) cannot be read (Permission denied) and cannot join a pool; check the drive, or "
       "choose another"},
      {{0, true, false, 2048, ""},
       "23 drive 3 (/dev/sdb) has 1 MiB instead of 2 MiB and cannot join a pool; look at the list of drives "
       "and choose again"},
      {{0, true, true, 4096, ""}, "23 drive 3 (/dev/sdb) is read-only" + other},
      {{0, true, false, 4096, "holds swap space"},
       "23 drive 3 (/dev/sdb) holds swap space" + other +
           ", or erase it with wipefs if its data is not needed"},
      {voltvk::findDrive(write(directory, EMPTY)), "23 drive 3 (/dev/sdb) is not a block device" + other},
      {voltvk::findDrive(directory.file("nothing")),
       "20 drive 3 (/dev/sdb) is gone; plug it in again, or choose another drive"},
  };
  for (const auto& [finding, expected] : cases) {
    EXPECT_EQ(refusal(finding), expected);
  }
}

TEST(DriveContentTest, TheMostImportantObstacleIsReported) {
  voltvk::DriveRecord drive;
  const auto reason = [&](bool realDrivesOnly) {
    return voltvk::obstacleOf(drive, nullptr, realDrivesOnly).reason;
  };
  drive.isVirtual = true;
  EXPECT_EQ(reason(false), "");
  EXPECT_EQ(reason(true), "is a virtual drive, on which nothing real can be stored, and cannot join a pool");
  EXPECT_TRUE(voltvk::isUnsuitable(drive, true) && !voltvk::isUnsuitable(drive));
  drive.content = "holds swap space";
  EXPECT_EQ(reason(false), "holds swap space and cannot join a pool");
  drive.partitioned = true;
  EXPECT_EQ(reason(false), "has partitions and cannot join a pool");
}

}  // namespace
