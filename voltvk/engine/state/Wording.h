// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_WORDING_H
#define VOLTVK_ENGINE_STATE_WORDING_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace voltvk {

/*
 * The parts of the sentences that say why a request is refused. Names are escaped to fit on one line
 * by Refusal, once for the whole sentence.
 */

/**
 * Sectors in the largest unit that leaves at least 1: "1.5 TiB". The sectors are added to a rounded size,
 * since it may appear next to another.
 */
std::string sizeText(std::uint64_t sectors);

/** "1 drive", "3 drives". */
std::string counted(std::uint64_t number, std::string_view noun);

/** "a, b and c". */
std::string enumerated(const std::vector<std::string>& texts);

/** "drive 3 (/dev/sdb)". */
std::string nameOf(const DriveRecord& drive);
/** "pool 2 (fast)". */
std::string nameOf(const PoolRecord& pool);
/** "volume 1 (data)". */
std::string nameOf(const VolumeRecord& volume);

/** The content of a drive that cannot be read: "cannot be read (Permission denied)". @param error an errno */
std::string unreadable(int error);
bool isUnreadable(const std::string& content);

/** "an SSD" or "a hard disk". */
std::string kindOf(const DriveRecord& drive);
/** "1 (hard disks)", "3 (SSDs)", or only the number for a level that does not exist. */
std::string tierText(std::uint32_t tierLevel);

/** "no pool has the number 9", or that the request names none. @param noun "pool" or "volume" */
std::string missing(std::string_view noun, std::uint32_t id);

}  // namespace voltvk

#endif
