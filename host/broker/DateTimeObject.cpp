// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

CMPIUint64 getBinaryFormat(const CMPIDateTime* dateTime, CMPIStatus* status) {
  return valueCall<CMPIUint64>(
      dateTime, "CMPIDateTime.getBinaryFormat", status, [](DateTime& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPIUint64>(content.microseconds());
      });
}

CMPIString* getStringFormat(const CMPIDateTime* dateTime, CMPIStatus* status) {
  return valueCall<CMPIString*>(
      dateTime, "CMPIDateTime.getStringFormat", status,
      [](DateTime& content, BrokerState& broker, CMPIrc&) { return makeString(broker, content.text()); });
}

CMPIBoolean isInterval(const CMPIDateTime* dateTime, CMPIStatus* status) {
  return valueCall<CMPIBoolean>(
      dateTime, "CMPIDateTime.isInterval", status, [](DateTime& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPIBoolean>(content.isInterval());
      });
}

}  // namespace

template <>
CMPIDateTimeFT* functionTable<CMPIDateTime>() {
  static CMPIDateTimeFT table = {CMPIVersion200,
                                 releaseObject<CMPIDateTime>,
                                 cloneObject<CMPIDateTime>,
                                 getBinaryFormat,
                                 getStringFormat,
                                 isInterval};
  return &table;
}

}  // namespace tvp::host
