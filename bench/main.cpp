// SPDX-License-Identifier: Apache-2.0
#include "bench/Measurements.h"
#include "bench/Tables.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

bench::Subject::Kind kindOf(const std::string& name) {
  return name == "baseline" ? bench::Subject::Kind::Baseline : bench::Subject::Kind::Product;
}

/** What a child process does: MEASUREMENT SCENARIO [SUBJECT]. */
void measure(
    const std::string& program, const std::string& measurement, const bench::Scenario& scenario,
    const std::string& subject) {
  bench::requireScratch();
  bench::switchLog(false);  // an earlier one may have left a log, even a full one
  if (measurement == "prepare") {
    bench::prepare(scenario);
  } else if (measurement == "times" || measurement == "events") {
    bench::measureTimes(program, scenario, measurement == "events");
  } else if (measurement == "threads") {
    bench::measureThreads(scenario);
  } else if (measurement == "peak") {
    bench::measurePeak(kindOf(subject), scenario, 1);
  } else if (measurement == "peak-of-threads") {
    bench::measurePeak(kindOf(subject), scenario, 8);
  } else if (measurement == "growth") {
    bench::measureGrowth(kindOf(subject), scenario);
  } else if (measurement == "first") {
    bench::measureFirstAnswer(kindOf(subject), scenario);
  } else if (measurement == "server") {
    bench::measureServer(scenario);
  } else if (measurement == "server-cores") {
    bench::measureServerCores(scenario, subject == "one");
  } else if (measurement == "server-growth") {
    bench::measureServerGrowth(scenario);
  } else {
    throw std::invalid_argument("unknown measurement '" + measurement + "'");
  }
}

}  // namespace

/** Without arguments: every measurement, each in a child process of its own, and the tables. */
int main(int argc, char** argv) {
  int result = EXIT_SUCCESS;
  try {
    if (argc >= 3) {
      measure(argv[0], argv[1], bench::Scenario::named(argv[2]), argc > 3 ? argv[3] : "");
    } else {
      bench::printTables();
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tvp_bench: %s\n", failure.what());
    result = EXIT_FAILURE;
  }
  // The provider stays in the process, and its listener may be sleeping, so nothing is unloaded.
  std::fflush(stdout);
  std::_Exit(result);
}
