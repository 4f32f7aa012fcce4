// SPDX-License-Identifier: Apache-2.0
// The text format of Prometheus: each metric is described once, and any name is a label.
#include "host/tvpcim/storage/MetricsText.h"

#include "host/tvpcim/remote/ServerMetrics.h"

#include <gtest/gtest.h>

namespace tvp::test {
namespace {

using host::cimxml::Asked;
using host::tvpcim::MetricsText;

TEST(MetricsText, DescribesAMetricOnceAndEscapesItsLabels) {
  MetricsText metrics;
  metrics.gauge(
      "a", "One.", {{{{"name", "a\"b\\c\nd\xFF"}, {"n", "1"}}, std::uint64_t{18446744073709551615U}}});
  metrics.gauge("nothing", "None.", {});
  metrics.counter("b_total", "Two.", {{{}, std::uint64_t{0}}, {{{"x", ""}}, std::string("1.5")}});
  EXPECT_EQ(
      metrics.text(), "# HELP a One.\n# TYPE a gauge\n"
                      "a{name=\"a\\\"b\\\\c\\nd\\\\xFF\",n=\"1\"} 18446744073709551615\n"
                      "# HELP b_total Two.\n# TYPE b_total counter\nb_total 0\nb_total{x=\"\"} 1.5\n");
}

TEST(ServerMetrics, CountRequestsByWhatTheyAskedFor) {
  host::cimxml::ServerCounts counts;
  counts.requests[{Asked::Page, 404}] = {3, std::chrono::duration<double>(0.25)};
  counts.connections = 2;
  MetricsText metrics;
  addServerMetrics(counts, metrics);
  for (const char* line :
       {"tvp_server_requests_total{asked=\"page\",status=\"404\"} 3\n",
        "tvp_server_request_seconds_total{asked=\"page\",status=\"404\"} 0.250000\n",
        "# TYPE tvp_server_connections gauge\ntvp_server_connections 2\n"}) {
    EXPECT_NE(metrics.text().find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace tvp::test
