// SPDX-License-Identifier: Apache-2.0
#include "bench/Measurements.h"
#include "bench/Median.h"
#include "bench/Work.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <vector>

namespace bench {

namespace {

/** Collects the repetitions of every benchmark. */
class Collector : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration && run.iterations != 0) {
        m_microseconds[run.run_name.function_name].push_back(
            run.real_accumulated_time * 1e6 / static_cast<double>(run.iterations));
      }
    }
  }
  double medianOf(const std::string& name) const {
    const auto found = m_microseconds.find(name);
    return found == m_microseconds.end() ? 0.0 : median(found->second);
  }

private:
  std::map<std::string, std::vector<double>> m_microseconds;
};

std::string nameOf(const Work& work, bool log, bool isBaseline) {
  return work.what + (log ? " (log)" : "") + (isBaseline ? " baseline" : " product");
}

void add(const Work& work, Subject& subject, bool log, bool isBaseline) {
  const auto loop = [&work, &subject, log](benchmark::State& state) {
    switchLog(log);
    subject.broker().resetCalls();
    for ([[maybe_unused]] auto iteration : state) {
      state.SetIterationTime(work.run(subject, nullptr));
      keepLogSmall();
    }
  };
  benchmark::RegisterBenchmark(nameOf(work, log, isBaseline).c_str(), loop)->UseManualTime();
}

}  // namespace

void measureTimes(const std::string& program, const Scenario& scenario, bool events) {
  Subject product(events ? Subject::Kind::PollingProduct : Subject::Kind::Product);
  Subject baseline(Subject::Kind::Baseline);
  const std::vector<Work> works = events ? std::vector<Work>{eventDelivery()} : worksFor(scenario);
  if (events) {
    product.subscribe();
    baseline.subscribe();
  }
  switchLog(false);
  for (const Work& work : works) {
    requireSame(work, product, baseline);
    for (const bool log : {false, true}) {
      add(work, product, log, false);
      add(work, baseline, log, true);
    }
  }
  std::vector<std::string> arguments = {
      program, "--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=7",
      "--benchmark_min_time=0.02"};
  std::vector<char*> pointers;
  pointers.reserve(arguments.size());
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  for (const Work& work : works) {
    for (const bool log : {false, true}) {
      std::printf(
          "%s\t%s\t%.3f\t%.3f\n", work.what.c_str(), log ? "present" : "absent",
          collector.medianOf(nameOf(work, log, false)), collector.medianOf(nameOf(work, log, true)));
    }
  }
}

}  // namespace bench
