// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CHANGES_POOLCHANGES_H
#define VOLTVK_ENGINE_CHANGES_POOLCHANGES_H

#include "voltvk/Specs.h"
#include "voltvk/engine/rules/PoolRules.h"
#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <string>

namespace voltvk {

class Connection;

/**
 * Changes pools: checks the rules, writes the rows, and appends the events, all within the caller's
 * transaction. Functions throw Refusal when a rule is broken, and DatabaseError.
 */
class PoolChanges {
public:
  explicit PoolChanges(Connection& connection) : m_connection(connection) {}

  /** @return the identifier of the new pool. Identifiers are never reused. */
  std::uint32_t create(const VirtualPoolSpec& spec);
  void modify(std::uint32_t poolId, const VirtualPoolSpec& spec);
  void remove(std::uint32_t poolId);
  /** Adds a free drive, and all the room that it has. */
  void addDrive(std::uint32_t poolId, std::uint16_t drive);
  /** Gives the place of a drive to another one. */
  void replaceDrive(
      std::uint32_t poolId, std::uint16_t from, std::uint16_t to, Contents contents = Contents::ToBeMoved);

  /** Removes an internal pool whose volume has been deleted. */
  void removeInternal(const PoolRecord& pool);

  /** Reports a pool that could not be created. */
  void reportCreationFailed(const VirtualPoolSpec& spec);
  /** Reports a pool that could not be deleted. */
  void reportDeletionFailed(std::uint32_t poolId);

private:
  void deleteRows(const PoolRecord& pool);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
