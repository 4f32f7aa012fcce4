// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIAdministrator.h"
#include "cmpi/CMPIHelper.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

#include <cstring>
#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMInstance;
using fwf::CIMObjectPath;
using fwf::FrameworkFacade;

void logClassName(const char* operation, const CIMObjectPath& path) {
  KvsLogMsg(KVS_LOG_INFORMATION, "CMPIAdapter::%s ClassName:%s", operation, path.className().c_str());
}

/** The path of a reading operation, which must name a class. */
CIMObjectPath readPath(const char* operation, const CMPIObjectPath* op, bool withKeys) {
  CIMObjectPath path;
  CMPIHelper::CMPIObjectPathToFrameworkObjectPath(op, withKeys, path);
  if (path.className().empty()) {
    constexpr char FAILURE[] = "Failed to convert CMPI ObjectPath to CIM ObjectPath";
    throwInternalError(FAILURE, FAILURE);
  }
  logClassName(operation, path);
  return path;
}

/** The path of an operation that continues without a class name. */
CIMObjectPath changePath(const char* operation, const CMPIObjectPath* op) {
  CIMObjectPath path;
  CMPIHelper::CMPIObjectPathToFrameworkObjectPath(op, true, path);
  logClassName(operation, path);
  return path;
}

/**
 * Whether the object manager takes the first element of a creation's answer without looking whether there is
 * one. COMPAT: SFCB, whose process for providers would end.
 */
bool needsPathOfCreation(const CMPIBroker* broker) {
  return broker != nullptr && broker->bft != nullptr && broker->bft->brokerName != nullptr &&
         std::strcmp(broker->bft->brokerName, "RequestHandler") == 0;
}

}  // namespace

void CMPIAdapter::EnumInstances(
    CMPIInstanceMI*, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties, const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "EnumInstances";
  runOperation(NAME, broker, status, [&] {
    setContext(ctx);
    CIMObjectPath path = readPath(NAME, op, false);
    std::vector<CIMInstance> instances;
    requireFacade().enumerateInstances(path, instances);
    ReturnInstances(broker, rslt, properties, std::move(instances), status);
  });
}

void CMPIAdapter::EnumInstanceNames(
    CMPIInstanceMI*, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "EnumInstanceNames";
  runOperation(NAME, broker, status, [&] {
    setContext(ctx);
    CIMObjectPath path = readPath(NAME, op, false);
    std::vector<CIMObjectPath> names;
    requireFacade().enumerateInstanceNames(path, names);
    ReturnObjectPaths(broker, rslt, std::move(names), status);
  });
}

void CMPIAdapter::GetInstance(
    CMPIInstanceMI*, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties, const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "GetInstance";
  const auto work = [&] {
    setContext(ctx);
    CIMObjectPath path = readPath(NAME, op, true);
    std::vector<CIMInstance> instances;
    requireFacade().getCIMInstance(path, instances);
    ReturnInstances(broker, rslt, properties, std::move(instances), status);
  };
  // COMPAT: both lines of this operation begin with the same word; logs are searched for it.
  runOperation(NAME, broker, status, work, "Exiting");
}

void CMPIAdapter::CreateInstance(
    CMPIInstanceMI*, const CMPIContext*, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIInstance*, const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "CreateInstance";
  runOperation(NAME, broker, status, [&] {
    changePath(NAME, op);
    requireFacade();
    // COMPAT: clients see creation accepted although it does nothing; pools and volumes are created by
    // methods.
    if (needsPathOfCreation(broker)) {
      keepRefusal(CMReturnObjectPath(rslt, op), broker, status);
    }
    ReturnInstances(broker, rslt, nullptr, {}, status);
  });
}

void CMPIAdapter::ModifyInstance(
    CMPIInstanceMI*, const CMPIContext* ctx, const CMPIResult*, const CMPIObjectPath* op,
    const CMPIInstance* instance, const char** properties, const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "ModifyInstance";
  runOperation(NAME, broker, status, [&] {
    RequestOrigin origin;
    if (!readOrigin(ctx, broker, origin, status) || !admitOrigin(origin, broker, status)) {
      return;
    }
    CIMObjectPath path = changePath(NAME, op);
    FrameworkFacade& facade = requireFacade();
    CIMInstance cimInstance;
    CMPIHelper::CMPIInstanceToFrameworkInstance(instance, path, cimInstance);
    std::vector<std::string> propertyList;
    CMPIHelper::ConvertChartoStringVector(properties, propertyList);
    facade.modifyInstance(path, cimInstance, propertyList);
  });
}

void CMPIAdapter::DeleteInstance(
    CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath* op,
    const CMPIBroker* broker, CMPIStatus* status) {
  constexpr char NAME[] = "DeleteInstance";
  runOperation(NAME, broker, status, [&] {
    changePath(NAME, op);
    requireFacade();
    // COMPAT: clients see deletion accepted although it does nothing; pools and volumes are deleted by
    // methods.
  });
}

}  // namespace tvp::cim::adap::cmpi
