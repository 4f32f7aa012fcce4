// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractProviderPlugin.h"

namespace tvp::cim::fwf {

AbstractProviderPlugin::~AbstractProviderPlugin() = default;

}  // namespace tvp::cim::fwf
