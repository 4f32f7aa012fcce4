// SPDX-License-Identifier: Apache-2.0
#include "backend/TvkUtil.h"

#include "backend/LibraryAccess.h"
#include "voltvk/Specs.h"
#include "voltvk/VirtualPool.h"

#include <set>

namespace tvp::cim::fwf {

namespace {

struct ExistingObjects {
  std::set<std::string> names;
  std::set<unsigned int> identifiers;
};

template <typename Object>
ExistingObjects existingObjects(Adapter* adapter, std::uint32_t (Object::*identifierOf)() const) {
  ExistingObjects existing;
  for (const Object& object : FilteredObjects<Object>(adapter)) {
    existing.names.insert(object.getName());
    existing.identifiers.insert((object.*identifierOf)());
  }
  return existing;
}

std::string prefixOf(int kind) {
  switch (kind) {
  case TVK_NAME_POOL:
    return "Pool";
  case TVK_NAME_VOLUME:
    return "Volume";
  default:
    return "InternalPool";
  }
}

}  // namespace

std::string TvkUtil::buildDeviceName(Adapter* adapter, int kind) {
  const ExistingObjects existing = kind == TVK_NAME_VOLUME
                                       ? existingObjects(adapter, &VirtualVolume::getVolumeId)
                                       : existingObjects(adapter, &VirtualPool::getPoolId);
  unsigned int number = 0;
  while (existing.identifiers.count(number) != 0) {
    ++number;
  }
  const std::string prefix = prefixOf(kind);
  std::string name = prefix + std::to_string(number);
  while (existing.names.count(name) != 0 && name.size() < TVK_NAME_SIZE) {
    ++number;
    name = prefix + std::to_string(number);
  }
  return name;
}

unsigned char TvkUtil::getVolumeType(TvkVirtualVolume* volume) {
  return volume == nullptr ? static_cast<unsigned char>(0) : volume->getVolumeType();
}

unsigned char TvkUtil::getCacheType(TvkVirtualVolume* volume) {
  return volume == nullptr ? static_cast<unsigned char>(0) : volume->getCacheMode();
}

const char* TvkUtil::getVolumeTypeByFeatureBit(unsigned int feature) {
  switch (feature) {
  case TVK_VOLUME_TIERED:
    return "Tiered";
  case TVK_VOLUME_CACHED:
    return "Cached";
  default:
    return "Unknown";
  }
}

const char* TvkUtil::getFetchFlushModeStr(unsigned int mode) {
  switch (mode) {
  case TVK_KNOB_AGGRESSIVE:
    return "Aggressive";
  case TVK_KNOB_NORMAL:
    return "Normal";
  case TVK_KNOB_PASSIVE:
    return "Passive";
  default:
    return "Unknown";
  }
}

}  // namespace tvp::cim::fwf
