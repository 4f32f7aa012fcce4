// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMBACKING_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMBACKING_H

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/backing/lvm/DeviceMapper.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/backing/lvm/LvmGroup.h"
#include "voltvk/engine/backing/lvm/VolumeCounters.h"

#include <string>

namespace voltvk {

/**
 * Pools and volumes on the drives of the machine, through the Linux volume manager. One volume group holds
 * all pools: a drive of a pool is a physical volume with the tags of its pool, a volume is the logical volume
 * vol<ID>, and the cache of a volume is vol<ID>_cache.
 */
class LvmBacking final : public Backing {
public:
  explicit LvmBacking(std::string group, LvmCommand command = LvmCommand());

  bool isReal() const override { return true; }
  void requireUsable() override;
  void activate() override;
  void requireUnknown(const std::vector<Intent>& steps, const Configuration& configuration) override;

  void makePool(const PoolRecord& pool, const Configuration& configuration) override;
  void removePool(const PoolRecord& pool, const Configuration& configuration) override;
  void extendPool(const PoolRecord& pool, const Configuration& configuration) override;
  void releaseDrive(const PoolRecord& pool, std::uint16_t drive, const Configuration& configuration) override;
  void replaceDrive(
      const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration,
      const MoveProgress& progress) override;
  bool undoReplacement(
      const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration) override;
  bool describePool(const PoolRecord& pool, const Configuration& configuration) override;

  void makeVolume(const VolumeRecord& volume, const Configuration& configuration) override;
  void removeVolume(std::uint32_t volumeId) override;
  bool describeVolume(const VolumeRecord& volume) override;
  void resizeVolume(const VolumeRecord& volume, const Configuration& configuration) override;
  void exchange(
      const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
      const std::vector<std::uint64_t>& promoted, const Configuration& configuration) override;
  std::vector<VolumeExtentRecord>
  layout(const VolumeRecord& volume, const Configuration& configuration) override;
  std::uint64_t flush(const VolumeRecord& volume, const FlushProgress& progress) override;
  void endFlush(const VolumeRecord& volume) override;

  std::vector<std::string> differences(const Configuration& configuration) override;
  std::vector<std::string> contradictions(const Configuration& configuration) override;
  Configuration recovered(const std::vector<DriveRecord>& drives) override;

  std::string devicePath(std::uint32_t volumeId) const override;
  bool isOpen(std::uint32_t volumeId) const override;
  KernelCounters counters(const VolumeRecord& volume) const override;
  KernelCounters takeCounters(const VolumeRecord& volume) override;

private:
  std::string deviceName(std::uint32_t volumeId) const;

  const std::string m_group;
  const LvmCommand m_command;
  const DeviceMapper m_mapper;
  mutable VolumeCounters m_counters;
};

}  // namespace voltvk

#endif
