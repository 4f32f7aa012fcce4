// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

/**
 * Converts and returns every item, then marks the end. Each item is destroyed once it is converted, since the
 * object manager holds its own copy from then on. The status set by one item's failure does not make later
 * items fail; a status that was an error before does.
 */
template <typename Item, typename Convert, typename Return>
void returnAll(
    std::vector<Item> items, const CMPIBroker* broker, const CMPIResult* rslt, CMPIStatus* status,
    const char* failure, Convert convert, Return give) {
  const bool alreadyFailed = status->rc != CMPI_RC_OK;
  for (Item& given : items) {
    const Item item = std::move(given);
    auto* object = convert(item);
    if (!isObject(object) || alreadyFailed) {
      logAndFail(status, broker, failure);
    } else {
      keepRefusal(give(object), broker, status);
    }
  }
  keepRefusal(CMReturnDone(rslt), broker, status);
}

}  // namespace

void CMPIAdapter::ReturnInstances(
    const CMPIBroker* broker, const CMPIResult* rslt, const char** properties,
    std::vector<fwf::CIMInstance> instances, CMPIStatus* status) {
  KvsTrace("Entering CMPIAdapter::ReturnInstances()");
  returnAll(
      std::move(instances), broker, rslt, status, "Failed to convert CIM Instance to CMPI Instance",
      [&](const fwf::CIMInstance& instance) {
        return CMPIHelper::FrameworkInstanceToCMPIInstance(instance, broker, properties);
      },
      [&](const CMPIInstance* instance) { return CMReturnInstance(rslt, instance); });
  KvsTrace("Exiting CMPIAdapter::ReturnInstances()");
}

void CMPIAdapter::ReturnObjectPaths(
    const CMPIBroker* broker, const CMPIResult* rslt, std::vector<fwf::CIMObjectPath> paths,
    CMPIStatus* status) {
  KvsTrace("Entering CMPIAdapter::ReturnObjectPaths()");
  returnAll(
      std::move(paths), broker, rslt, status, "Failed to convert CIM ObjectPath to CMPI ObjectPath",
      [&](const fwf::CIMObjectPath& path) {
        return CMPIHelper::FrameworkObjectPathToCMPIObjectPath(path, broker);
      },
      [&](const CMPIObjectPath* path) { return CMReturnObjectPath(rslt, path); });
  KvsTrace("Exiting CMPIAdapter::ReturnObjectPaths()");
}

void CMPIAdapter::FormArguments(
    const CMPIBroker* broker, const CMPIResult*, const fwf::CIMMethodParam& out, CMPIArgs* outArgs,
    CMPIStatus* status) {
  KvsTrace("Entering CMPIAdapter::FormArguments()");
  if (out.getArgumentCount() > 0) {
    if (isObject(outArgs)) {
      CMPIHelper::FrameworkArgumentsToCMPIArguments(out, outArgs, broker);
    }
    if (!isObject(outArgs) || status->rc != CMPI_RC_OK) {
      logAndFail(status, broker, "Failed to convert CIM Arguments to CMPI Arguments");
    }
  }
  KvsTrace("Exiting CMPIAdapter::FormArguments()");
}

}  // namespace tvp::cim::adap::cmpi
