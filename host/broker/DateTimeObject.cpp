// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {

CMPIDateTimeFT* ObjectTraits<CMPIDateTime>::table() {
  static CMPIDateTimeFT functions = objectTable<CMPIDateTime>([](CMPIDateTimeFT& table) {
    bind<&CMPIDateTimeFT::getBinaryFormat>(table, "getBinaryFormat", [](DateTime& content, Call&) {
      return static_cast<CMPIUint64>(content.microseconds());
    });
    bind<&CMPIDateTimeFT::getStringFormat>(table, "getStringFormat", [](DateTime& content, Call& call) {
      return call.makeString(content.text());
    });
    bind<&CMPIDateTimeFT::isInterval>(table, "isInterval", [](DateTime& content, Call&) {
      return static_cast<CMPIBoolean>(content.isInterval());
    });
  });
  return &functions;
}

}  // namespace tvp::host
