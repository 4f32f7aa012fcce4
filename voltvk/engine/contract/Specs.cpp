// SPDX-License-Identifier: Apache-2.0
#include "voltvk/Specs.h"

#include "text/Utf8.h"
#include "voltvk/VirtualPool.h"

#include <cstring>

VirtualPoolSpec::VirtualPoolSpec()
    : poolId(TVK_NO_ID), name{}, nameTooLong(false), description{}, descriptionTooLong(false),
      numLogicalDevices(0), numDeviceNumbers(0), deviceNumbers{}, capacityInSectors(0), chunkSizeInSectors(0),
      tierLevel(0), poolFlag(TVK_POOL_USER), nameBytes(0), descriptionBytes(0) {}

VirtualVolumeSpec::VirtualVolumeSpec()
    : volumeId(TVK_NO_ID), name{}, nameTooLong(false), description{}, descriptionTooLong(false),
      capacityInSectors(0), pools{{TVK_NO_ID, 0}, {TVK_NO_ID, 0}}, numValidPools(0), numPoolIds(0),
      numPoolSizes(0), featureType1(0), knobSetting(0), nameBytes(0), descriptionBytes(0) {}

VirtualVolumeSpec::~VirtualVolumeSpec() = default;

bool tvkSetText(char* field, unsigned int fieldSize, const char* text) {
  if (field == nullptr || fieldSize == 0) {
    return false;
  }
  const std::string_view whole = text == nullptr ? "" : text;
  const std::string_view part = tvp::text::cutToSize(whole, fieldSize - 1);
  std::memset(field, 0, fieldSize);
  std::memcpy(field, part.data(), part.size());
  return part.size() == whole.size();
}
