// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMException;
using fwf::CIMMethodParam;
using fwf::CIMProperty;

[[noreturn]] void throwNotSupported() {
  throw CIMException(fwf::FW_RC_NOT_SUPPORTED, std::string(fwf::NOT_SUPPORTED_SUFFIX));
}

/** A kind of value that is returned as an argument. */
struct ArgumentKind {
  fwf::Primitive_DataType code;
  OutboundShape shape;
  OutboundTexts texts;
};

constexpr ArgumentKind scalar(fwf::Primitive_DataType code, CMPIType type, const char* received = nullptr) {
  return ArgumentKind{code, {type, 0, 0}, {received, nullptr, nullptr, nullptr}};
}

constexpr ArgumentKind array(fwf::Primitive_DataType code, CMPIType element, const char* received = nullptr) {
  return ArgumentKind{
      code,
      {static_cast<CMPIType>(element | CMPI_ARRAY), element, element},
      {received, nullptr, nullptr, nullptr}};
}

constexpr ArgumentKind ARGUMENT_KINDS[] = {
    scalar(fwf::PDT_BOOLEAN, CMPI_boolean),
    scalar(fwf::PDT_SINT16, CMPI_sint16),
    scalar(fwf::PDT_SINT32, CMPI_sint32),
    scalar(fwf::PDT_SINT64, CMPI_sint64),
    scalar(fwf::PDT_SINT8, CMPI_sint8),
    scalar(fwf::PDT_STRING, CMPI_string),
    array(fwf::PDT_STRING_ARRAY, CMPI_string, "UintStringArray received"),
    scalar(fwf::PDT_UINT16, CMPI_uint16),
    scalar(fwf::PDT_UINT32, CMPI_uint32),
    array(fwf::PDT_UINT32_ARRAY, CMPI_uint32, "Uint32Array received"),
    scalar(fwf::PDT_UINT64, CMPI_uint64),
    array(fwf::PDT_UINT64_ARRAY, CMPI_uint64),
    // COMPAT: clients of the methods expect their 8-bit outputs to be signed.
    scalar(fwf::PDT_UINT8, CMPI_sint8),
    array(fwf::PDT_UINT8_ARRAY, CMPI_uint8),
    scalar(fwf::PDT_REFERENCE, CMPI_ref),
    // COMPAT: this is the only array that object managers get made with its own array type.
    {fwf::PDT_REFERENCE_ARRAY, {CMPI_refA, CMPI_refA, CMPI_ref}, {nullptr, nullptr, nullptr, nullptr}},
    scalar(fwf::PDT_INSTANCE, CMPI_instance, "Instance "),
    {fwf::PDT_INSTANCE_ARRAY,
     {CMPI_instanceA, CMPI_instance, CMPI_instance},
     {"Instance array", "array 3 ", "Converting instance ", "inserting"}},
};

const ArgumentKind& kindOf(const CIMProperty& argument) {
  for (const ArgumentKind& kind : ARGUMENT_KINDS) {
    if (kind.code == argument.getType()) {
      return kind;
    }
  }
  KvsLogMsg(KVS_LOG_DEBUG, "Unknown datattyppe %d", static_cast<int>(argument.getType()));
  throwNotSupported();
}

}  // namespace

void CMPIHelper::CMPIArgsToFrameWorkMethodParam(CMPIArgs const* in, CIMMethodParam& out) {
  KvsTrace("Entering CMPIHelper::CMPIArgsToFrameWorkMethodParam");
  const InboundRules rules{IN_ARGUMENT, CMPIObjectPathToFrameworkObjectPath, nullptr};
  if (!isObject(in)) {
    fail();
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPICount count = CMGetArgCount(in, &rc);
  requireOk(rc);
  for (CMPICount i = 0; i < count; ++i) {
    CMPIString* name = nullptr;
    const CMPIData data = CMGetArgAt(in, i, &name, &rc);
    requireOk(rc);
    const std::string text = textOf(name);
    const InboundKind* kind = findInboundKind(data.type, IN_ARGUMENT);
    if (kind == nullptr) {
      KvsLogMsg(KVS_LOG_DEBUG, "Unsupported data type: %d", static_cast<int>(data.type));
      throwNotSupported();
    }
    out.addArgument(makeProperty(*kind, text, data, rules));
  }
}

void CMPIHelper::FrameworkArgumentsToCMPIArguments(
    CIMMethodParam const& params, CMPIArgs* out, CMPIBroker const* broker) {
  const OutboundRules rules{broker, nullptr, nullptr};
  if (broker == nullptr || !isObject(out)) {
    fail();
  }
  for (const CIMProperty& argument : params.arguments()) {
    KvsLogMsg(KVS_LOG_DEBUG, "Prop type %d", static_cast<int>(argument.getType()));
    const ArgumentKind& kind = kindOf(argument);
    const OutboundValue value = valueOfProperty(argument, kind.shape, rules, kind.texts);
    requireOk(CMAddArg(out, argument.name().c_str(), value.get(), value.type()));
  }
}

}  // namespace tvp::cim::adap::cmpi
