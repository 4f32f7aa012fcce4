// SPDX-License-Identifier: Apache-2.0
// The classes of this program: one of the product, one of the profile classes, and one of its own.
#include "CIM/Framework/PluginTable.h"
#include "support/ScriptedPlugin.h"

namespace tvp::cim::fwf {

PluginTable pluginTable() {
  static const PluginTableRow rows[] = {
      {"tvp_virtualvolume", []() -> AbstractProviderPlugin* { return new test::ScriptedPlugin(); }},
      {"tvp_registeredprofile", []() -> AbstractProviderPlugin* { return new test::ScriptedPlugin(); }},
      {"test_extra", []() -> AbstractProviderPlugin* { return new test::ScriptedPlugin(); }}};
  return {rows, 3};
}

}  // namespace tvp::cim::fwf
