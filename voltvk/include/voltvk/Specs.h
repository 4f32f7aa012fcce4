// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_SPECS_H
#define VOLTVK_INCLUDE_VOLTVK_SPECS_H

#include "voltvk/Export.h"
#include "voltvk/Limits.h"

#include <cstdint>

/** Sizes of the text fields, with the terminating NUL. */
constexpr unsigned int TVK_NAME_SIZE = TVK_LONGEST_NAME + 1;
constexpr unsigned int TVK_DESCRIPTION_SIZE = TVK_LONGEST_DESCRIPTION + 1;
/** Drives that one request can name: one per device number. */
constexpr unsigned int TVK_SPEC_DEVICES = TVK_LARGEST_DEVICE_NUMBER + 1;
/** Maximum number of pools that a volume uses. */
constexpr unsigned int TVK_SPEC_POOLS = 2;
/** An identifier that no pool or volume has. */
constexpr std::uint32_t TVK_NO_ID = 0xFFFFFFFFU;

/**
 * Describes the pool that is wanted. A plain record that owns nothing; the library validates it.
 * createVirtualPool uses every field; modifyVirtualPool uses name, description and tierLevel, and leaves
 * unchanged what is empty (tier level 0); as the SSD side of createCachedLD, poolId and capacityInSectors are
 * used.
 */
struct VOLTVK_EXPORT VirtualPoolSpec {
  VirtualPoolSpec();

  std::uint32_t poolId;      ///< TVK_NO_ID when not given; set by createVirtualPool
  char name[TVK_NAME_SIZE];  ///< UTF-8, NUL-terminated
  bool nameTooLong;          ///< the caller's text did not fit, so the library refuses it
  char description[TVK_DESCRIPTION_SIZE];
  bool descriptionTooLong;
  std::uint32_t numLogicalDevices;  ///< how many drives the caller announced
  std::uint32_t numDeviceNumbers;   ///< how many are listed (more than fit are refused)
  std::uint8_t deviceNumbers[TVK_SPEC_DEVICES];
  std::uint64_t capacityInSectors;   ///< sectors of 512 bytes, rounded up to whole chunks
  std::uint64_t chunkSizeInSectors;  ///< one of the supported chunk sizes
  std::uint8_t tierLevel;            ///< TvkTierLevel
  std::uint32_t poolFlag;            ///< TvkPoolType
  std::uint32_t nameBytes;           ///< full length of a name that is too long, else 0; for messages only
  std::uint32_t descriptionBytes;    ///< the same for the description
};

/** One pool of a volume and how much to take from it, in sectors of 512 bytes. */
struct VirtualPoolEntry {
  std::uint32_t poolId;
  std::uint64_t capacityInSectors;
};

/**
 * Describes the volume that is wanted. createVirtualVolume uses every field, createCachedLD uses name,
 * description, featureType1 and knobSetting; for both, a knob of 0 means TVK_KNOB_NORMAL. modifyVirtualVolume
 * uses name, description and knobSetting, and leaves unchanged what is empty (knob 0).
 */
struct VOLTVK_EXPORT VirtualVolumeSpec {
  VirtualVolumeSpec();
  ~VirtualVolumeSpec();  // NOLINT(performance-trivially-destructible): part of the binary interface

  std::uint32_t volumeId;  ///< set by createVirtualVolume
  char name[TVK_NAME_SIZE];
  bool nameTooLong;
  char description[TVK_DESCRIPTION_SIZE];
  bool descriptionTooLong;
  std::uint64_t capacityInSectors;         ///< of the volume, in sectors; 0 when not given
  VirtualPoolEntry pools[TVK_SPEC_POOLS];  ///< hard disk, then SSD; a lone SSD pool may come second
  std::uint32_t numValidPools;             ///< how many pools the caller announced
  std::uint32_t numPoolIds;                ///< how many identifiers were listed (may exceed the array)
  std::uint32_t numPoolSizes;              ///< how many sizes were listed (may exceed the array)
  std::uint8_t featureType1;               ///< TvkVolumeType
  std::uint32_t knobSetting;               ///< TvkKnob
  std::uint32_t nameBytes;                 ///< as in VirtualPoolSpec
  std::uint32_t descriptionBytes;
};

/** Copies a text into a fixed field, NUL-terminated. @return false if it had to be truncated. */
VOLTVK_EXPORT bool tvkSetText(char* field, unsigned int fieldSize, const char* text);

#endif
