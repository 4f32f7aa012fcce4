// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DRIVECLAIM_H
#define VOLTVK_ENGINE_DRIVES_DRIVECLAIM_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <string>

namespace voltvk {

/** What a drive is like at the moment. */
struct DriveFinding {
  int error = 0;  ///< the errno for which it cannot be opened exclusively; 0 if it can
  bool isBlockDevice = false;
  bool isReadOnly = false;
  std::uint64_t sectors = 0;
  std::string content;  ///< as contentOf in ContentProbe.h
};

/** Opens a device node for reading, and exclusively, which the kernel denies while anything uses it. */
DriveFinding findDrive(const std::string& node);

/**
 * Decides whether a drive may be written to, which is what joining a pool of a real backing means. Nothing
 * that a drive was found to be earlier is relied upon.
 * @param drive what the drive was like when it was chosen
 * @throws Refusal TVK_NO_SUCH_DEVICE if it is gone, TVK_DEVICE_NOT_ELIGIBLE if it is another one by now, in
 *   use, read-only or not empty
 */
void requireUntouched(const DriveRecord& drive, const DriveFinding& finding);

/** The same for what the machine's drive is like now; the last step before it is written to. */
void requireUntouched(const DriveRecord& drive);

}  // namespace voltvk

#endif
