// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {

CMPIStringFT* ObjectTraits<CMPIString>::table() {
  static CMPIStringFT functions = objectTable<CMPIString>([](CMPIStringFT& table) {
    bind<&CMPIStringFT::getCharPtr>(table, "getCharPtr", [](StringContent& content, Call&) {
      return content.text ? content.text->c_str() : nullptr;
    });
  });
  return &functions;
}

}  // namespace tvp::host
