// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIMILIFECYCLE_H
#define CMPI_CMPIMILIFECYCLE_H

#include "cmpidt.h"

// How the provider starts with its first interface and ends with its last, and what the exported
// functions share. All functions may be called from any thread.
namespace tvp::cim::adap::cmpi {

inline constexpr char INVALID_PARAMETERS[] = "The input parameters are invalid";

/** The broker that was last passed to a factory; null before the first call. */
const CMPIBroker* entryBroker();

/** A string of that broker; null without one, or if it does not make one, even by throwing. */
CMPIString* newEntryMessage(const char* text) noexcept;

/** Writes "Entering CMPIMI NAME()" or "Exiting CMPIMI NAME()". */
void traceFunction(const char* direction, const char* name);

/**
 * What every factory does: stores broker and context and counts one more interface. The first starts the log
 * and the adapter; whether that succeeded is only in the log, and it is not tried again.
 */
void enterProvider(const CMPIBroker* broker, const CMPIContext* ctx);

/**
 * Counts one interface less and with the last tears the provider down permanently.
 * @param status set to CMPI_RC_OK with a warning if the last call passes no interface or context
 */
void CommonCleanup(const void* mi, const CMPIContext* ctx, CMPIStatus& status);

}  // namespace tvp::cim::adap::cmpi

#endif
