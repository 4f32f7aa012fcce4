// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CHANGES_RECORDWRITER_H
#define VOLTVK_ENGINE_CHANGES_RECORDWRITER_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>

namespace voltvk {

class Connection;

/**
 * Writes the rows of new pools and volumes, within the caller's transaction. Checks nothing and reports
 * nothing. Throws DatabaseError.
 */
class RecordWriter {
public:
  explicit RecordWriter(Connection& connection) : m_connection(connection) {}

  /** @return the identifier: that of the record, or if it is 0 one that was never used before */
  std::uint32_t insert(const PoolRecord& pool);
  /** Writes the size and the drives of a pool that has changed. */
  void resize(const PoolRecord& pool);
  /** Gives the volume a device number unless the record has one. @return the identifier, as above */
  std::uint32_t insert(const VolumeRecord& volume);

  /** Writes where the chunks of a volume are. */
  void writeExtents(const VolumeRecord& volume);
  /** Writes the size of a volume that has grown, and what belongs to it. */
  void resize(const VolumeRecord& volume);

private:
  void writeMembers(const PoolRecord& pool);
  void writeLaid(const VolumeRecord& volume);
  /** A number of 16 bits that no other volume has. */
  std::uint16_t freeDeviceNumber(std::uint32_t volumeId);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
