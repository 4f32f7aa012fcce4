// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_CONTENTPROBE_H
#define VOLTVK_ENGINE_DRIVES_CONTENTPROBE_H

#include <string>

namespace voltvk {

/** The content of a drive that belongs to a volume group. */
constexpr const char* PHYSICAL_VOLUME = "is a physical volume of LVM";

/**
 * Looks for everything that libblkid recognises: file systems, partition tables, members of RAIDs and volume
 * groups, encryption, swap space; also where a checksum is wrong or several things overlap. Only reads.
 * @param device a descriptor open for reading; of a block device, or of a file that is like one
 * @return the end of a sentence about the device: "holds an ext4 file system"; also why it cannot be read;
 *   empty if nothing is stored on it. Throws std::bad_alloc.
 */
std::string contentOf(int device);

/** The same for a path, which is opened for reading only. */
std::string contentOf(const std::string& path);

}  // namespace voltvk

#endif
