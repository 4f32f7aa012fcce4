// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_STATISTICSTEXT_H
#define VOLTVK_ENGINE_BACKING_LVM_STATISTICSTEXT_H

#include "voltvk/engine/backing/lvm/DeviceMapper.h"

#include <string_view>
#include <vector>

namespace voltvk {

/**
 * Appends the areas with reads or writes from what the kernel prints for a statistics region: one area per
 * line, "first+sectors" and the counters, separated by blanks. Lines that cannot be understood are left out.
 */
void parseStatistics(std::string_view text, std::vector<AreaStatistics>& areas);

}  // namespace voltvk

#endif
