// SPDX-License-Identifier: Apache-2.0
#include "bench/Tables.h"

#include "bench/Median.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace {

using Row = std::vector<std::string>;

/** Runs measurements in child processes; a scenario is prepared when it is first used. */
class Runner {
public:
  std::vector<Row>
  run(const std::string& measurement, const std::string& scenario, const std::string& subject = {}) {
    const std::filesystem::path directory = m_scratch.path() / scenario;
    const bool isNew = std::filesystem::create_directory(directory);
    setenv("VOLTVK_STATE", (directory / "state.db").c_str(), 1);
    setenv("TVP_TEST_ROOT", directory.c_str(), 1);
    if (isNew) {
      child("prepare " + scenario);
    }
    return child(measurement + " " + scenario + " " + subject);
  }
  double number(
      const std::string& measurement, const std::string& scenario, const std::string& subject,
      std::size_t column = 0) {
    return std::stod(run(measurement, scenario, subject).at(0).at(column));
  }

private:
  std::vector<Row> child(const std::string& arguments) {
    const std::string command = "'" + m_program + "' " + arguments;
    std::FILE* output = popen(command.c_str(), "r");
    if (output == nullptr) {
      throw std::runtime_error("could not be started: " + command);
    }
    std::vector<Row> rows;
    std::array<char, 512> line{};
    while (std::fgets(line.data(), line.size(), output) != nullptr) {
      std::istringstream fields(line.data());
      Row row;
      for (std::string field; std::getline(fields, field, '\t');) {
        row.push_back(field);
      }
      rows.push_back(std::move(row));
    }
    if (pclose(output) != 0) {
      throw std::runtime_error("failed: " + command);
    }
    return rows;
  }

  tvp::test::TemporaryDirectory m_scratch;  ///< for states and logs
  const std::string m_program = std::filesystem::read_symlink("/proc/self/exe").string();
};

/**
 * Instances accumulate: that of the first drive has the properties of one drive, that of the last those of
 * all.
 */
double propertiesOf(std::size_t drives) {
  constexpr std::size_t OF_ONE_DRIVE = 15;
  const std::size_t shares = drives * (drives + 1) / 2;
  return static_cast<double>(OF_ONE_DRIVE * shares);
}

/** Microseconds of the provider, of the floor and of the baseline. */
using Microseconds = std::array<double, 3>;
using MicrosecondsOfRequest = std::map<std::string, Microseconds>;

void printCostPerProperty(const MicrosecondsOfRequest& absentLog) {
  std::printf("\n| EnumInstances, log absent | properties | provider, ns each | floor, ns each | baseline, "
              "ns each |\n"
              "|---|---:|---:|---:|---:|\n");
  for (const std::size_t drives : {8U, 32U, 64U, 255U}) {
    const std::string what = std::to_string(drives) + " drives";
    const double properties = propertiesOf(drives);
    std::printf("| %s | %.0f |", what.c_str(), properties);
    for (const double microseconds : absentLog.at("EnumInstances, " + what)) {
      std::printf(" %.0f |", microseconds * 1000 / properties);
    }
    std::printf("\n");
  }
}

MicrosecondsOfRequest printTimes(Runner& runner) {
  MicrosecondsOfRequest absentLog;
  std::printf("| request | log | provider, us | floor, us | baseline, us | to the floor | to the baseline |\n"
              "|---|---|---:|---:|---:|---:|---:|\n");
  const std::array<std::array<const char*, 2>, 10> measurements = {
      {{"times", "drives-1"},
       {"times", "drives-8"},
       {"times", "drives-32"},
       {"times", "drives-64"},
       {"times", "drives-255"},
       {"times", "pools-8"},
       {"times", "pools-32"},
       {"times", "volumes-8"},
       {"times", "volumes-32"},
       {"events", "pools-8"}}};
  for (const auto& [measurement, scenario] : measurements) {
    for (const Row& row : runner.run(measurement, scenario)) {
      const Microseconds times = {std::stod(row.at(2)), std::stod(row.at(3)), std::stod(row.at(4))};
      const auto& [product, floor, baseline] = times;
      std::printf(
          "| %s | %s | %.1f | %.1f | %.1f | %.2f | %.2f |\n", row.at(0).c_str(), row.at(1).c_str(), product,
          floor, baseline, product / floor, product / baseline);
      std::fflush(stdout);
      if (row.at(1) == "absent") {
        absentLog[row.at(0)] = times;
      }
    }
  }
  return absentLog;
}

