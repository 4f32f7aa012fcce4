// SPDX-License-Identifier: Apache-2.0
#include "backend/LibraryAccess.h"
#include "backend/TarvexProIdentity.h"
#include "oslib/KVSLog.h"
#include "providers/ModelPlugin.h"
#include "providers/Plugins.h"

#include <utility>

namespace tvp::cim::fwf {

/** The product: one instance with its revisions, features and limits; none without a driver. */
class TVP_TarvexProIdentity : public ModelPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) override {
    KvsTrace("Entering TVP_TarvexProIdentity::enumerateInstances()");
    tvpCIMInstanceWrapper working;
    if (!isDriverAvailable()) {
      KvsTrace("TVP_TarvexProIdentity : Driver is not available");
    } else if (InsertFeatureIdentityInfo(working) == 0) {
      working.instance().setPath(path);
      instances.push_back(std::move(working.instance()));
    }
    KvsTrace("Exiting TVP_TarvexProIdentity::enumerateInstances()");
  }
};

AbstractProviderPlugin* createTarvexProIdentity() {
  return new TVP_TarvexProIdentity;
}

}  // namespace tvp::cim::fwf
