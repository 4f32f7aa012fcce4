// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Records.h"

#include "voltvk/VirtualVolume.h"

namespace voltvk {

bool VolumeRecord::isCached() const {
  return type == TVK_VOLUME_CACHED;
}

}  // namespace voltvk
