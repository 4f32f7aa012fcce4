// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractMethodProviderPlugin.h"

#include "CIM/Framework/CIMException.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::fwf {

unsigned int AbstractMethodProviderPlugin::invokeMethod(
    const CIMObjectPath&, const std::string&, const CIMMethodParam&, CIMMethodParam&) {
  KvsTrace("Inside AbstractMethodProviderPlugin::invokeMethod()");
  return FW_RC_NOT_SUPPORTED;
}

}  // namespace tvp::cim::fwf
