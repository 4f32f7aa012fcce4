// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DriveClaim.h"

#include "voltvk/engine/drives/ContentProbe.h"
#include "voltvk/engine/drives/SystemText.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <cerrno>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace voltvk {

namespace {

bool isGone(int error) {
  return error == ENOENT || error == ENXIO || error == ENODEV || error == ENOMEDIUM;
}

/** Why a drive must not be written to. */
Obstacle obstacleIn(const DriveRecord& drive, const DriveFinding& finding) {
  constexpr const char* OTHER = "choose another drive";
  if (isGone(finding.error)) {
    return {TVK_NO_SUCH_DEVICE, "is gone", "plug it in again, or choose another drive"};
  }
  if (finding.error == EBUSY) {
    return ineligible("is mounted, used for swap or held by something else", OTHER);
  }
  if (finding.error != 0) {
    return obstacleOfContent(unreadable(finding.error));
  }
  if (!finding.isBlockDevice) {
    return ineligible("is not a block device", OTHER);
  }
  if (finding.sectors != drive.sectors) {
    return ineligible(
        "has " + sizeText(finding.sectors) + " instead of " + sizeText(drive.sectors),
        "look at the list of drives and choose again");
  }
  return finding.isReadOnly ? ineligible("is read-only", OTHER) : obstacleOfContent(finding.content);
}

}  // namespace

DriveFinding findDrive(const std::string& node) {
  DriveFinding finding;
  const FileDescriptor device(open(node.c_str(), O_RDONLY | O_EXCL | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!device || fstat(device.get(), &status) != 0) {
    finding.error = errno;
    return finding;
  }
  finding.isBlockDevice = S_ISBLK(status.st_mode);
  if (!finding.isBlockDevice) {
    return finding;
  }
  std::uint64_t bytes = 0;
  int readOnly = 0;
  if (ioctl(device.get(), BLKGETSIZE64, &bytes) != 0 || ioctl(device.get(), BLKROGET, &readOnly) != 0) {
    finding.error = errno;
    return finding;
  }
  finding.sectors = bytes / 512;
  finding.isReadOnly = readOnly != 0;
  finding.content = contentOf(device.get());
  return finding;
}

void requireUntouched(const DriveRecord& drive, const DriveFinding& finding) {
  const Obstacle obstacle = obstacleIn(drive, finding);
  require(obstacle.status == TVK_OK, obstacle.status, [&] {
    return nameOf(drive) + " " + obstacle.reason + "; " + obstacle.advice;
  });
}

void requireUntouched(const DriveRecord& drive) {
  requireUntouched(drive, findDrive(hostRoot() + drive.name));
}

}  // namespace voltvk
