// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_RET_H
#define VOLTVK_INCLUDE_VOLTVK_RET_H

#include "voltvk/Export.h"

#include <cstdint>

/**
 * Why the storage library refused a call. Every refusal has a code of its own and changes nothing.
 * The numbers are part of the interface: clients see them as "RetStat".
 */
enum TvkStatus : std::uint32_t {
  TVK_OK = 0,
  TVK_NO_DRIVER = 1,             ///< the state cannot be opened, or the driver is switched off
  TVK_NO_ADAPTER = 2,            ///< the tiering adapter is not there
  TVK_INTERNAL = 3,              ///< the state could not be read or written
  TVK_BUSY = 4,                  ///< another process held the state longer than the time-out
  TVK_INVALID_NAME = 10,         ///< empty, longer than 31 bytes, or not UTF-8
  TVK_INVALID_DESCRIPTION = 11,  ///< longer than 63 bytes, or not UTF-8
  TVK_NAME_IN_USE = 12,
  TVK_NO_SUCH_DEVICE = 20,
  TVK_DEVICE_IN_USE = 21,          ///< the drive is a member of another pool
  TVK_DEVICE_DUPLICATE = 22,       ///< the same drive twice in one request
  TVK_DEVICE_NOT_ELIGIBLE = 23,    ///< the drive has partitions, is mounted or boots the machine
  TVK_DEVICE_COUNT_MISMATCH = 24,  ///< announced and listed numbers of drives differ, or none
  TVK_DEVICE_KINDS_MIXED = 25,     ///< hard disks and SSDs in one pool
  TVK_TOO_MANY_DEVICES = 26,
  TVK_NO_SUCH_POOL = 30,
  TVK_POOL_IN_USE = 31,  ///< a volume stands on the pool
  TVK_TOO_MANY_POOLS = 32,
  TVK_INVALID_CHUNK_SIZE = 33,
  TVK_INVALID_CAPACITY = 34,  ///< zero, below the minimum, or beyond the largest volume
  TVK_NOT_ENOUGH_SPACE = 35,
  TVK_INVALID_TIER_LEVEL = 36,   ///< not 1 or 3, or not the level of the pool's drives
  TVK_POOL_IS_INTERNAL = 37,     ///< belongs to a cached drive; removed with its volume
  TVK_POOL_COUNT_MISMATCH = 38,  ///< announced and listed numbers of pools differ, or not 1 or 2
  TVK_POOL_KINDS_CONFLICT = 39,  ///< two pools of one kind, or a kind that the volume cannot use
  TVK_POOL_DUPLICATE = 40,       ///< the same pool twice in one request
  TVK_NO_SUCH_VOLUME = 50,
  TVK_TOO_MANY_VOLUMES = 51,
  TVK_INVALID_VOLUME_TYPE = 52,  ///< not 1 (tiered) or 2 (cached)
  TVK_INVALID_KNOB = 53,         ///< not 1 to 3, or 0 for what is usual or stays
  TVK_NOT_CACHED = 54,           ///< flush of a volume that has no cache
  TVK_INVALID_ARGUMENT = 60      ///< a null record where one is needed
};

/** Size of the text that says why a call was refused, with the terminating NUL. */
constexpr unsigned int TVK_DETAIL_SIZE = 512;

/**
 * Outcome of a library call: the status code, its text, and what exactly was wrong.
 * A plain value without ownership; copies are independent. Safe to use from any thread.
 */
class VOLTVK_EXPORT Ret {
public:
  /** Success. */
  Ret();
  /**
   * @param status a TvkStatus, or any code that an injected fault asks for
   * @param detail a sentence in UTF-8, copied; what does not fit is cut between two characters. Null is
   *   the same as empty
   */
  explicit Ret(std::uint32_t status, const char* detail = nullptr);
  Ret(const Ret& other);
  Ret& operator=(const Ret& other);

  /** The status code; 0 is success. */
  std::uint32_t getReturn() const { return m_status; }
  /** An English sentence for the code, without a final stop; never null, valid for ever. */
  const char* getText() const;
  /**
   * What was wrong, with what, and what to do: one line of UTF-8 with the names and numbers concerned, of
   * at most TVK_DETAIL_SIZE - 1 bytes. Empty for success, and where nothing more than the code is known.
   * Never null; valid as long as this object.
   */
  const char* getDetail() const { return m_detail; }

private:
  std::uint32_t m_status;  // first, so that callers who know nothing of the detail find it
  char m_detail[TVK_DETAIL_SIZE];
};

/** The text of a status code; never null, also for a code that is not in TvkStatus. */
VOLTVK_EXPORT const char* tvkStatusText(std::uint32_t status);

#endif
