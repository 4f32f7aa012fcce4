// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CHANGES_VOLUMECHANGES_H
#define VOLTVK_ENGINE_CHANGES_VOLUMECHANGES_H

#include "voltvk/Specs.h"
#include "voltvk/engine/rules/VolumeRules.h"
#include "voltvk/engine/state/Records.h"

#include <cstdint>

namespace voltvk {

class Connection;

/**
 * Changes volumes: checks the rules, writes the rows, and appends the events, all within the caller's
 * transaction. Functions throw Refusal when a rule is broken, and DatabaseError.
 */
class VolumeChanges {
public:
  explicit VolumeChanges(Connection& connection) : m_connection(connection) {}

  /** @return the identifier of the new volume. Identifiers are never reused. */
  std::uint32_t create(const VirtualVolumeSpec& spec);

  /**
   * Creates the internal pool on a hard disk and a cached volume on it.
   * @param hddPool its poolId is set
   */
  std::uint32_t createCachedDrive(
      const VirtualPoolSpec& ssdPool, VirtualPoolSpec& hddPool, const VirtualVolumeSpec& volume);

  void modify(std::uint32_t volumeId, const VirtualVolumeSpec& spec);

  /** Makes a volume larger. */
  void grow(std::uint32_t volumeId, const VolumeGrowth& wanted);

  /** Deletes a volume, and the internal pool that was created for it. */
  void remove(std::uint32_t volumeId);

  /** Writes back the dirty chunks of the cache, as far as the state knows them. */
  void flush(std::uint32_t volumeId);
  /** The volume, which has a cache that can be flushed. */
  VolumeRecord flushable(std::uint32_t volumeId);
  /** Reports chunks that were written back. */
  void reportFlushed(std::uint32_t volumeId, std::uint64_t chunks);

  /** Sets the I/O counters to 0; the placement of chunks does not change. */
  void resetStatistics(std::uint32_t volumeId);

  /** Reports a volume that could not be created. */
  void reportCreationFailed(const VirtualVolumeSpec& spec);
  /** Reports a volume that could not be deleted. */
  void reportDeletionFailed(std::uint32_t volumeId);

private:
  VolumeRecord find(std::uint32_t volumeId);
  std::uint32_t insert(const VolumeRecord& volume);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
