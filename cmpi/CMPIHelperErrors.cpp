// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "cmpi/CMPIHelper.h"

namespace tvp::cim::adap::cmpi {

CMPIrc CMPIHelper::ConvertFrameWorkErrorCodeToCmpiErrorCode(unsigned int code) {
  constexpr unsigned int FIRST_SHARED = fwf::FW_RC_ACCESS_DENIED;
  constexpr unsigned int LAST_SHARED = fwf::FW_RC_METHOD_NOT_FOUND + 1;
  return code >= FIRST_SHARED && code <= LAST_SHARED ? static_cast<CMPIrc>(code) : CMPI_RC_ERR_FAILED;
}

}  // namespace tvp::cim::adap::cmpi
