// SPDX-License-Identifier: Apache-2.0
#include "bench/Measurements.h"
#include "bench/Median.h"
#include "bench/Work.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
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

/** What a benchmark runs; the floor is the baseline with the log lines of the provider. */
enum class Column { Product, Floor, Baseline };
constexpr std::array COLUMNS = {Column::Product, Column::Floor, Column::Baseline};

std::string nameOf(const Work& work, bool log, Column column) {
  return work.what + (log ? " (log) " : " ") + std::to_string(static_cast<int>(column));
}

/** @param lines log lines that are added to the subject's own */
void add(const std::string& name, const Work& work, Subject& subject, bool log, std::uint64_t lines) {
  const auto loop = [&work, &subject, log, lines](benchmark::State& state) {
    switchLog(log);
    subject.addLogLines(lines);
    subject.broker().resetCalls();
    for ([[maybe_unused]] auto iteration : state) {
      state.SetIterationTime(work.run(subject, nullptr));
      keepLogSmall();
    }
  };
#ifdef __clang_analyzer__  // it takes the benchmark, which the library owns, for a leak
  static_cast<void>(name);
  static_cast<void>(loop);
#else
  benchmark::RegisterBenchmark(name.c_str(), loop)->UseManualTime();
#endif
}

/** Whether the log is present; a request in a large scenario writes more lines than fit in a log. */
std::vector<bool> logStates(const Scenario& scenario) {
  constexpr std::size_t LARGEST_WITH_LOG = 64;
  return scenario.count > LARGEST_WITH_LOG ? std::vector<bool>{false} : std::vector<bool>{false, true};
}

void runBenchmarks(const std::string& program, Collector& collector) {
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
  benchmark::RunSpecifiedBenchmarks(&collector);
}

}  // namespace

void measureTimes(const std::string& program, const Scenario& scenario, bool events) {
  Subject counter(Subject::Kind::PollingProduct);
  std::unique_ptr<Subject> released;
  Subject baseline(Subject::Kind::Baseline);
  const std::vector<Work> works = events ? std::vector<Work>{eventDelivery()} : worksFor(scenario);
  if (events) {
    counter.subscribe();
    baseline.subscribe();
  } else {
    released = std::make_unique<Subject>(Subject::Kind::Product);
  }
  Subject& product = events ? counter : *released;
  switchLog(false);
  for (const Work& work : works) {
    requireSame(work, product, baseline);
    const std::uint64_t lines = looksOf(work, counter);
    for (const bool log : logStates(scenario)) {
      add(nameOf(work, log, Column::Product), work, product, log, 0);
      add(nameOf(work, log, Column::Floor), work, baseline, log, lines);
      add(nameOf(work, log, Column::Baseline), work, baseline, log, 0);
    }
  }
  Collector collector;
  runBenchmarks(program, collector);
  for (const Work& work : works) {
    for (const bool log : logStates(scenario)) {
      std::printf("%s\t%s", work.what.c_str(), log ? "present" : "absent");
      for (const Column column : COLUMNS) {
        std::printf("\t%.3f", collector.medianOf(nameOf(work, log, column)));
      }
      std::printf("\n");
    }
  }
}

}  // namespace bench
