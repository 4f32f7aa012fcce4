// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {

CMPIEnumerationFT* ObjectTraits<CMPIEnumeration>::table() {
  static CMPIEnumerationFT functions = objectTable<CMPIEnumeration>([](CMPIEnumerationFT& table) {
    bind<&CMPIEnumerationFT::getNext>(table, "getNext", [](EnumerationContent& content, Call& call) {
      if (content.next >= content.values.size()) {
        throw CallFailure{CMPI_RC_ERR_NOT_FOUND};
      }
      return toCmpi(call, content.values[content.next++]);
    });
    bind<&CMPIEnumerationFT::hasNext>(table, "hasNext", [](EnumerationContent& content, Call&) {
      return static_cast<CMPIBoolean>(content.next < content.values.size());
    });
    bind<&CMPIEnumerationFT::toArray>(table, "toArray", [](EnumerationContent& content, Call& call) {
      const auto type =
          content.values.empty() ? static_cast<CMPIType>(CMPI_instance) : content.values.front().type();
      return call.make<CMPIArray>({type, content.values});
    });
  });
  return &functions;
}

}  // namespace tvp::host
