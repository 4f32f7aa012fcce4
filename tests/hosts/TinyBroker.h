// SPDX-License-Identifier: Apache-2.0
/**
 * The least of an object manager that a provider can live in, in plain C, for the tests of foreign
 * hosts. Nothing is checked and everything lives until tinyBrokerFree: the point is the process
 * around it, not the broker.
 */
#ifndef TESTS_HOSTS_TINYBROKER_H
#define TESTS_HOSTS_TINYBROKER_H

#include "cmpidt.h"
#include "cmpift.h"
#include "cmpimacs.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The broker; one for the process. */
const CMPIBroker* tinyBroker(void);
/** A context whose principal is the empty name. */
CMPIContext* tinyContext(void);
/** An object path without keys. */
CMPIObjectPath* tinyPath(const char* nameSpace, const char* className);
/** A result that counts what it is given. */
CMPIResult* tinyResult(void);
/** Instances returned to a result so far. */
unsigned int tinyResultCount(const CMPIResult* result);
/** Waits until an indication was delivered. @return 1, or 0 when none came within the seconds. */
int tinyWaitForIndication(unsigned int seconds);
/** Frees all objects. */
void tinyBrokerFree(void);

/** When set, switches failures of the broker on (1) and off (0), during which requests must be refused. */
extern void (*tinyFail)(int on);

/**
 * Loads the provider from argv[1], after the plugin argv[2] when there is one; enumerates, creates a
 * pool, waits for its event, cleans up and unloads. @return the exit status of the host.
 */
int tinyHostLife(int argc, char** argv);

#ifdef __cplusplus
}
#endif

#endif
