// SPDX-License-Identifier: Apache-2.0
#include "bench/Measurements.h"
#include "bench/Median.h"
#include "bench/Threads.h"
#include "bench/Work.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <vector>

namespace bench {

namespace {

/** Requests per second made by a number of threads together. */
double rateOf(const Work& work, Subject& subject, unsigned int threads) {
  constexpr std::chrono::milliseconds DURATION(400);
  std::atomic<std::uint64_t> requests{0};
  const auto start = std::chrono::steady_clock::now();
  onThreads(threads, [&] {
    while (std::chrono::steady_clock::now() - start < DURATION) {
      work.run(subject, nullptr);
      ++requests;
    }
  });
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  return static_cast<double>(requests.load()) / elapsed.count();
}

}  // namespace

void measureThreads(const Scenario& scenario) {
  constexpr std::size_t ROUNDS = 5;
  Subject product(Subject::Kind::Product);
  Subject baseline(Subject::Kind::Baseline);
  const Work work = worksFor(scenario).front();
  for (const bool log : {false, true}) {
    for (const unsigned int threads : {1U, 2U, 4U, 8U}) {
      std::vector<double> productRates;
      std::vector<double> baselineRates;
      for (std::size_t round = 0; round < ROUNDS; ++round) {
        switchLog(log);
        productRates.push_back(rateOf(work, product, threads));
        baselineRates.push_back(rateOf(work, baseline, threads));
      }
      std::printf(
          "%u\t%s\t%.1f\t%.1f\n", threads, log ? "present" : "absent", median(productRates),
          median(baselineRates));
    }
  }
}

void measurePeak(Subject::Kind kind, const Scenario& scenario, unsigned int threads) {
  constexpr int REQUESTS = 20;
  Subject subject(kind);
  const Work work = worksFor(scenario).front();
  onThreads(threads, [&] {
    for (int i = 0; i < REQUESTS; ++i) {
      work.run(subject, nullptr);
    }
  });
  std::printf("%ld\n", statusNumber("VmHWM"));
}

void measureGrowth(Subject::Kind kind, const Scenario& scenario) {
  constexpr long FIRST = 1000;
  constexpr long LAST = 100000;
  Subject subject(kind);
  const std::vector<Work> works = worksFor(scenario);
  long early = 0;
  for (long i = 0; i < LAST; ++i) {
    works[static_cast<std::size_t>(i) % works.size()].run(subject, nullptr);
    if (i + 1 == FIRST) {
      early = statusNumber("VmRSS");
    }
  }
  std::printf("%ld\t%ld\n", early, statusNumber("VmRSS"));
}

void measureFirstAnswer(Subject::Kind kind, const Scenario& scenario) {
  const Work work = worksFor(scenario).front();
  const auto start = std::chrono::steady_clock::now();
  Subject subject(kind);
  work.run(subject, nullptr);
  const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
  std::printf("%.1f\n", elapsed.count());
}

}  // namespace bench
