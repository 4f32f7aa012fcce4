// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTEVENTPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTEVENTPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractProviderPlugin.h"

namespace tvp::cim::fwf {

/** A plugin that serves events. Every operation is left to the concrete class. */
class AbstractEventProviderPlugin : public virtual AbstractProviderPlugin {
public:
  ~AbstractEventProviderPlugin() override;
};

}  // namespace tvp::cim::fwf

#endif
