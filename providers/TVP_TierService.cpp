// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractMethodProviderPlugin.h"
#include "CIM/Framework/CIMException.h"
#include "backend/TarvexProExecute.h"
#include "backend/TarvexProInterface.h"
#include "oslib/KVSLog.h"
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

namespace {

// COMPAT: what invokeMethod returns to clients; the second shares its number with a CIM status by chance.
constexpr unsigned int NOT_SERVED = 1;
constexpr unsigned int METHOD_FAILED = 4;

}  // namespace

/**
 * The service with the methods that create, change, delete, flush and measure pools and volumes.
 * COMPAT: getting its instance returns nothing; clients enumerate it.
 */
class TVP_TierService : public FixedPlugin, public virtual AbstractMethodProviderPlugin {
public:
  TVP_TierService()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_TierService"),
             keyProperty("Name", "TVP_TierServiceInstance1")},
            {}) {}

  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override {
    // COMPAT: logs are searched for "enuermate" and, below, for "TierServices".
    KvsTrace("Entering TVP_TierService::enuermateInstances");
    FixedPlugin::enumerateInstances(path, instances, flag);
    KvsTrace("Exiting TVP_TierService::enuermateInstances");
  }

  /**
   * Passes a method to its routine in the storage back end, which fills the output arguments.
   * @return 0; 1 for a method that the service does not have; 4 if the method fails
   */
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override {
    KvsTrace("Entering TVP_TierService::invokeMethod()");
    if (!isServiceMethod(methodName)) {
      KvsLogMsg(
          KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - Unsupported Method: %s", methodName.c_str());
      KvsTrace("Exiting TVP_TierService::invokeMethod()");
      return NOT_SERVED;
    }
    TVPInterface* gateway = TVPInterface::getInstance();
    if (gateway == nullptr) {
      KvsTrace("TierServices::invokeMethod() : Unable to get TVPInterface instance");
      return METHOD_FAILED;
    }
    KvsLogMsg(KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - calling %s", methodName.c_str());
    const unsigned int result = gateway->execute(path, methodName, in, out);
    KvsLogMsg(KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - return %d", static_cast<int>(result));
    if (result != 0) {
      KvsTrace("Exiting TVP_TierService::invokeMethod() with Failure");
      return METHOD_FAILED;
    }
    KvsTrace("Exiting TierServices::invokeMethod()");
    return 0;
  }

  void getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>&) override {}
};

AbstractProviderPlugin* createTierService() {
  return new TVP_TierService;
}

}  // namespace tvp::cim::fwf
