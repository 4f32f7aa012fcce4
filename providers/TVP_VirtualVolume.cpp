// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractMethodProviderPlugin.h"
#include "backend/TarvexProInterface.h"
#include "backend/TarvexProVirtualVolume.h"
#include "oslib/KVSLog.h"
#include "providers/LibraryInstances.h"
#include "providers/ModelPlugin.h"
#include "providers/Plugins.h"
#include "voltvk/VirtualVolume.h"

namespace tvp::cim::fwf {

/** The volumes, one instance each; none without a driver. */
class TVP_VirtualVolume : public ModelPlugin, public virtual AbstractMethodProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) override {
    if (!isDriverAvailable()) {
      return;
    }
    appendLibraryInstances(
        FilteredObjects<VirtualVolume>(getTvkAdapter()), path, instances,
        [](VirtualVolume& volume, int, tvpCIMInstanceWrapper& working) {
          // A volume is listed whatever the builder returns.
          TarvexProVirtualVolume::InsertVirtualVolumeInfo(&volume, working);
          return true;
        });
  }

  /**
   * Runs "GetVirtualVolumeMembers".
   * COMPAT: clients get success for any other method, and if the method fails.
   * @return 0
   */
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override {
    KvsTrace("Entering TVP_VirtualVolume::invokeMethod()");
    if (methodName == "GetVirtualVolumeMembers") {
      if (TVPInterface* gateway = TVPInterface::getInstance()) {
        gateway->execute(path, methodName, in, out);
      }
    }
    KvsTrace("Exiting TVP_VirtualVolume::invokeMethod()");
    return 0;
  }
};

AbstractProviderPlugin* createVirtualVolume() {
  return new TVP_VirtualVolume;
}

}  // namespace tvp::cim::fwf
