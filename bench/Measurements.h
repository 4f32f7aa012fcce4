// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_MEASUREMENTS_H
#define BENCH_MEASUREMENTS_H

#include "bench/Stage.h"

#include <string>

/**
 * The measurements, each in its own process on a state prepared beforehand. They print rows of tab-separated
 * fields, which the parent puts into its tables.
 */
namespace bench {

/** Rows: request, "absent" or "present", microseconds of the provider, of the floor, of the baseline. */
void measureTimes(const std::string& program, const Scenario& scenario, bool events);

/** Rows: threads, "absent" or "present", requests per second of the provider, of the baseline. */
void measureThreads(const Scenario& scenario);

/** One row: the largest resident size in KiB after a few enumerations on each of a number of threads at once.
 */
void measurePeak(Subject::Kind kind, const Scenario& scenario, unsigned int threads);

/** One row: the resident size in KiB after 1,000 and after 100,000 requests. */
void measureGrowth(Subject::Kind kind, const Scenario& scenario);

/** One row: microseconds from loading the module to the end of its first enumeration. */
void measureFirstAnswer(Subject::Kind kind, const Scenario& scenario);

/**
 * Rows: request, clients, the connection, requests per second, microseconds of the median and of the 99th
 * percentile. The connections are those of a server in the same process, and none.
 */
void measureServer(const Scenario& scenario);

/** One row: requests per second that a server and eight clients manage on all cores, or on one. */
void measureServerCores(const Scenario& scenario, bool one);

/** One row: as measureGrowth, for requests to a server. */
void measureServerGrowth(const Scenario& scenario);

}  // namespace bench

#endif
