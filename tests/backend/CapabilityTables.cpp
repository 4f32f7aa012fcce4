// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProUtil.h"

#include <gtest/gtest.h>

namespace tvp::cim::fwf {
namespace {

using Strings = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

TEST(CapabilityTables, NamesIncludeEndMarkersAndKnowNothingElse) {
  Strings features;
  for (int value = 0; value <= 8; ++value) {
    features.emplace_back(tvpUtilManager::getFeatString(static_cast<tvpFeatureEnum>(value)));
  }
  EXPECT_EQ(
      features,
      (Strings{
          "unknown", "TVP_FEATURE_CACHE", "TVP_FEATURE_TIER", "TVP_FEATURE_THINP", "TVP_FEATURE_DEDUP",
          "TVP_FEATURE_WT_CACHE", "TVP_FEATURE_WB_CACHE", "featMaxIndex", "unknown"}));
  EXPECT_STREQ(
      tvpUtilManager::getSuppAdjString(TVP_ADJUST_USER_STAT_DISPLAY), "TVP_ADJUST_USER_STAT_DISPLAY");
  EXPECT_STREQ(tvpUtilManager::getSuppAdjString(TVP_ADJ_VOLUME_NAME), "TVP_ADJ_VOLUME_NAME");
  EXPECT_STREQ(tvpUtilManager::getSuppAdjString(SuppAdjMaxIndex), "SuppAdjMaxIndex");
  EXPECT_STREQ(tvpUtilManager::getSuppChunkString(TVP_CHUNKSZ_4MB), "TVP_CHUNKSZ_4MB");
  EXPECT_STREQ(tvpUtilManager::getSuppChunkString(SuppChunkMaxIndex), "SuppChunkMaxIndex");
  EXPECT_STREQ(tvpUtilManager::getSuppChunkString(static_cast<tvpSuppChunkEnum>(-1)), "unknown");
}

TEST(CapabilityTables, ValuesAreKeptInEightBitsAndTheFirstOneCounts) {
  tvpUtilManager capabilities;
  EXPECT_EQ(capabilities.getFeature(TVP_FEATURE_TIER), 0U);
  capabilities.setFeature(TVP_FEATURE_TIER, 300);
  capabilities.setFeature(TVP_FEATURE_TIER, 1);
  capabilities.setSuppAdjusment(TVP_ADJ_POOL_NAME, -1);
  capabilities.setSuppChunkProperties(TVP_CHUNKSZ_4MB, 7, 1ULL << 40);
  EXPECT_EQ(capabilities.getFeature(TVP_FEATURE_TIER), 44U);
  EXPECT_EQ(capabilities.getFeatValues(), (Bytes{44, 1}));
  EXPECT_EQ(capabilities.getSuppAdjustment(TVP_ADJ_POOL_NAME), 255U);
  EXPECT_EQ(capabilities.getSuppChunkSize(TVP_CHUNKSZ_4MB), 7U) << "the support value, not a size";
  EXPECT_EQ(capabilities.getSuppChunkSize(TVP_CHUNKSZ_1MB), 0U);
  EXPECT_EQ(capabilities.getSuppMaxVolumeSize(), (std::vector<unsigned long long>{1ULL << 40}));
}

TEST(CapabilityTables, FeatureThreeGoesWithTheFirstTwoBits) {
  const struct {
    unsigned int mask;
    Bytes features;
  } cases[] = {{0, {}}, {1, {1, 3}}, {2, {2, 3}}, {3, {1, 2, 3}}, {4, {4}}, {7, {1, 2, 3, 4}}, {0xF8, {}}};
  for (const auto& sample : cases) {
    Bytes features = {9};
    getTarvexFeatures(sample.mask, features);
    EXPECT_EQ(features.front(), 9) << "what was there stays";
    features.erase(features.begin());
    EXPECT_EQ(features, sample.features) << "mask " << sample.mask;
  }
}

}  // namespace
}  // namespace tvp::cim::fwf
