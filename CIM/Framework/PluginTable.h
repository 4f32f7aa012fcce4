// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_PLUGINTABLE_H
#define CIM_FRAMEWORK_PLUGINTABLE_H

#include "CIM/Framework/AbstractProviderPlugin.h"

#include <cstddef>

namespace tvp::cim::fwf {

/** A CIM class that is served: its name in lower case, and how its plugin is created. */
struct PluginTableRow {
  const char* key;
  AbstractProviderPlugin* (*create)();  ///< a new plugin, owned by the caller
};

/** The rows, in the order in which their plugins are created. */
struct PluginTable {
  const PluginTableRow* rows;
  std::size_t count;

  const PluginTableRow* begin() const { return rows; }
  const PluginTableRow* end() const { return rows + count; }
};

/**
 * The CIM classes of the program. Declared here and defined with the concrete plugins, in the layer above the
 * framework: a new CIM class takes one row there and one source.
 */
PluginTable pluginTable();

}  // namespace tvp::cim::fwf

#endif