void printFirstAnswer(Runner& runner) {
  constexpr int REPETITIONS = 15;
  std::vector<double> product;
  std::vector<double> baseline;
  for (int i = 0; i < REPETITIONS; ++i) {
    product.push_back(runner.number("first", "drives-8", "product"));
    baseline.push_back(runner.number("first", "drives-8", "baseline"));
  }
  const double productMedian = median(product);
  const double baselineMedian = median(baseline);
  std::printf(
      "| load to first answer, 8 drives | absent | %.1f | | %.1f | | %.2f |\n", productMedian, baselineMedian,
      productMedian / baselineMedian);
}

void printThreads(Runner& runner) {
  std::printf(
      "\n| threads, EnumInstances of 8 drives | log | provider, requests/s | scaling | baseline, requests/s "
      "| scaling |\n|---:|---|---:|---:|---:|---:|\n");
  std::map<std::string, std::array<double, 2>> one;
  for (const Row& row : runner.run("threads", "drives-8")) {
    const std::array<double, 2> rates = {std::stod(row.at(2)), std::stod(row.at(3))};
    const std::array<double, 2>& single = one.emplace(row.at(1), rates).first->second;
    std::printf(
        "| %s | %s | %.0f | %.2f | %.0f | %.2f |\n", row.at(0).c_str(), row.at(1).c_str(), rates[0],
        rates[0] / single[0], rates[1], rates[1] / single[1]);
  }
}

void printMemory(Runner& runner) {
  std::printf("\n| peak memory of the process | provider, KiB | baseline, KiB |\n|---|---:|---:|\n");
  const auto print = [&runner](const char* what, const char* measurement, const char* scenario) {
    std::printf(
        "| %s | %.0f | %.0f |\n", what, runner.number(measurement, scenario, "product"),
        runner.number(measurement, scenario, "baseline"));
  };
  for (const char* scenario :
       {"drives-1", "drives-8", "drives-32", "drives-64", "drives-255", "pools-8", "pools-32", "volumes-8",
        "volumes-32"}) {
    print(scenario, "peak", scenario);
  }
  print("drives-255, eight threads at once", "peak-of-threads", "drives-255");
  std::printf(
      "\n| resident memory, KiB | after 1,000 requests | after 100,000 | growth |\n|---|---:|---:|---:|\n");
  for (const auto& [name, subject] : {std::pair{"provider", "product"}, std::pair{"baseline", "baseline"}}) {
    const Row row = runner.run("growth", "drives-8", subject).at(0);
    std::printf(
        "| %s | %s | %ld | %ld |\n", name, row.at(0).c_str(), std::stol(row.at(1)),
        std::stol(row.at(1)) - std::stol(row.at(0)));
  }
}

/** One after the other, since what else the machine does changes faster than one of them takes. */
void printServerCores(Runner& runner) {
  constexpr std::size_t PAIRS = 7;
  std::vector<std::array<double, 3>> pairs;
  while (pairs.size() < PAIRS) {
    const double one = runner.number("server-cores", "drives-8", "one");
    const double all = runner.number("server-cores", "drives-8", "all");
    pairs.push_back({all / one, one, all});
  }
  std::sort(pairs.begin(), pairs.end());
  const auto& [ratio, one, all] = pairs[PAIRS / 2];
  std::printf(
      "\nEight clients and the server: %.0f requests/s on one core, %.0f on all: %.2f, the median of %.2f to "
      "%.2f\n",
      one, all, ratio, pairs.front()[0], pairs.back()[0]);
}

void printServer(Runner& runner) {
  std::printf(
      "\n| request over HTTP | clients | connection | requests/s | median, us | 99th percentile, us |\n"
      "|---|---:|---|---:|---:|---:|\n");
  for (const char* scenario : {"drives-8", "drives-64", "pools-8"}) {
    for (const Row& row : runner.run("server", scenario)) {
      std::printf(
          "| %s | %s | %s | %s | %s | %ld |\n", row.at(0).c_str(), row.at(1).c_str(), row.at(2).c_str(),
          row.at(3).c_str(), row.at(4).c_str(), std::stol(row.at(5)));
      std::fflush(stdout);
    }
  }
  printServerCores(runner);
  const Row growth = runner.run("server-growth", "drives-8").at(0);
  std::printf(
      "Resident memory with the server: %s KiB after 1,000 requests, %ld KiB after 100,000\n",
      growth.at(0).c_str(), std::stol(growth.at(1)));
}

}  // namespace

void printTables() {
  Runner runner;
  const MicrosecondsOfRequest absentLog = printTimes(runner);
  printFirstAnswer(runner);
  printCostPerProperty(absentLog);
  printThreads(runner);
  printMemory(runner);
  printServer(runner);
}

}  // namespace bench
