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

}  // namespace bench

#endif
