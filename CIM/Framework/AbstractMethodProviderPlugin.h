// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTMETHODPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTMETHODPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractProviderPlugin.h"

namespace tvp::cim::fwf {

/**
 * A plugin that serves extrinsic methods. Classes that serve both inherit it virtually beside
 * AbstractInstanceProviderPlugin, so that they contain a single AbstractProviderPlugin.
 */
class AbstractMethodProviderPlugin : public virtual AbstractProviderPlugin {
public:
  /** Implements no method: traces and returns FW_RC_NOT_SUPPORTED. */
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in,
      CIMMethodParam& out) override;
};

}  // namespace tvp::cim::fwf

#endif
