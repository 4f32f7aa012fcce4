// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TVKUTIL_H
#define BACKEND_TVKUTIL_H

#include "voltvk/TvkAdapter.h"
#include "voltvk/VirtualVolume.h"

#include <string>

namespace tvp::cim::fwf {

/** Kinds of objects that buildDeviceName names; any other number means an internal pool. */
enum TvkNameKind { TVK_NAME_POOL = 1, TVK_NAME_VOLUME = 3, TVK_NAME_INTERNAL_POOL = 4 };

/** Helpers that read the storage library's objects and codes. Stateless; safe from any thread. */
class TvkUtil {
public:
  /**
   * A free default name for a new object: "Pool%u", "Volume%u" or "InternalPool%u", with the smallest number
   * that no existing object of that kind has as its identifier. All pools count for both kinds of pools. A
   * null adapter has no objects.
   */
  static std::string buildDeviceName(Adapter* adapter, int kind);

  /** Kind of the volume (TvkVolumeType); 0 for a null volume. */
  static unsigned char getVolumeType(TvkVirtualVolume* volume);
  /** Cache mode of the volume (TvkCacheMode); 0 for a null volume. */
  static unsigned char getCacheType(TvkVirtualVolume* volume);

  /** 1 "Tiered", 2 "Cached", else "Unknown". */
  static const char* getVolumeTypeByFeatureBit(unsigned int feature);
  /** 1 "Aggressive", 2 "Normal", 3 "Passive", else "Unknown". */
  static const char* getFetchFlushModeStr(unsigned int mode);
};

}  // namespace tvp::cim::fwf

#endif
