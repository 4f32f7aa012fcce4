// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"
#include "host/schema/Names.h"

namespace tvp::host {
namespace {

/** A principal without a text is a string whose character pointer is null, as one object manager has it. */
CMPIData withNullPrincipal(
    CMPIData data, const ContextContent& content, BrokerState& broker, const std::string& name) {
  if (content.nullPrincipal && equalNames(name, CMPIPrincipal)) {
    data.type = CMPI_string;
    data.state = CMPI_goodValue;
    data.value.string = broker.make<CMPIString>(StringContent{std::nullopt});
  }
  return data;
}

CMPIData getEntry(const CMPIContext* context, const char* name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      context, "CMPIContext.getEntry", status,
      [=](ContextContent& content, BrokerState& broker, CMPIrc& code) {
        const CMPIData data = valueNamed(broker, content.entries, name, code);
        return withNullPrincipal(data, content, broker, textOf(name));
      });
}

CMPIData getEntryAt(const CMPIContext* context, CMPICount position, CMPIString** name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      context, "CMPIContext.getEntryAt", status,
      [=](ContextContent& content, BrokerState& broker, CMPIrc& code) -> CMPIData {
        const CMPIData data = valueAt(broker, content.entries, position, name, code);
        return code != CMPI_RC_OK ? data
                                  : withNullPrincipal(data, content, broker, content.entries[position].name);
      });
}

CMPICount getEntryCount(const CMPIContext* context, CMPIStatus* status) {
  return valueCall<CMPICount>(
      context, "CMPIContext.getEntryCount", status, [](ContextContent& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPICount>(content.entries.size());
      });
}

CMPIStatus
addEntry(const CMPIContext* context, const char* name, const CMPIValue* given, const CMPIType type) {
  return statusCall(context, "CMPIContext.addEntry", [=](ContextContent& content, BrokerState&) -> CMPIrc {
    if (name == nullptr) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    Value value;
    const CMPIrc code = fromCmpi(given, type, value);
    if (code == CMPI_RC_OK) {
      setValue(content.entries, name, std::move(value));
    }
    return code;
  });
}

}  // namespace

template <>
CMPIContextFT* functionTable<CMPIContext>() {
  static CMPIContextFT table = {CMPIVersion200,
                                releaseObject<CMPIContext>,
                                cloneObject<CMPIContext>,
                                getEntry,
                                getEntryAt,
                                getEntryCount,
                                addEntry};
  return &table;
}

}  // namespace tvp::host
