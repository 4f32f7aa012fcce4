// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIADAPTEROPERATION_H
#define CMPI_CMPIADAPTEROPERATION_H

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "CIM/Framework/RefusalReason.h"
#include "cmpi/CMPIHelper.h"
#include "cmpidt.h"
#include "oslib/KVSLog.h"

// What the operations of the adapter share: their trace lines and the handling of exceptions.
namespace tvp::cim::adap::cmpi {

/** The message for anything thrown that is not a CIMException. */
inline constexpr char UNKNOWN_ERROR[] = "Failed : Unknown Error";

/** A string of the broker. @return null without a broker, or if it does not make one, even by throwing */
CMPIString* newMessage(const CMPIBroker* broker, const char* text) noexcept;

/** Sets a status with its message. */
void setStatus(CMPIStatus* status, CMPIrc rc, const CMPIBroker* broker, const char* text);

/** Logs a failure at level 2 and sets the status CMPI_RC_ERR_FAILED with the same text. */
void logAndFail(CMPIStatus* status, const CMPIBroker* broker, const char* text);

/** Logs a failure at level 2. @throws CIMException FW_RC_INTERNAL_ERROR with message */
[[noreturn]] void throwInternalError(const char* logText, const char* message);

/**
 * Sets the status to the object manager's refusal of a result, unless it is already an error. A refusal
 * without a message gets one.
 */
void keepRefusal(const CMPIStatus& answer, const CMPIBroker* broker, CMPIStatus* status);

/** The facade. @throws CIMException FW_RC_INTERNAL_ERROR if there is none */
fwf::FrameworkFacade& requireFacade();

/** Writes "Entering CMPIAdapter::NAME" or "Exiting CMPIAdapter::NAME". */
void traceAdapter(const char* direction, const char* name);

/** The status of a caught exception's code and message. */
void setStatusOf(const fwf::CIMException& exception, const CMPIBroker* broker, CMPIStatus* status);

/**
 * Passes the reason of a refusal, if there is one, to the object manager's log: the status and its message
 * have no room for it. Does nothing if the object manager lacks that function.
 */
void logRefusalReason(const fwf::RefusalReason& reason, const CMPIBroker* broker) noexcept;

/**
 * Runs an operation between its two trace lines; the second is written even after an exception, which is
 * turned into a status here. What the storage library refused in the meantime is reported to the object
 * manager's log.
 * @param entry first word of the entry line
 */
template <typename Work>
void runOperation(
    const char* name, const CMPIBroker* broker, CMPIStatus* status, Work&& work,
    const char* entry = "Entering") {
  traceAdapter(entry, name);
  const fwf::RefusalReason reason;
  try {
    work();
  } catch (const fwf::CIMException& exception) {
    setStatusOf(exception, broker, status);
  } catch (...) {
    setStatus(status, CMPI_RC_ERR_FAILED, broker, UNKNOWN_ERROR);
  }
  traceAdapter("Exiting", name);
  logRefusalReason(reason, broker);
}

}  // namespace tvp::cim::adap::cmpi

#endif
