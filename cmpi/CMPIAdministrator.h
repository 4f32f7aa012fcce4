// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIADMINISTRATOR_H
#define CMPI_CMPIADMINISTRATOR_H

#include "cmpidt.h"

#include <string>

// The check that only administrators make changes.
namespace tvp::cim::adap::cmpi {

/** Who makes a request. */
struct RequestOrigin {
  std::string user;  ///< empty for a principal without a name
  std::string host;  ///< two backslashes and the name of this host
};

/**
 * Reads the principal of a request.
 * @return false, with CMPI_RC_ERR_FAILED and the reason in the status, if the context does not say
 */
bool readOrigin(const CMPIContext* ctx, const CMPIBroker* broker, RequestOrigin& origin, CMPIStatus* status);

/**
 * Whether the user may make changes: administrators (see CMPIAdapter::VerifyUserRole) and a principal without
 * a name.
 * @return false with CMPI_RC_ERR_ACCESS_DENIED and the user's name in the status
 */
bool admitOrigin(const RequestOrigin& origin, const CMPIBroker* broker, CMPIStatus* status);

}  // namespace tvp::cim::adap::cmpi

#endif
