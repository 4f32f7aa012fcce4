// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProLogicalDevice.h"
#include "oslib/KVSLog.h"
#include "providers/LibraryInstances.h"
#include "providers/ModelPlugin.h"
#include "providers/Plugins.h"
#include "voltvk/LogicalDevice.h"

namespace tvp::cim::fwf {

/** The drives that pools can be made of, one instance each; none without a driver. */
class TVP_LogicalDevice : public ModelPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) override {
    KvsTrace("Entering TVP_LogicalDevice::enumerateInstances()");
    if (isDriverAvailable()) {
      appendDrives(path, instances);
    }
    KvsTrace("Exiting TVP_LogicalDevice::enumerateInstances()");
  }

private:
  static void appendDrives(const CIMObjectPath& path, std::vector<CIMInstance>& instances) {
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      KvsLogMsg(
          KVS_LOG_DEBUG, "TVP_LogicalDevice::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL");
    }
    const FilteredObjects<LogicalDevice> drives(adapter);
    if (!drives.isReadable()) {
      KvsTrace("TVP_LogicalDevice : Driver is not available");
    }
    appendLibraryInstances(
        drives, path, instances, [](LogicalDevice& drive, int index, tvpCIMInstanceWrapper& working) {
          KvsLogMsg(KVS_LOG_DEBUG, "TVP_LogicalDevice::enumerateInstances() - LD# %d", index);
          TarvexProLogicalDevice::InsertLogicalDriveInfo(&drive, working);
          return true;
        });
  }
};

AbstractProviderPlugin* createLogicalDevice() {
  return new TVP_LogicalDevice;
}

}  // namespace tvp::cim::fwf
