// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMVOLUMES_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMVOLUMES_H

#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/backing/lvm/LvmGroup.h"
#include "voltvk/engine/state/Snapshot.h"

#include <functional>
#include <string>
#include <vector>

namespace voltvk {

/** Makes and removes logical volumes. Functions throw Refusal. */
class LvmVolumes {
public:
  LvmVolumes(const LvmCommand& command, std::string group) : m_command(command), m_group(std::move(group)) {}

  void make(const VolumeRecord& volume, const Configuration& configuration);
  /** Removes what there is of a volume, however far making it came. @param isOpen asked before each step */
  void remove(std::uint32_t volumeId, const std::function<bool()>& isOpen);
  /** @return whether the volume carried something else */
  bool describe(const VolumeRecord& volume);
  /** As Backing::resizeVolume. */
  void resize(const VolumeRecord& volume, const Configuration& configuration);

private:
  /** @param task what it is for: "make volume 3 (data)" */
  void makeLinear(
      const VolumeRecord& volume, const std::string& name, const std::vector<LvmPart>& wanted,
      const LvmGroup& group, const std::string& task);
  void attachCache(const VolumeRecord& volume, const PoolRecord& ssdPool);

  const LvmCommand& m_command;
  const std::string m_group;
};

/** The pool of a volume's extent. @throws Refusal TVK_BACKING_FAILED if the configuration has none */
const PoolRecord& poolOf(const VolumeExtentRecord& extent, const Configuration& configuration);

/** The parts of a volume in the order of its addresses, then those of its cache; adjacent ones in one. */
std::vector<LvmPart> partsOf(const LvmGroup& group, std::uint32_t volumeId);

/** Parts in which adjacent ones are in one. */
std::vector<LvmPart> merged(const std::vector<LvmPart>& parts);

/**
 * Where the chunks of a volume are, as its logical volumes tell.
 * @throws Refusal TVK_BACKING_FAILED if they are not where chunks of the pools are
 */
std::vector<VolumeExtentRecord>
layoutOf(const LvmGroup& group, const VolumeRecord& volume, const std::vector<PoolRecord>& pools);

/** Argument that selects extents of a drive: "/dev/sda:100-199". */
std::string rangeOf(const LvmGroup& group, const LvmPart& part);

}  // namespace voltvk

#endif
