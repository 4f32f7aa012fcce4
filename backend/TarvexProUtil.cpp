// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProUtil.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tvp::cim::fwf {

namespace {

constexpr std::array FEATURE_NAMES = {"TVP_FEATURE_CACHE", "TVP_FEATURE_TIER",     "TVP_FEATURE_THINP",
                                      "TVP_FEATURE_DEDUP", "TVP_FEATURE_WT_CACHE", "TVP_FEATURE_WB_CACHE",
                                      "featMaxIndex"};
constexpr std::array ADJUSTMENT_NAMES = {"TVP_ADJUST_TUNE_KNOB",      "TVP_ADJUST_MAX_MOVE_CHUNKS",
                                         "TVP_ADJUST_MOVE_THRESHOLD", "TVP_ADJUST_USER_STAT_DISPLAY",
                                         "TVP_ADJ_VOLUME_NAME",       "TVP_ADJ_POOL_NAME",
                                         "TVP_ADJ_TIER_LEVEL",        "SuppAdjMaxIndex"};
constexpr std::array CHUNK_SIZE_NAMES = {
    "TVP_CHUNKSZ_4KB", "TVP_CHUNKSZ_64KB", "TVP_CHUNKSZ_128KB", "TVP_CHUNKSZ_256KB", "TVP_CHUNKSZ_512KB",
    "TVP_CHUNKSZ_1MB", "TVP_CHUNKSZ_4MB",  "TVP_CHUNKSZ_16MB",  "TVP_CHUNKSZ_32MB",  "SuppChunkMaxIndex"};

/** The enumerations count from 1. */
template <std::size_t size>
const char* nameOf(const std::array<const char*, size>& names, int value) {
  return value >= 1 && static_cast<std::size_t>(value) <= size ? names[static_cast<std::size_t>(value) - 1]
                                                               : "unknown";
}

}  // namespace

const char* tvpUtilManager::getFeatString(tvpFeatureEnum feature) {
  return nameOf(FEATURE_NAMES, feature);
}

const char* tvpUtilManager::getSuppAdjString(tvpSuppAdjEnum adjustment) {
  return nameOf(ADJUSTMENT_NAMES, adjustment);
}

const char* tvpUtilManager::getSuppChunkString(tvpSuppChunkEnum chunkSize) {
  return nameOf(CHUNK_SIZE_NAMES, chunkSize);
}

void tvpUtilManager::Support::add(const char* name, int value) {
  names.emplace_back(name);
  values.push_back(static_cast<unsigned char>(value & 0xFF));
}

unsigned int tvpUtilManager::Support::valueOf(const char* name) const {
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? 0U : values[static_cast<std::size_t>(found - names.begin())];
}

void tvpUtilManager::setFeature(tvpFeatureEnum feature, int value) {
  m_features.add(getFeatString(feature), value);
}

void tvpUtilManager::setSuppAdjusment(tvpSuppAdjEnum adjustment, int value) {
  m_adjustments.add(getSuppAdjString(adjustment), value);
}

void tvpUtilManager::setSuppChunkProperties(
    tvpSuppChunkEnum chunkSize, int value, unsigned long long maxVolumeSize) {
  m_chunkSizes.add(getSuppChunkString(chunkSize), value);
  m_maxVolumeSizes.push_back(maxVolumeSize);
}

unsigned int tvpUtilManager::getFeature(tvpFeatureEnum feature) const {
  return m_features.valueOf(getFeatString(feature));
}

unsigned int tvpUtilManager::getSuppAdjustment(tvpSuppAdjEnum adjustment) const {
  return m_adjustments.valueOf(getSuppAdjString(adjustment));
}

unsigned int tvpUtilManager::getSuppChunkSize(tvpSuppChunkEnum chunkSize) const {
  return m_chunkSizes.valueOf(getSuppChunkString(chunkSize));
}

void getTarvexFeatures(unsigned int mask, std::vector<unsigned char>& out) {
  if ((mask & 1U) != 0) {
    out.push_back(1);
  }
  if ((mask & 2U) != 0) {
    out.push_back(2);
  }
  // COMPAT: clients expect feature 3 with either of the first two.
  if ((mask & 3U) != 0) {
    out.push_back(3);
  }
  if ((mask & 4U) != 0) {
    out.push_back(4);
  }
}

}  // namespace tvp::cim::fwf
