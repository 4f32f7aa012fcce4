// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

/** An output argument must be one of the method's parameters, with its type. */
void checkOutput(const SchemaMethod& method, const char* name, const Value& value) {
  const SchemaParameter* parameter = method.parameter(name);
  if (parameter == nullptr || !parameter->out) {
    throw CallFailure{CMPI_RC_ERR_NO_SUCH_PROPERTY};
  }
  // COMPAT: providers that send unsigned 8-bit outputs under the signed type; object managers pass them
  // through.
  const bool signedByte = parameter->type == CMPI_uint8 && value.type() == CMPI_sint8;
  if (!value.isNull() && !signedByte && value.type() != parameter->type) {
    throw CallFailure{CMPI_RC_ERR_TYPE_MISMATCH};
  }
}

void addArg(ArgsContent& content, Call& call, const char* name, const CMPIValue* given, CMPIType type) {
  required(name);
  Value value = fromCmpi(call, given, type);
  if (content.method != nullptr && !call.broker().options().lenient) {
    checkOutput(*content.method, name, value);
  }
  content.arguments.add(name, std::move(value));
}

}  // namespace

CMPIArgsFT* ObjectTraits<CMPIArgs>::table() {
  static CMPIArgsFT functions = objectTable<CMPIArgs>([](CMPIArgsFT& table) {
    bind<&CMPIArgsFT::addArg>(table, "addArg", addArg);
    bind<&CMPIArgsFT::getArg>(table, "getArg", [](ArgsContent& content, Call& call, const char* name) {
      return valueNamed(call, content.arguments.values, name);
    });
    bind<&CMPIArgsFT::getArgAt>(
        table, "getArgAt", [](ArgsContent& content, Call& call, CMPICount position, CMPIString** name) {
          return valueAt(call, content.arguments.values, position, name);
        });
    bind<&CMPIArgsFT::getArgCount>(table, "getArgCount", [](ArgsContent& content, Call&) {
      return static_cast<CMPICount>(content.arguments.values.size());
    });
  });
  return &functions;
}

}  // namespace tvp::host
