// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

CMPICount getSize(const CMPIArray* array, CMPIStatus* status) {
  return valueCall<CMPICount>(
      array, "CMPIArray.getSize", status, [](ArrayContent& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPICount>(content.elements.size());
      });
}

CMPIType getSimpleType(const CMPIArray* array, CMPIStatus* status) {
  return valueCall<CMPIType>(
      array, "CMPIArray.getSimpleType", status,
      [](ArrayContent& content, BrokerState&, CMPIrc&) { return content.elementType; });
}

CMPIData getElementAt(const CMPIArray* array, CMPICount position, CMPIStatus* status) {
  return valueCall<CMPIData>(
      array, "CMPIArray.getElementAt", status, [=](ArrayContent& content, BrokerState& broker, CMPIrc& code) {
        if (position >= content.elements.size()) {
          code = CMPI_RC_ERR_NO_SUCH_PROPERTY;
          return noData(CMPI_notFound);
        }
        return toCmpi(broker, content.elements[position]);
      });
}

CMPIStatus setElementAt(CMPIArray* array, CMPICount position, const CMPIValue* given, CMPIType type) {
  return statusCall(array, "CMPIArray.setElementAt", [=](ArrayContent& content, BrokerState&) -> CMPIrc {
    if (position >= content.elements.size()) {
      return CMPI_RC_ERR_NO_SUCH_PROPERTY;
    }
    Value value;
    const CMPIrc code = fromCmpi(given, type, value);
    if (code != CMPI_RC_OK) {
      return code;
    }
    if (value.isNull()) {
      value = Value::null(content.elementType);
    }
    if (value.type() != content.elementType) {
      return CMPI_RC_ERR_TYPE_MISMATCH;
    }
    content.elements[position] = std::move(value);
    return CMPI_RC_OK;
  });
}

}  // namespace

template <>
CMPIArrayFT* functionTable<CMPIArray>() {
  static CMPIArrayFT table = {
      CMPIVersion200, releaseObject<CMPIArray>, cloneObject<CMPIArray>, getSize, getSimpleType, getElementAt,
      setElementAt};
  return &table;
}

}  // namespace tvp::host
