// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/** An output argument must be one of the method's, with its type. */
CMPIrc checkOutput(const SchemaMethod& method, const char* name, const Value& value) {
  const SchemaParameter* parameter = method.parameter(name);
  if (parameter == nullptr || !parameter->out) {
    return CMPI_RC_ERR_NO_SUCH_PROPERTY;
  }
  // Providers of this family send unsigned 8-bit outputs under the signed type, and rely on it.
  const bool signedByte = parameter->type == CMPI_uint8 && value.type() == CMPI_sint8;
  return value.isNull() || signedByte || value.type() == parameter->type ? CMPI_RC_OK
                                                                         : CMPI_RC_ERR_TYPE_MISMATCH;
}

CMPIStatus addArg(const CMPIArgs* args, const char* name, const CMPIValue* given, const CMPIType type) {
  return statusCall(args, "CMPIArgs.addArg", [=](ArgsContent& content, BrokerState& broker) -> CMPIrc {
    if (name == nullptr) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    Value value;
    CMPIrc code = fromCmpi(given, type, value);
    if (code == CMPI_RC_OK && content.method != nullptr && !broker.options().lenient) {
      code = checkOutput(*content.method, name, value);
    }
    if (code == CMPI_RC_OK) {
      content.arguments.add(name, std::move(value));
    }
    return code;
  });
}

CMPIData getArg(const CMPIArgs* args, const char* name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      args, "CMPIArgs.getArg", status, [=](ArgsContent& content, BrokerState& broker, CMPIrc& code) {
        return valueNamed(broker, content.arguments.values, name, code);
      });
}

CMPIData getArgAt(const CMPIArgs* args, CMPICount position, CMPIString** name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      args, "CMPIArgs.getArgAt", status, [=](ArgsContent& content, BrokerState& broker, CMPIrc& code) {
        return valueAt(broker, content.arguments.values, position, name, code);
      });
}

CMPICount getArgCount(const CMPIArgs* args, CMPIStatus* status) {
  return valueCall<CMPICount>(
      args, "CMPIArgs.getArgCount", status, [](ArgsContent& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPICount>(content.arguments.values.size());
      });
}

}  // namespace

template <>
CMPIArgsFT* functionTable<CMPIArgs>() {
  static CMPIArgsFT table = {
      CMPIVersion200, releaseObject<CMPIArgs>, cloneObject<CMPIArgs>, addArg, getArg, getArgAt, getArgCount};
  return &table;
}

}  // namespace tvp::host
