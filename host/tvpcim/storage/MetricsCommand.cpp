// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/storage/StorageMetrics.h"

namespace tvp::host::tvpcim {
namespace {

void printMetrics(Tool& tool) {
  MetricsText metrics;
  try {
    const Overview overview = readOverview(tool.inventory());
    addStorageMetrics(overview, metrics);
    addFindingMetrics(HealthReport::of(tool), metrics);
    if (!overview.complete) {
      tool.notice("the counters of volumes and the use of drives are for administrators, and left out");
    }
  } catch (const OperationError&) {
    metrics = {};
    addStorageFailure(metrics);  // whoever collects what is printed learns of it too
    tool.print(metrics.text());
    throw;
  }
  tool.print(metrics.text());
}

}  // namespace

void addMetricsCommand(CLI::App& app, Tool& tool) {
  addVerb(
      app, tool, "metrics", "Print the metrics of drives, pools and volumes for Prometheus",
      "'tvpcim serve --metrics' offers the same at /metrics, with those of the server.\n"
      "-o changes nothing here: the format is that of Prometheus.",
      [&tool] { printMetrics(tool); });
}

}  // namespace tvp::host::tvpcim
