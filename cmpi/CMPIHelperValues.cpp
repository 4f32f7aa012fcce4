// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIHelperValues.h"

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"

namespace tvp::cim::adap::cmpi {

void fail(FailureReport report, const CMPIStatus& status) {
  // No request ends on the listener's thread, so nobody else would release it there.
  const CMPIObjectGuard<CMPIString> message(status.msg);
  if (report != nullptr) {
    report(status);
  }
  throw fwf::CIMException(fwf::FW_RC_FAILED, std::string(fwf::OPERATION_FAILED_SUFFIX));
}

void requireOk(const CMPIStatus& status, FailureReport report) {
  if (status.rc != CMPI_RC_OK) {
    fail(report, status);
  }
}

std::string textOf(const CMPIString* text, FailureReport report) {
  if (text == nullptr) {
    fail(report);
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const char* characters = CMGetCharsPtr(text, &rc);
  requireOk(rc, report);
  return characters == nullptr ? std::string() : std::string(characters);
}

}  // namespace tvp::cim::adap::cmpi
