// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_BACKINGADMINISTRATION_H
#define VOLTVK_ENGINE_CONTRACT_BACKINGADMINISTRATION_H

#include "voltvk/engine/contract/State.h"

#include <string>
#include <vector>

namespace voltvk {

/** What `voltvkctl check` has found. */
struct BackingReport {
  std::vector<std::string> differences;  ///< between the state and the drives, one sentence each
  std::vector<std::string> repairs;      ///< what was done about them, one sentence each
};

/** A state that was rebuilt from the drives. */
struct RecoveredState {
  std::size_t pools = 0;
  std::size_t volumes = 0;
};

/**
 * What an administrator does with a backing, and management clients do not. Functions throw Refusal; they may
 * be called from any thread and wait for a change that is under way, up to BACKING_TIMEOUT.
 */
class BackingAdministration {
public:
  explicit BackingAdministration(State& state) : m_state(state) {}

  /**
   * Chooses where pools and volumes are from now on.
   * A change that was cut off is settled first. @throws Refusal TVK_POOL_IN_USE while there are pools,
   * TVK_INVALID_ARGUMENT for an impossible group name, TVK_BACKING_UNAVAILABLE if the machine lacks what the
   * backing needs
   */
  void choose(const BackingChoice& choice);

  /**
   * Compares the state with the drives.
   * @param repair also settles a change that was cut off, makes volumes available, records beside the data
   * what the state says of it, and records where chunks are; never touches data
   */
  BackingReport check(bool repair);

  /**
   * Rebuilds the state from what is recorded on the drives.
   * @throws Refusal TVK_POOL_IN_USE if the state has pools, TVK_NOT_POSSIBLE_HERE without a real backing
   */
  RecoveredState recover();

private:
  void repair(Backing& backing, BackingReport& report);

  State& m_state;
};

}  // namespace voltvk

#endif
