// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_HOSTS_TINYHOST_H
#define TESTS_HOSTS_TINYHOST_H

#include "cmpift.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * When set, makes the functions that create objects fail (1) or work again (0); requests in between must be
 * refused.
 */
extern void (*tinyFail)(CMPIBrokerEncFT* makers, int on);

/**
 * The least of an object manager that a provider can live in. Nothing is checked and nothing is freed: the
 * point is the process around it. It needs no C++ library, which a host in C does not have.
 *
 * Loads the provider from argv[1], after the plugin argv[2] when there is one; enumerates, creates a pool,
 * waits for its event, cleans up and unloads. @return the exit status of the host.
 */
int tinyHostLife(int argc, char** argv);

#ifdef __cplusplus
}
#endif

#endif
