// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

/** @throws CallFailure CMPI_RC_ERR_NO_SUCH_PROPERTY past the end */
Value& elementAt(ArrayContent& content, CMPICount position) {
  return position < content.elements.size() ? content.elements[position]
                                            : throw CallFailure{CMPI_RC_ERR_NO_SUCH_PROPERTY};
}

void setElementAt(
    ArrayContent& content, Call& call, CMPICount position, const CMPIValue* given, CMPIType type) {
  Value& element = elementAt(content, position);
  Value value = fromCmpi(call, given, type);
  if (value.isNull()) {
    value = Value::null(content.elementType);
  }
  if (value.type() != content.elementType) {
    throw CallFailure{CMPI_RC_ERR_TYPE_MISMATCH};
  }
  element = std::move(value);
}

}  // namespace

CMPIArrayFT* ObjectTraits<CMPIArray>::table() {
  static CMPIArrayFT functions = objectTable<CMPIArray>([](CMPIArrayFT& table) {
    bind<&CMPIArrayFT::getSize>(table, "getSize", [](ArrayContent& content, Call&) {
      return static_cast<CMPICount>(content.elements.size());
    });
    bind<&CMPIArrayFT::getSimpleType>(
        table, "getSimpleType", [](ArrayContent& content, Call&) { return content.elementType; });
    bind<&CMPIArrayFT::getElementAt>(
        table, "getElementAt", [](ArrayContent& content, Call& call, CMPICount position) {
          return toCmpi(call, elementAt(content, position));
        });
    bind<&CMPIArrayFT::setElementAt>(table, "setElementAt", setElementAt);
  });
  return &functions;
}

}  // namespace tvp::host
