// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_STORAGEGROWTH_H
#define VOLTVK_ENGINE_CONTRACT_STORAGEGROWTH_H

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/rules/VolumeRules.h"

#include <cstdint>

namespace voltvk {

/**
 * Makes pools and volumes larger, and replaces drives, with any backing. Management clients have no methods
 * for it; they see the events and what there is afterwards. Functions throw Refusal; they may be called from
 * any thread.
 */
class StorageGrowth {
public:
  explicit StorageGrowth(State& state) : m_state(state) {}

  void addDrive(std::uint32_t poolId, std::uint16_t drive);

  /**
   * Volumes can be used meanwhile. If it is interrupted when something has been moved already, the rest
   * follows with the next change.
   */
  void replaceDrive(std::uint32_t poolId, const DriveExchange& drives, const MoveProgress& progress);

  void growVolume(std::uint32_t volumeId, const VolumeGrowth& wanted);

private:
  State& m_state;
};

}  // namespace voltvk

#endif
