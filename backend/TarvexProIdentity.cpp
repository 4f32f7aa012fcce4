// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProIdentity.h"

#include "backend/BackendResult.h"
#include "backend/LibraryAccess.h"
#include "backend/Refusal.h"
#include "backend/TarvexProUtil.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"

namespace tvp::cim::fwf {

namespace {

/** The support tables as published: the end markers are entries like any other. */
tvpUtilManager collectCapabilities(const TvkAdapterIdentity& identity) {
  tvpUtilManager capabilities;
  for (int feature = TVP_FEATURE_CACHE; feature <= featMaxIndex; ++feature) {
    capabilities.setFeature(
        static_cast<tvpFeatureEnum>(feature), static_cast<int>(identity.featureSupport[feature]));
  }
  for (int adjustment = TVP_ADJUST_TUNE_KNOB; adjustment <= SuppAdjMaxIndex; ++adjustment) {
    capabilities.setSuppAdjusment(
        static_cast<tvpSuppAdjEnum>(adjustment), static_cast<int>(identity.adjustmentSupport[adjustment]));
  }
  for (int chunkSize = TVP_CHUNKSZ_4KB; chunkSize <= SuppChunkMaxIndex; ++chunkSize) {
    // The end marker has no size of its own and shows the overall maximum.
    const int sizeIndex = chunkSize == SuppChunkMaxIndex ? 0 : chunkSize;
    capabilities.setSuppChunkProperties(
        static_cast<tvpSuppChunkEnum>(chunkSize), static_cast<int>(identity.chunkSizeSupport[chunkSize]),
        identity.maxVolumeSizeInSectors[sizeIndex]);
  }
  return capabilities;
}

void insertCapabilities(const tvpUtilManager& capabilities, tvpCIMInstanceWrapper& wrapper) {
  wrapper.tvpAddProp("SupportedFeatureNames", capabilities.getFeatNames(), false, false);
  wrapper.tvpAddProp("SupportedFeaturesValues", capabilities.getFeatValues(), false, false);
  wrapper.tvpAddProp("SupportedAdjustmentValues", capabilities.getSuppAdjValues(), false, false);
  wrapper.tvpAddProp("SupportedAdjustmentNames", capabilities.getSuppAdjNames(), false, false);
  wrapper.tvpAddProp("SupportedChunkSizeValues", capabilities.getSuppChunkValues(), false, false);
  wrapper.tvpAddProp("SupportedChunkSizeNames", capabilities.getSuppChunkNames(), false, false);
  wrapper.tvpAddProp("SupportedMaxVolumeSizeInSectors", capabilities.getSuppMaxVolumeSize(), false, false);
}

void insertLimits(const TvkAdapterIdentity& identity, tvpCIMInstanceWrapper& wrapper) {
  wrapper.tvpAddProp<unsigned char>("MaxTierLevels", identity.maxTierLevels, false, false);
  wrapper.tvpAddProp<unsigned char>("MaxVolumesSupported", identity.maxVolumes, false, false);
  wrapper.tvpAddProp<unsigned char>("MaxTiersSupported", identity.maxTiers, false, false);
  wrapper.tvpAddProp<unsigned char>("MaxLogicalDevicesSupported", identity.maxLogicalDevices, false, false);
  wrapper.tvpAddProp<unsigned char>(
      "MaxLogicalDevicesPerPoolSupported", identity.maxLogicalDevicesPerPool, false, false);
  wrapper.tvpAddProp<unsigned long long>(
      "MinTotalPoolSizeInSectors", identity.minTotalPoolSizeInSectors, false, false);
  wrapper.tvpAddProp<unsigned long long>(
      "MinRequiredSizeFromPoolInSectors", identity.minRequiredSizeFromPoolInSectors, false, false);
  wrapper.tvpAddProp<unsigned char>("TarvexPlusEnabled", identity.plusEnabled, false, false);
  wrapper.tvpAddProp<unsigned char>("LogicalDevicesCount", identity.logicalDevicesCount, false, false);
  wrapper.tvpAddProp<unsigned char>("VirtualPoolCount", identity.virtualPoolCount, false, false);
  wrapper.tvpAddProp<unsigned char>("VirtualVolumeCount", identity.virtualVolumeCount, false, false);
}

/** @return false if the library throws or refuses (see ret); there is then nothing to publish. */
bool readIdentity(TvkAdapter& adapter, TvkAdapterIdentity& identity, Ret& ret) {
  try {
    ret = adapter.getIdentity(identity);
    if (ret.getReturn() == 0) {
      return true;
    }
    KvsLogMsg(
        KVS_LOG_ERROR, "InsertFeatureIdentityInfo() - the storage library does not tell its identity: %s",
        ret.getText());
  } catch (const std::bad_alloc&) {
    throw;  // without an identity the answer would look complete
  } catch (...) {
    KvsTrace("Exception caught in Tvk Lib method: TvkAdapter::getIdentity() ");
  }
  return false;
}

unsigned int insertIdentity(tvpCIMInstanceWrapper& wrapper, Ret& ret) {
  tvpMethodTrace trace("InsertFeatureIdentityInfo");
  TvkAdapter* adapter = getTvkAdapter();
  if (adapter == nullptr) {
    KvsLogMsg(KVS_LOG_DEBUG, "InsertFeatureIdentityInfo() - !!ERROR!! - TvkAdapter object is NULL");
    return BACKEND_FAILED;
  }
  TvkAdapterIdentity identity = {};
  if (!readIdentity(*adapter, identity, ret)) {
    return BACKEND_FAILED;
  }
  wrapper.tvpAddProp<std::string>("CreationClassName", "TVP_TarvexProIdentity", true, true);
  wrapper.tvpAddProp<std::string>("Name", identity.name, true, true);
  wrapper.tvpAddProp<unsigned short>("MajorRevision", identity.majorRevision, false, false);
  wrapper.tvpAddProp<unsigned short>("MinorRevision", identity.minorRevision, false, false);
  wrapper.tvpAddProp<unsigned short>("BuildRevision", identity.buildRevision, false, false);
  wrapper.tvpAddProp<unsigned char>(
      "PolicyEngineStatus", getTarvexProRoot()->isPolicyEngineRunning() ? 1 : 0, false, false);
  insertCapabilities(collectCapabilities(identity), wrapper);
  insertLimits(identity, wrapper);
  return BACKEND_DONE;
}

}  // namespace

unsigned int InsertFeatureIdentityInfo(tvpCIMInstanceWrapper& wrapper) {
  Ret ret;
  const unsigned int result = insertIdentity(wrapper, ret);
  reportRefusal("TvkAdapter::getIdentity", ret.getDetail());  // after all other lines of the operation
  return result;
}

}  // namespace tvp::cim::fwf
