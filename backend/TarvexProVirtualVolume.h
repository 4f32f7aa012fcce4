// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROVIRTUALVOLUME_H
#define BACKEND_TARVEXPROVIRTUALVOLUME_H

#include "CIM/Framework/CIMInstance.h"

#include <string>
#include <vector>

class Ret;
class VirtualVolume;
struct VirtualPoolSpec;
struct VirtualVolumeSpec;
struct d_ioctl_user_stat;

namespace tvp::cim::fwf {

class tvpCIMInstanceWrapper;

/**
 * The operations on virtual volumes, each a wrapper of one call to the storage library's adapter, and the CIM
 * instances of volumes and their members. Results and exceptions are as in TarvexProVirtualPool.
 */
class TarvexProVirtualVolume {
public:
  /**
   * Orders the pool entries hard disk first, then SSD, sets the requested capacity (the sum of both entries
   * for kind 1, else that of the first) and creates the volume.
   * @param spec changed accordingly; its identifier is set to that of the new volume
   */
  static unsigned int CreateVirtualVolume(VirtualVolumeSpec& spec, Ret& ret);

  /**
   * Creates a cached volume together with its internal pool.
   * @param volumeName its first TVK_LONGEST_NAME bytes are used, truncated at a character boundary
   * @param text the description, likewise, its first TVK_LONGEST_DESCRIPTION bytes
   * @param kind kind of the volume (TvkVolumeType)
   * @param ssdCapacity sectors to take from the SSD pool
   * @param internalPool the pool to create on the cached drive; its identifier is set
   */
  static unsigned int CreateDataCacheVirtualVolume(
      std::string volumeName, std::string text, unsigned char kind, unsigned int ssdPoolId,
      unsigned long long ssdCapacity, unsigned int knobSetting, VirtualPoolSpec& internalPool, Ret& ret);

  /**
   * Changes nothing: reports the status that ret already holds. The removal is done by the ordinary
   * deletions.
   */
  static unsigned int DeleteDataCacheVolume(unsigned int volumeId, unsigned int poolId, Ret& ret);

  static unsigned int ModifyVirtualVolume(unsigned int volumeId, VirtualVolumeSpec& spec, Ret& ret);
  static unsigned int FlushVirtualVolume(unsigned int volumeId, Ret& ret);
  static unsigned int DeleteVirtualVolume(unsigned int volumeId, Ret& ret);
  static unsigned int ResetVolumeStats(unsigned int volumeId, Ret& ret);

  /** @param stats filled by the library */
  static unsigned int GetVolumeStats(unsigned int volumeId, d_ioctl_user_stat* stats, Ret& ret);

  /**
   * Appends one instance per chunk of the volume: "VolumeName" (the name of the pool that provides the
   * chunk), "VirtualPoolId" and "MaxAllowedChunks". The instances have no class name yet.
   * @return BACKEND_DONE, also for an identifier that no volume has; BACKEND_FAILED if there is no adapter
   */
  static unsigned int GetVolumeMembers(unsigned int volumeId, std::vector<CIMInstance>& members);

  /**
   * Appends the properties of a "TVP_VirtualVolume" to the instance.
   * @return BACKEND_DONE; BACKEND_FAILED, adding nothing, for a null volume
   */
  static unsigned int InsertVirtualVolumeInfo(VirtualVolume* volume, tvpCIMInstanceWrapper& wrapper);
};

}  // namespace tvp::cim::fwf

#endif
