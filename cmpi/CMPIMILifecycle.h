// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIMILIFECYCLE_H
#define CMPI_CMPIMILIFECYCLE_H

#include "cmpidt.h"

// How the provider starts with its first interface and ends with its last, and what the exported
// functions share. All functions may be called from any thread.
namespace tvp::cim::adap::cmpi {

inline constexpr char INVALID_PARAMETERS[] = "The input parameters are invalid";

/** The broker that a factory was given last; null before the first. */
const CMPIBroker* entryBroker();

/** A string of that broker; null without one. */
CMPIString* newEntryMessage(const char* text);

/** Writes "Entering CMPIMI NAME()" or "Exiting CMPIMI NAME()". */
void traceFunction(const char* direction, const char* name);

/**
 * What every factory does: remembers broker and context and counts one interface more. The first starts
 * log and adapter; whether that went well is on the log alone, and it is not tried again.
 */
void enterProvider(const CMPIBroker* broker, const CMPIContext* ctx);

/**
 * Counts one interface less and with the last tears the provider down for good.
 * @param status set to CMPI_RC_OK with a warning when the last one comes without interface or context
 */
void CommonCleanup(const void* mi, const CMPIContext* ctx, CMPIStatus& status);

}  // namespace tvp::cim::adap::cmpi

#endif
