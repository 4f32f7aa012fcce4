// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

const char* getCharPtr(const CMPIString* string, CMPIStatus* status) {
  return valueCall<const char*>(
      string, "CMPIString.getCharPtr", status,
      [](StringContent& content, BrokerState&, CMPIrc&) -> const char* {
        return content.text ? content.text->c_str() : nullptr;
      });
}

}  // namespace

template <>
CMPIStringFT* functionTable<CMPIString>() {
  static CMPIStringFT table = {
      CMPIVersion200, releaseObject<CMPIString>, cloneObject<CMPIString>, getCharPtr};
  return &table;
}

}  // namespace tvp::host
