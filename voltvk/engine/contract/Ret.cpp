// SPDX-License-Identifier: Apache-2.0
#include "voltvk/Ret.h"

#include "voltvk/Specs.h"

#include <algorithm>
#include <array>

namespace {

struct StatusText {
  std::uint32_t status;
  const char* text;
};

constexpr std::array<StatusText, 32> STATUS_TEXTS = {{
    {TVK_OK, "Done"},
    {TVK_NO_DRIVER, "The storage driver is not available"},
    {TVK_NO_ADAPTER, "The tiering adapter is not there"},
    {TVK_INTERNAL, "The storage state could not be read or written"},
    {TVK_BUSY, "Another process holds the storage state; try again"},
    {TVK_INVALID_NAME, "A name has 1 to 31 bytes of UTF-8 without control characters"},
    {TVK_INVALID_DESCRIPTION, "A description has at most 63 bytes of UTF-8"},
    {TVK_NAME_IN_USE, "The name is in use"},
    {TVK_NO_SUCH_DEVICE, "There is no such drive"},
    {TVK_DEVICE_IN_USE, "The drive is a member of another pool"},
    {TVK_DEVICE_DUPLICATE, "The same drive is named twice"},
    {TVK_DEVICE_NOT_ELIGIBLE, "The drive has partitions, is mounted or boots the machine"},
    {TVK_DEVICE_COUNT_MISMATCH, "The number of drives differs from the drives that are listed, or is 0"},
    {TVK_DEVICE_KINDS_MIXED, "A pool has either hard disks or SSDs, not both"},
    {TVK_TOO_MANY_DEVICES, "There are too many drives"},
    {TVK_NO_SUCH_POOL, "There is no such pool"},
    {TVK_POOL_IN_USE, "A volume stands on the pool"},
    {TVK_TOO_MANY_POOLS, "There are too many pools"},
    {TVK_INVALID_CHUNK_SIZE, "The chunk size is not supported"},
    {TVK_INVALID_CAPACITY, "The capacity is zero, below the minimum, or beyond the largest volume"},
    {TVK_NOT_ENOUGH_SPACE, "There is not enough space"},
    {TVK_INVALID_TIER_LEVEL, "The tier level is not that of the drives: 1 for hard disks, 3 for SSDs"},
    {TVK_POOL_IS_INTERNAL, "The pool belongs to a cached drive and goes with its volume"},
    {TVK_POOL_COUNT_MISMATCH, "The number of pools differs from the pools that are listed, or does not fit"},
    {TVK_POOL_KINDS_CONFLICT, "A volume takes one pool of hard disks and one of SSDs"},
    {TVK_POOL_DUPLICATE, "The same pool is named twice"},
    {TVK_NO_SUCH_VOLUME, "There is no such volume"},
    {TVK_TOO_MANY_VOLUMES, "There are too many volumes"},
    {TVK_INVALID_VOLUME_TYPE, "The volume type is neither 1 (tiered) nor 2 (cached), or does not fit"},
    {TVK_INVALID_KNOB, "The knob setting is not 1 to 3"},
    {TVK_NOT_CACHED, "The volume has no cache"},
    {TVK_INVALID_ARGUMENT, "An argument is missing or has no meaning"},
}};

}  // namespace

Ret::Ret() : Ret(TVK_OK) {}
Ret::Ret(std::uint32_t status, const char* detail) : m_status(status), m_detail{} {
  tvkSetText(m_detail, sizeof m_detail, detail);
}
Ret::Ret(const Ret& other) = default;
Ret& Ret::operator=(const Ret& other) = default;

const char* Ret::getText() const {
  return tvkStatusText(m_status);
}

const char* tvkStatusText(std::uint32_t status) {
  const auto* entry =
      std::find_if(STATUS_TEXTS.begin(), STATUS_TEXTS.end(), [&](const StatusText& candidate) {
        return candidate.status == status;
      });
  return entry == STATUS_TEXTS.end() ? "The storage library answered an unknown status" : entry->text;
}
