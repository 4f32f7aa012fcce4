// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

/**
 * What a result has collected so far, while it is open. @throws CallFailure CMPI_RC_ERR_FAILED after the end
 * mark
 */
ResultContent& open(const ResultHandle& handle) {
  return !handle.content->done ? *handle.content : throw CallFailure{CMPI_RC_ERR_FAILED};
}

}  // namespace

CMPIResultFT* ObjectTraits<CMPIResult>::table() {
  static CMPIResultFT functions = objectTable<CMPIResult>([](CMPIResultFT& table) {
    bind<&CMPIResultFT::returnData>(
        table, "returnData", [](ResultHandle& handle, Call& call, const CMPIValue* given, CMPIType type) {
          open(handle).data.push_back(fromCmpi(call, given, type));
        });
    bind<&CMPIResultFT::returnInstance>(
        table, "returnInstance", [](ResultHandle& handle, Call& call, const CMPIInstance* instance) {
          open(handle).instances.push_back(call.contentOf(instance).snapshot());
        });
    bind<&CMPIResultFT::returnObjectPath>(
        table, "returnObjectPath", [](ResultHandle& handle, Call& call, const CMPIObjectPath* path) {
          open(handle).paths.push_back(call.contentOf(path));
        });
    bind<&CMPIResultFT::returnDone>(
        table, "returnDone", [](ResultHandle& handle, Call&) { open(handle).done = true; });
    bind<&CMPIResultFT::returnError>(
        table, "returnError", [](ResultHandle& handle, Call& call, const CMPIError* error) {
          open(handle).error = call.contentOf(error).message;
        });
  });
  return &functions;
}

}  // namespace tvp::host
