// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/** Adds something to a result that is still open. */
template <class Body>
CMPIStatus addToResult(const CMPIResult* result, const char* function, Body body) {
  return statusCall(result, function, [&](ResultHandle& handle, BrokerState&) -> CMPIrc {
    return handle.content->done ? CMPI_RC_ERR_FAILED : body(*handle.content);
  });
}

CMPIStatus returnData(const CMPIResult* result, const CMPIValue* given, const CMPIType type) {
  return addToResult(result, "CMPIResult.returnData", [=](ResultContent& content) {
    Value value;
    const CMPIrc code = fromCmpi(given, type, value);
    if (code == CMPI_RC_OK) {
      content.data.push_back(std::move(value));
    }
    return code;
  });
}

CMPIStatus returnInstance(const CMPIResult* result, const CMPIInstance* instance) {
  static constexpr const char* FUNCTION = "CMPIResult.returnInstance";
  return addToResult(result, FUNCTION, [=](ResultContent& content) -> CMPIrc {
    Object<CMPIInstance>* returned = livingObject(instance, FUNCTION);
    if (returned == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    content.instances.push_back(returned->content().snapshot());
    return CMPI_RC_OK;
  });
}

CMPIStatus returnObjectPath(const CMPIResult* result, const CMPIObjectPath* path) {
  static constexpr const char* FUNCTION = "CMPIResult.returnObjectPath";
  return addToResult(result, FUNCTION, [=](ResultContent& content) -> CMPIrc {
    Object<CMPIObjectPath>* returned = livingObject(path, FUNCTION);
    if (returned == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    content.paths.push_back(returned->content());
    return CMPI_RC_OK;
  });
}

CMPIStatus returnDone(const CMPIResult* result) {
  return addToResult(result, "CMPIResult.returnDone", [](ResultContent& content) {
    content.done = true;
    return CMPI_RC_OK;
  });
}

CMPIStatus returnError(const CMPIResult* result, const CMPIError* error) {
  static constexpr const char* FUNCTION = "CMPIResult.returnError";
  return addToResult(result, FUNCTION, [=](ResultContent& content) -> CMPIrc {
    Object<CMPIError>* returned = livingObject(error, FUNCTION);
    if (returned == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    content.error = returned->content().message;
    return CMPI_RC_OK;
  });
}

}  // namespace

template <>
CMPIResultFT* functionTable<CMPIResult>() {
  static CMPIResultFT table = {
      CMPIVersion200,
      releaseObject<CMPIResult>,
      cloneObject<CMPIResult>,
      returnData,
      returnInstance,
      returnObjectPath,
      returnDone,
      returnError};
  return &table;
}

}  // namespace tvp::host
