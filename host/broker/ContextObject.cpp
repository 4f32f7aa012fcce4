// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/schema/Names.h"

namespace tvp::host {
namespace {

/** A string without a text, of an object manager that keeps the text as the handle. */
CMPIString& nobody() {
  static CMPIStringFT table = [] {
    CMPIStringFT functions{};
    functions.ftVersion = CMPIVersion200;
    functions.release = [](CMPIString*) { return CMPIStatus{CMPI_RC_OK, nullptr}; };
    functions.getCharPtr = [](const CMPIString* string, CMPIStatus* status) {
      if (status != nullptr) {
        *status = CMPIStatus{CMPI_RC_OK, nullptr};
      }
      return static_cast<const char*>(string->hdl);
    };
    return functions;
  }();
  static CMPIString string{nullptr, &table};
  return string;
}

/** COMPAT: an object manager that passes a string with a null character pointer when nobody is authenticated.
 */
CMPIData
withNullPrincipal(CMPIData data, const ContextContent& content, const Call& call, const std::string& name) {
  if (content.nullPrincipal && equalNames(name, CMPIPrincipal)) {
    data.type = CMPI_string;
    data.state = CMPI_goodValue;
    data.value.string = call.broker().options().manager == ObjectManager::Sfcb
                            ? &nobody()
                            : call.make<CMPIString>(StringContent{std::nullopt});
  }
  return data;
}

}  // namespace

CMPIContextFT* ObjectTraits<CMPIContext>::table() {
  static CMPIContextFT functions = objectTable<CMPIContext>([](CMPIContextFT& table) {
    bind<&CMPIContextFT::getEntry>(
        table, "getEntry", [](ContextContent& content, Call& call, const char* name) {
          return withNullPrincipal(valueNamed(call, content.entries, name), content, call, textOf(name));
        });
    bind<&CMPIContextFT::getEntryAt>(
        table, "getEntryAt", [](ContextContent& content, Call& call, CMPICount position, CMPIString** name) {
          const CMPIData data = valueAt(call, content.entries, position, name);
          return withNullPrincipal(data, content, call, content.entries[position].name);
        });
    bind<&CMPIContextFT::getEntryCount>(table, "getEntryCount", [](ContextContent& content, Call&) {
      return static_cast<CMPICount>(content.entries.size());
    });
    bind<&CMPIContextFT::addEntry>(
        table, "addEntry",
        [](ContextContent& content, Call& call, const char* name, const CMPIValue* given, CMPIType type) {
          setValue(content.entries, required(name), fromCmpi(call, given, type));
        });
  });
  return &functions;
}

}  // namespace tvp::host
