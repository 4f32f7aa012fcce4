// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_CACHECLEANER_H
#define VOLTVK_ENGINE_BACKING_LVM_CACHECLEANER_H

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/backing/lvm/DeviceMapper.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"

#include <cstdint>
#include <string>

namespace voltvk {

/** Makes the cache of a logical volume write back everything. Functions throw Refusal. */
class CacheCleaner {
public:
  /** @param volume name of the logical volume; the other arguments must outlive this object */
  CacheCleaner(
      const LvmCommand& command, const DeviceMapper& mapper, const std::string& group,
      const std::string& volume);

  /** As Backing::flush. */
  std::uint64_t clean(const FlushProgress& progress);
  /** As Backing::endFlush. */
  void restore();

private:
  CacheStatus status() const;
  void loadCleaner();

  const LvmCommand& m_command;
  const DeviceMapper& m_mapper;
  const std::string m_volume;  ///< with its group: "tvp/vol1"
  const std::string m_device;
};

/**
 * The line that describes a cache to the kernel, with the policy that only writes back.
 * @param line as `dmsetup table` prints it @return empty if it describes something else
 */
std::string withCleaner(const std::string& line);

}  // namespace voltvk

#endif
