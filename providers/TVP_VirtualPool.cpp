// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractMethodProviderPlugin.h"
#include "CIM/Framework/CIMException.h"
#include "backend/TarvexProInterface.h"
#include "backend/TarvexProVirtualPool.h"
#include "oslib/KVSLog.h"
#include "providers/LibraryInstances.h"
#include "providers/ModelPlugin.h"
#include "providers/Plugins.h"
#include "voltvk/VirtualPool.h"

namespace tvp::cim::fwf {

/** The pools, one instance each, without internal ones; none without a driver. */
class TVP_VirtualPool : public ModelPlugin, public virtual AbstractMethodProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) override {
    if (!isDriverAvailable()) {
      return;
    }
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      KvsLogMsg(
          KVS_LOG_DEBUG, "TVP_VirtualPool::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL");
    }
    appendLibraryInstances(
        FilteredObjects<VirtualPool>(adapter), path, instances,
        [](VirtualPool& pool, int, tvpCIMInstanceWrapper& working) {
          return TarvexProVirtualPool::InsertVirtualPoolInfo(&pool, working) == 0;
        });
  }

  /**
   * Runs "GetVirtualPoolMembers".
   * COMPAT: clients get success for any other method, which does nothing.
   * @return 0; FW_RC_FAILED if the method fails
   */
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override {
    KvsTrace("Entering TVP_VirtualPool::invokeMethod()");
    if (methodName == "GetVirtualPoolMembers") {
      TVPInterface* gateway = TVPInterface::getInstance();
      if (gateway != nullptr && gateway->execute(path, methodName, in, out) != 0) {
        KvsTrace("Exiting TVP_VirtualPool::invokeMethod() with failure");
        return FW_RC_FAILED;
      }
    }
    KvsTrace("Exiting TVP_VirtualPool::invokeMethod()");
    return 0;
  }

  /** COMPAT: clients get this sample for every path. */
  void getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) override {
    keys.push_back(keyProperty("CreationClassName", "TVP_VirtualPool"));
    keys.push_back(keyProperty("Name", "VP1"));
    keys.push_back(keyProperty("Description", "Virtual Pool 1"));
    keys.push_back(keyProperty("VirtualPoolId", 110U));
    keys.push_back(keyProperty<unsigned char>("NumberOfLogicalDevice", 10));
    keys.push_back(keyProperty<unsigned char>("NumberOfVirtualVolume", 10));
    keys.push_back(keyProperty("CapacityInSectors", 1150ULL));
    keys.push_back(keyProperty<unsigned char>("TierLevel", 126));
  }
};

AbstractProviderPlugin* createVirtualPool() {
  return new TVP_VirtualPool;
}

}  // namespace tvp::cim::fwf
