// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMCOMPARISON_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMCOMPARISON_H

#include "voltvk/engine/backing/lvm/LvmGroup.h"
#include "voltvk/engine/state/Snapshot.h"

#include <string>
#include <vector>

namespace voltvk {

/** As Backing::differences. */
std::vector<std::string> differencesBetween(const Configuration& configuration, const LvmGroup& group);

/** As Backing::contradictions. */
std::vector<std::string> contradictionsBetween(const Configuration& configuration, const LvmGroup& group);

/**
 * As Backing::recovered.
 * @throws Refusal TVK_BACKING_FAILED if a drive of a pool is not there, or a volume is not complete
 */
Configuration configurationIn(const LvmGroup& group, const std::vector<DriveRecord>& drives);

}  // namespace voltvk

#endif
