// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROUTIL_H
#define BACKEND_TARVEXPROUTIL_H

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * The features of the product. COMPAT: the end marker is published as an entry too; clients see its number.
 */
enum tvpFeatureEnum : int {
  TVP_FEATURE_CACHE = 1,
  TVP_FEATURE_TIER = 2,
  TVP_FEATURE_THINP = 3,
  TVP_FEATURE_DEDUP = 4,
  TVP_FEATURE_WT_CACHE = 5,
  TVP_FEATURE_WB_CACHE = 6,
  featMaxIndex = 7
};

/** What can be adjusted. COMPAT: four names say ADJUST and three ADJ; clients compare them. */
enum tvpSuppAdjEnum : int {
  TVP_ADJUST_TUNE_KNOB = 1,
  TVP_ADJUST_MAX_MOVE_CHUNKS = 2,
  TVP_ADJUST_MOVE_THRESHOLD = 3,
  TVP_ADJUST_USER_STAT_DISPLAY = 4,
  TVP_ADJ_VOLUME_NAME = 5,
  TVP_ADJ_POOL_NAME = 6,
  TVP_ADJ_TIER_LEVEL = 7,
  SuppAdjMaxIndex = 8
};

/** Chunk sizes. 2 MiB and 8 MiB do not exist. */
enum tvpSuppChunkEnum : int {
  TVP_CHUNKSZ_4KB = 1,
  TVP_CHUNKSZ_64KB = 2,
  TVP_CHUNKSZ_128KB = 3,
  TVP_CHUNKSZ_256KB = 4,
  TVP_CHUNKSZ_512KB = 5,
  TVP_CHUNKSZ_1MB = 6,
  TVP_CHUNKSZ_4MB = 7,
  TVP_CHUNKSZ_16MB = 8,
  TVP_CHUNKSZ_32MB = 9,
  SuppChunkMaxIndex = 10
};

/**
 * Collects what one adapter supports into parallel lists, in the order of the set calls. A name and the value
 * at the same position belong together. A plain value; an object belongs to one thread.
 */
class tvpUtilManager {
public:
  /** The published name of a value; "unknown" for a number that the enumeration does not have. */
  static const char* getFeatString(tvpFeatureEnum feature);
  static const char* getSuppAdjString(tvpSuppAdjEnum adjustment);
  static const char* getSuppChunkString(tvpSuppChunkEnum chunkSize);

  /** Appends the name and the low 8 bits of the value. */
  void setFeature(tvpFeatureEnum feature, int value);
  void setSuppAdjusment(tvpSuppAdjEnum adjustment, int value);
  /** @param maxVolumeSize largest volume with chunks of this size, in sectors */
  void setSuppChunkProperties(tvpSuppChunkEnum chunkSize, int value, unsigned long long maxVolumeSize);

  /** The value stored first for the name; 0 if there is none. */
  unsigned int getFeature(tvpFeatureEnum feature) const;
  unsigned int getSuppAdjustment(tvpSuppAdjEnum adjustment) const;
  /** The support value, not a size in bytes. */
  unsigned int getSuppChunkSize(tvpSuppChunkEnum chunkSize) const;

  std::vector<std::string> getFeatNames() const { return m_features.names; }
  std::vector<unsigned char> getFeatValues() const { return m_features.values; }
  std::vector<std::string> getSuppAdjNames() const { return m_adjustments.names; }
  std::vector<unsigned char> getSuppAdjValues() const { return m_adjustments.values; }
  std::vector<std::string> getSuppChunkNames() const { return m_chunkSizes.names; }
  std::vector<unsigned char> getSuppChunkValues() const { return m_chunkSizes.values; }
  /** In sectors, one for each chunk size. */
  std::vector<unsigned long long> getSuppMaxVolumeSize() const { return m_maxVolumeSizes; }

private:
  struct Support {
    std::vector<std::string> names;
    std::vector<unsigned char> values;

    void add(const char* name, int value);
    unsigned int valueOf(const char* name) const;
  };

  Support m_features;
  Support m_adjustments;
  Support m_chunkSizes;
  std::vector<unsigned long long> m_maxVolumeSizes;
};

/** Appends the feature numbers of a volume's feature mask to out, which is not cleared. */
void getTarvexFeatures(unsigned int mask, std::vector<unsigned char>& out);

}  // namespace tvp::cim::fwf

#endif
