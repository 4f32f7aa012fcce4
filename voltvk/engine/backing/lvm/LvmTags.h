// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMTAGS_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMTAGS_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace voltvk {

/*
 * The tags of the volume manager, in which the drives carry what the state has about pools and volumes, so
 * that it can be rebuilt from them. Texts are in hexadecimal digits, since tags allow few characters.
 */

using LvmTags = std::vector<std::string>;

/** On a volume group that is ours. */
constexpr const char* GROUP_TAG = "tvp.group";

/** What a drive of a pool carries. */
struct PoolTag {
  PoolRecord pool;           ///< without members
  std::size_t position = 0;  ///< among the members of the pool
  std::size_t members = 0;   ///< of the pool
  std::uint64_t chunks = 0;  ///< on this drive
};

LvmTags tagsOf(const PoolRecord& pool, std::size_t position);
/** @return nothing for tags that are not ours, are incomplete, or have values that no pool has */
std::optional<PoolTag> poolTagIn(const LvmTags& tags);

/** What both logical volumes of a cached volume carry, or the only one of a tiered volume. */
LvmTags tagsOf(const VolumeRecord& volume);
/** @return the volume without its extents; nothing as above */
std::optional<VolumeRecord> volumeIn(const LvmTags& tags);

/** The identifier of a volume, even if the other tags are incomplete; 0 if there is none. */
std::uint32_t volumeIdIn(const LvmTags& tags);
/** The same of a pool. */
std::uint32_t poolIdIn(const LvmTags& tags);

/** Whether any of the tags begins as ours do. */
bool hasOurTags(const LvmTags& tags);

/** The arguments that turn one list of tags into another: "--deltag", "x", "--addtag", "y". Tags that are not
 * ours stay. */
std::vector<std::string> tagChanges(const LvmTags& from, const LvmTags& to);

/** The tags of a report: "a,b". */
LvmTags splitTags(const std::string& text);

}  // namespace voltvk

#endif
