// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIAdapterOperation.h"

#include "cmpimacs.h"
#include "oslib/KVSMethodTrace.h"

#include <string>

namespace tvp::cim::adap::cmpi {

CMPIString* newMessage(const CMPIBroker* broker, const char* text) noexcept {
  try {
    return broker == nullptr ? nullptr : CMNewString(broker, text, nullptr);
  } catch (...) {
    return nullptr;  // an object manager in C++ may run out of memory; the status arrives without a message
  }
}

void setStatus(CMPIStatus* status, CMPIrc rc, const CMPIBroker* broker, const char* text) {
  status->rc = rc;
  status->msg = newMessage(broker, text);
}

void logAndFail(CMPIStatus* status, const CMPIBroker* broker, const char* text) {
  KvsLogMsg(KVS_LOG_ERROR, "%s", text);
  setStatus(status, CMPI_RC_ERR_FAILED, broker, text);
}

void throwInternalError(const char* logText, const char* message) {
  KvsLogMsg(KVS_LOG_ERROR, "%s", logText);
  throw fwf::CIMException(fwf::FW_RC_INTERNAL_ERROR, std::string(message));
}

void keepRefusal(const CMPIStatus& answer, const CMPIBroker* broker, CMPIStatus* status) {
  if (answer.rc == CMPI_RC_OK || status->rc != CMPI_RC_OK) {
    return;
  }
  *status = answer;
  if (status->msg == nullptr) {
    status->msg = newMessage(broker, "The object manager did not accept the result");
  }
}

fwf::FrameworkFacade& requireFacade() {
  fwf::FrameworkFacade* facade = fwf::FrameworkFacade::getInstance();
  if (facade == nullptr) {
    throwInternalError(
        "Failed to create FrameworkFacade instance", "Failed to Create FrameworkFacade Instance");
  }
  return *facade;
}

void traceAdapter(const char* direction, const char* name) {
  fwf::traceParts({direction, " CMPIAdapter::", name});
}

void logRefusalReason(const fwf::RefusalReason& reason, const CMPIBroker* broker) noexcept {
  if (*reason.text() == '\0' || broker == nullptr || broker->eft == nullptr ||
      broker->eft->logMessage == nullptr) {
    return;
  }
  constexpr int ERROR_SEVERITY = 4;  // after 1 debug, 2 information and 3 warning
  try {
    // Failures do not matter: the reason is in the provider's own log too.
    broker->eft->logMessage(broker, ERROR_SEVERITY, "TVP", reason.text(), nullptr);
  } catch (...) {
  }
}

void setStatusOf(const fwf::CIMException& exception, const CMPIBroker* broker, CMPIStatus* status) {
  KvsLogMsg(KVS_LOG_ERROR, "%s", exception.message().c_str());
  setStatus(
      status, CMPIHelper::ConvertFrameWorkErrorCodeToCmpiErrorCode(exception.getErrCode()), broker,
      exception.message().c_str());
}

}  // namespace tvp::cim::adap::cmpi
