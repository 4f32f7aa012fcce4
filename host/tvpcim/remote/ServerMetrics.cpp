// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/ServerMetrics.h"

#include <array>
#include <cstdio>

namespace tvp::host::tvpcim {
namespace {

const char* nameOf(cimxml::Asked asked) {
  return asked == cimxml::Asked::Operation ? "operation" : asked == cimxml::Asked::Page ? "page" : "none";
}

std::string secondsText(double seconds) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.6f", seconds);
  return text.data();
}

}  // namespace

void addServerMetrics(const cimxml::ServerCounts& counts, MetricsText& metrics) {
  std::vector<MetricSample> requests;
  std::vector<MetricSample> times;
  for (const auto& [key, sum] : counts.requests) {
    const MetricSample::Labels labels = {
        {"asked", nameOf(key.first)}, {"status", std::to_string(key.second)}};
    requests.emplace_back(labels, sum.count);
    times.emplace_back(labels, secondsText(sum.time.count()));
  }
  metrics.counter(
      "tvp_server_requests_total", "Requests by what they asked for and the HTTP status of the answer.",
      requests);
  metrics.counter(
      "tvp_server_request_seconds_total",
      "Time from the first byte of requests to the last of their answers.", times);
  const auto one = [](std::uint64_t value) { return std::vector<MetricSample>{{{}, value}}; };
  metrics.counter(
      "tvp_server_failed_operations_total", "Operations answered with a CIM status that is not success.",
      one(counts.failedOperations));
  metrics.counter(
      "tvp_server_lost_answers_total", "Answers that their clients did not take.", one(counts.lostAnswers));
  metrics.counter(
      "tvp_server_refused_connections_total", "Connections beyond the limit.",
      one(counts.refusedConnections));
  metrics.gauge("tvp_server_connections", "Connections that are open.", one(counts.connections));
}

}  // namespace tvp::host::tvpcim
