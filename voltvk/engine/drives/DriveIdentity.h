// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DRIVEIDENTITY_H
#define VOLTVK_ENGINE_DRIVES_DRIVEIDENTITY_H

#include "voltvk/engine/state/Records.h"

#include <string>
#include <vector>

namespace voltvk {

/**
 * Where a block device is attached, without the numbers that the kernel assigns in the order in which it
 * finds things: "pci0000:00/0000:00:1f.2/ata1/0:0:0".
 * @param directory the device's directory in sysfs
 */
std::string placeOf(const std::string& directory);

/**
 * What distinguishes a drive from all others, also after a reboot that changed the device nodes: its WWID, or
 * else its place, model and serial number, since a serial number alone may occur twice.
 */
std::string identityOf(const DriveRecord& drive);

/** The identity of a drive if another drive claims the same one. */
std::string identityApart(const DriveRecord& drive);

/**
 * Finds out which of the known drives each drive of a scan is. A drive whose identity another one has, or has
 * had with a different serial number, is kept apart: it never takes the other one's place.
 * @param known the drives of the state
 * @param found the drives of a scan; each is given the identity under which it is to be recorded
 * @return for each found drive the known one, or null for a new drive
 */
std::vector<const DriveRecord*>
matchDrives(const std::vector<DriveRecord>& known, std::vector<DriveRecord>& found);

}  // namespace voltvk

#endif
