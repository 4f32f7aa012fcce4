// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

CMPIData getNext(const CMPIEnumeration* enumeration, CMPIStatus* status) {
  return valueCall<CMPIData>(
      enumeration, "CMPIEnumeration.getNext", status,
      [](EnumerationContent& content, BrokerState& broker, CMPIrc& code) {
        if (content.next >= content.values.size()) {
          code = CMPI_RC_ERR_NOT_FOUND;
          return noData(CMPI_notFound);
        }
        return toCmpi(broker, content.values[content.next++]);
      });
}

CMPIBoolean hasNext(const CMPIEnumeration* enumeration, CMPIStatus* status) {
  return valueCall<CMPIBoolean>(
      enumeration, "CMPIEnumeration.hasNext", status, [](EnumerationContent& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPIBoolean>(content.next < content.values.size());
      });
}

CMPIArray* toArray(const CMPIEnumeration* enumeration, CMPIStatus* status) {
  return valueCall<CMPIArray*>(
      enumeration, "CMPIEnumeration.toArray", status,
      [](EnumerationContent& content, BrokerState& broker, CMPIrc&) {
        ArrayContent array;
        array.elementType =
            content.values.empty() ? static_cast<CMPIType>(CMPI_instance) : content.values.front().type();
        array.elements = content.values;
        return broker.make<CMPIArray>(std::move(array));
      });
}

}  // namespace

template <>
CMPIEnumerationFT* functionTable<CMPIEnumeration>() {
  static CMPIEnumerationFT table = {
      CMPIVersion200, releaseObject<CMPIEnumeration>, cloneObject<CMPIEnumeration>, getNext, hasNext,
      toArray};
  return &table;
}

}  // namespace tvp::host
