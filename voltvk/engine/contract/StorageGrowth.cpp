// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/StorageGrowth.h"

#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/changes/VolumeChanges.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"

namespace voltvk {

void StorageGrowth::addDrive(std::uint32_t poolId, std::uint16_t drive) {
  StorageChange(m_state).run(
      [=](Connection& connection) { PoolChanges(connection).addDrive(poolId, drive); }, true);
}

void StorageGrowth::replaceDrive(
    std::uint32_t poolId, const DriveExchange& drives, const MoveProgress& progress) {
  Contents contents = Contents::ToBeMoved;
  StorageChange(m_state, progress)
      .run(
          [&](Connection& connection) {
            PoolChanges(connection).replaceDrive(poolId, drives.from, drives.to, contents);
            contents = Contents::Moved;  // when this runs again: the first drive may be unplugged by then
          },
          true);
}

void StorageGrowth::growVolume(std::uint32_t volumeId, const VolumeGrowth& wanted) {
  VolumeUpkeep(m_state).collect(volumeId);  // the kernel counts from 0 for a volume of another size
  StorageChange(m_state).run(
      [&](Connection& connection) { VolumeChanges(connection).grow(volumeId, wanted); }, true);
}

}  // namespace voltvk
