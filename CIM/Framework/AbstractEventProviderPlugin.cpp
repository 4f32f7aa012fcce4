// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractEventProviderPlugin.h"

namespace tvp::cim::fwf {

AbstractEventProviderPlugin::~AbstractEventProviderPlugin() = default;

}  // namespace tvp::cim::fwf
