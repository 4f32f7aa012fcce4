// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIAdministrator.h"
#include "cmpi/CMPIHelper.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMMethodParam;
using fwf::CIMObjectPath;

constexpr unsigned int METHOD_DONE = 0;
constexpr unsigned int METHOD_DONE_WITH_STATUS = 5;

/** Calls the method. @throws CIMException if its return value does not mean success */
unsigned int
callMethod(const CMPIObjectPath* op, const char* methodName, const CMPIArgs* in, CIMMethodParam& output) {
  CIMObjectPath path;
  CMPIHelper::CMPIObjectPathToFrameworkObjectPath(op, true, path);
  CIMMethodParam input;
  CMPIHelper::CMPIArgsToFrameWorkMethodParam(in, input);
  const unsigned int result = requireFacade().invokeMethod(path, methodName, input, output);
  if (result != METHOD_DONE && result != METHOD_DONE_WITH_STATUS) {
    KvsLogMsg(KVS_LOG_ERROR, "InvokeMethod returns error = %d", static_cast<int>(result));
    throw fwf::CIMException(fwf::FW_RC_FAILED, std::string(fwf::OPERATION_FAILED_SUFFIX));
  }
  return result;
}

}  // namespace

void CMPIAdapter::InvokeMethod(
    CMPIMethodMI*, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* methodName, const CMPIArgs* in, CMPIArgs* out, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("InvokeMethod", broker, status, [&] {
    KvsLogMsg(KVS_LOG_INFORMATION, "CMPIAdapter::InvokeMethod:%s", methodName);
    RequestOrigin origin;
    if (!readOrigin(ctx, broker, origin, status)) {
      return;
    }
    KvsLogMsg(
        KVS_LOG_INFORMATION, "UserName = %s, HostName = %s, ObjPath = %s", origin.user.c_str(),
        origin.host.c_str(), CMPIHelper::objectPathText(op).c_str());
    if (!admitOrigin(origin, broker, status)) {
      return;
    }
    CIMMethodParam output;
    CMPIValue returnValue{};
    returnValue.uint32 = callMethod(op, methodName, in, output);
    FormArguments(broker, rslt, output, out, status);
    keepRefusal(CMReturnData(rslt, &returnValue, CMPI_uint32), broker, status);
    keepRefusal(CMReturnDone(rslt), broker, status);
  });
}

}  // namespace tvp::cim::adap::cmpi
