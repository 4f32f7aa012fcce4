// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_STATEBACKUPS_H
#define VOLTVK_ENGINE_CONTRACT_STATEBACKUPS_H

#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/BackupFile.h"

#include <string>
#include <vector>

namespace voltvk {

/** What is in a backup, and what became of it. */
struct BackupOutcome {
  BackupLabel label;
  std::size_t pools = 0;  ///< internal ones included
  std::size_t volumes = 0;
  std::vector<std::string> notes;  ///< what is not as it was when the backup was made: one sentence each
};

/**
 * Copies of the state, and the way back. Functions throw Refusal; they may be called from any thread while
 * others, in any process, use the state.
 */
class StateBackups {
public:
  explicit StateBackups(State& state) : m_state(state) {}

  /**
   * @param path a new file, or a regular file if it may be replaced; not one of the state's own
   * @param product version of the product
   * @throws Refusal also if there is no state
   */
  BackupOutcome make(const std::string& path, const std::string& product, bool mayReplace);

  /**
   * Replaces the configuration by that of a backup, in one transaction, once all of it was found possible;
   * the places of chunks on real drives are taken from the drives. Everybody who uses the state sees it with
   * the next request, and an event reports it. Makes the state if there is none. Waits for a change that is
   * under way, up to BACKING_TIMEOUT.
   * @param dryRun only finds out whether it is possible; changes nothing
   * @throws Refusal TVK_INVALID_ARGUMENT if the file is not a backup that can be used, TVK_POOL_IN_USE if
   * there are pools with another backing, TVK_BACKING_FAILED if the drives have something else or a change
   * was cut off, TVK_BACKING_UNAVAILABLE if the machine lacks what the backing needs
   */
  BackupOutcome restore(const std::string& path, bool dryRun);

private:
  class Restoration;

  State& m_state;
};

}  // namespace voltvk

#endif
