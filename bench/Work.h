// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_WORK_H
#define BENCH_WORK_H

#include "bench/Stage.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/** The result of a request, for comparison. */
struct Answer {
  CMPIrc rc = CMPI_RC_OK;
  std::vector<tvp::host::Instance> instances;
  std::vector<tvp::host::ObjectPath> paths;
  std::vector<tvp::host::Value> data;
  tvp::host::Arguments output;

  bool operator==(const Answer& other) const;
};

/** One kind of request. */
struct Work {
  std::string what;
  /** Makes one request. @param answer filled if not null @return seconds that the provider's function took */
  std::function<double(Subject& subject, Answer* answer)> run;
};

/** The requests that are measured on a scenario. */
std::vector<Work> worksFor(const Scenario& scenario);

/** Enumerates the instances of a class. */
Work enumeration(const std::string& what, const std::string& className);

/** A change, and the round of the listener that delivers its event; only the round is timed. */
Work eventDelivery();

/**
 * Checks that both subjects do the same: the same broker calls in the same order, with the same result.
 * @throws std::runtime_error that names the first difference
 */
void requireSame(const Work& work, Subject& product, Subject& baseline);

/**
 * How often a request of the provider checks for an absent log, which is the number of lines it would write.
 */
std::uint64_t looksOf(const Work& work, Subject& counter);

}  // namespace bench

#endif
