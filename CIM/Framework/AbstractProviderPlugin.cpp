#include "CIM/Framework/AbstractProviderPlugin.h"

namespace tvp::cim::fwf {

AbstractProviderPlugin::~AbstractProviderPlugin() = default;

}  // namespace tvp::cim::fwf
