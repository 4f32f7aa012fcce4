// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROVIRTUALPOOL_H
#define BACKEND_TARVEXPROVIRTUALPOOL_H

#include "CIM/Framework/CIMInstance.h"

#include <vector>

class Ret;
class VirtualPool;
struct VirtualPoolSpec;

namespace tvp::cim::fwf {

class tvpCIMInstanceWrapper;

/**
 * The operations on virtual pools, each a wrapper of one call to the storage library's adapter, and the CIM
 * instances of pools and their members.
 *
 * The operations that take a Ret copy the library's status into it and return BACKEND_DONE, or BACKEND_FAILED
 * if the status is not zero or there is no adapter. COMPAT: when the library throws they return BACKEND_DONE,
 * which clients see as success; the log shows the exception. Nothing here throws by itself; stateless, safe
 * from any thread.
 */
class TarvexProVirtualPool {
public:
  /** @param spec its identifier is set to that of the new pool */
  static unsigned int CreateVirtualPool(VirtualPoolSpec& spec, Ret& ret);
  static unsigned int ModifyVirtualPool(unsigned int poolId, const VirtualPoolSpec& spec, Ret& ret);
  static unsigned int DeleteVirtualPool(unsigned int poolId, Ret& ret);

  /**
   * Appends one instance per chunk of the pool, with "Name" and "DeviceNumber" of the drive and
   * "LDStartRange" and "LDEndRange" in sectors. The instances have no class name yet.
   * @return BACKEND_DONE, also for an identifier that no pool has; BACKEND_FAILED if there is no adapter
   */
  static unsigned int GetPoolMembers(unsigned int poolId, std::vector<CIMInstance>& members);

  /**
   * Appends the properties of a "TVP_VirtualPool" to the instance.
   * @return BACKEND_DONE; BACKEND_FAILED, adding nothing, for an internal pool (created for a cached drive)
   * or a null pool
   */
  static unsigned int InsertVirtualPoolInfo(VirtualPool* pool, tvpCIMInstanceWrapper& wrapper);
};

}  // namespace tvp::cim::fwf

#endif
