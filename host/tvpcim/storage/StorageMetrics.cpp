// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageMetrics.h"

#include "host/tvpcim/output/Listing.h"
#include "text/Size.h"

#include <map>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

using Labels = MetricSample::Labels;
using Samples = std::vector<MetricSample>;

void addUp(MetricsText& metrics, bool up) {
  metrics.gauge("tvp_up", "Whether the storage driver answers.", {{Labels{}, std::uint64_t{up}}});
}

const char* kindOf(bool ssd) {
  return ssd ? "ssd" : "hdd";
}

Labels labelsOf(const Drive& drive) {
  return {
      {"drive", std::to_string(drive.number)},
      {"device", drive.name},
      {"kind", kindOf(drive.type == Drive::SSD)}};
}

Labels labelsOf(const Pool& pool) {
  return {
      {"pool", std::to_string(pool.number)},
      {"name", pool.name},
      {"tier", kindOf(pool.tier == Pool::SSD_TIER)}};
}

Labels labelsOf(const Volume& volume) {
  return {
      {"volume", std::to_string(volume.number)},
      {"name", volume.name},
      {"type", volume.type == Volume::CACHED ? "cached" : "tiered"}};
}

/** A sample for each object. @param value of type std::uint64_t */
template <typename Object, typename Function>
Samples samplesOf(const std::vector<Instance>& instances, Function value) {
  Samples samples;
  for (const Instance& instance : instances) {
    const Object object(instance);
    samples.emplace_back(labelsOf(object), static_cast<std::uint64_t>(value(object)));
  }
  return samples;
}

template <typename Object>
std::uint64_t capacityOf(const Object& object) {
  return object.capacity * text::SECTOR_SIZE;
}

template <typename Object>
bool isInOrder(const Object& object) {
  return object.status == IN_ORDER;
}

void addDrives(const Overview& overview, MetricsText& metrics) {
  metrics.gauge(
      "tvp_drive_capacity_bytes", "Capacity of a drive.",
      samplesOf<Drive>(overview.drives, capacityOf<Drive>));
  metrics.gauge(
      "tvp_drive_online", "Whether a drive is present.", samplesOf<Drive>(overview.drives, isInOrder<Drive>));
  if (overview.complete) {
    std::map<std::uint32_t, std::uint64_t> used;
    for (const auto& [pool, extents] : overview.extents) {
      for (const DriveExtent& extent : extents) {
        used[extent.drive] += extent.size * text::SECTOR_SIZE;
      }
    }
    metrics.gauge(
        "tvp_drive_used_bytes", "What pools have on a drive.",
        samplesOf<Drive>(overview.drives, [&](const Drive& drive) { return used[drive.number]; }));
  }
}

void addPools(const Overview& overview, MetricsText& metrics) {
  metrics.gauge(
      "tvp_pool_capacity_bytes", "Capacity of a pool.", samplesOf<Pool>(overview.pools, capacityOf<Pool>));
  metrics.gauge(
      "tvp_pool_used_bytes", "What volumes take from a pool.",
      samplesOf<Pool>(overview.pools, [](const Pool& pool) { return pool.used * text::SECTOR_SIZE; }));
  metrics.gauge(
      "tvp_pool_good", "Whether a pool is in order, and not degraded.",
      samplesOf<Pool>(overview.pools, isInOrder<Pool>));
}

/** Calls a function with the labels of each volume that has counters, and with them. */
template <typename Function>
void forEachCounters(const Overview& overview, Function function) {
  for (const Instance& instance : overview.volumes) {
    const Volume volume(instance);
    const auto counters = overview.counters.find(volume.number);
    if (counters != overview.counters.end()) {
      function(labelsOf(volume), counters->second);
    }
  }
}

struct CounterChoice {
  const char* value;     ///< of the label
  const char* property;  ///< of GetVirtualVolumeStats
};

/** A sample of each volume for every one of the choices. */
Samples countersOf(const Overview& overview, const char* label, const std::vector<CounterChoice>& choices) {
  Samples samples;
  forEachCounters(overview, [&](const Labels& labels, const Instance& counters) {
    for (const CounterChoice& choice : choices) {
      Labels further = labels;
      further.emplace_back(label, choice.value);
      samples.emplace_back(std::move(further), numberOf(counters, choice.property));
    }
  });
  return samples;
}

void addVolumes(const Overview& overview, MetricsText& metrics) {
  metrics.gauge(
      "tvp_volume_capacity_bytes", "Capacity of a volume.",
      samplesOf<Volume>(overview.volumes, capacityOf<Volume>));
  metrics.gauge(
      "tvp_volume_good", "Whether a volume is in order, and not degraded.",
      samplesOf<Volume>(overview.volumes, isInOrder<Volume>));
  metrics.gauge(
      "tvp_volume_chunks", "Chunks that a volume has on a tier; of a cached volume, ssd is its cache.",
      countersOf(overview, "tier", {{"ssd", "SSD_VDTotalChunks"}, {"hdd", "HDD_VDTotalChunks"}}));
  Samples chunkSizes;
  forEachCounters(overview, [&](const Labels& labels, const Instance& counters) {
    chunkSizes.emplace_back(labels, numberOf(counters, "VD_ChunkSize") * text::SECTOR_SIZE);
  });
  metrics.gauge("tvp_volume_chunk_bytes", "Size of the chunks of a volume.", chunkSizes);
  metrics.counter(
      "tvp_volume_operations_total", "Reads and writes of a volume.",
      countersOf(overview, "direction", {{"read", "ReadIO_Count"}, {"write", "WriteIO_Count"}}));
  metrics.counter(
      "tvp_volume_ssd_operations_total", "Reads and writes of a volume that its SSD tier or cache served.",
      countersOf(overview, "direction", {{"read", "SSD_RIO_Count"}, {"write", "SSD_WIO_Count"}}));
  metrics.counter(
      "tvp_volume_access_total", "Reads and writes of a volume, by where they are.",
      countersOf(overview, "pattern", {{"sequential", "SeqIO_Count"}, {"random", "RanIO_Count"}}));
}

void addFindings(std::uint64_t degraded, std::uint64_t failed, MetricsText& metrics) {
  metrics.gauge(
      "tvp_findings", "What needs attention, as tvpcim status shows it.",
      {{Labels{{"severity", "degraded"}}, degraded}, {Labels{{"severity", "failed"}}, failed}});
}

}  // namespace

void addStorageMetrics(const Overview& overview, MetricsText& metrics) {
  addUp(metrics, true);
  metrics.gauge(
      "tvp_info", "The product; the value says nothing.",
      {{Labels{
            {"name", textOf(overview.identity, "Name")},
            {"version", std::to_string(numberOf(overview.identity, "MajorRevision")) + "." +
                            std::to_string(numberOf(overview.identity, "MinorRevision")) + "." +
                            std::to_string(numberOf(overview.identity, "BuildRevision"))}},
        std::uint64_t{1}}});
  metrics.gauge(
      "tvp_policy_engine_running", "Whether the policy engine moves chunks between tiers.",
      {{Labels{}, numberOf(overview.identity, "PolicyEngineStatus")}});
  addDrives(overview, metrics);
  addPools(overview, metrics);
  addVolumes(overview, metrics);
}

void addFindingMetrics(const HealthReport& report, MetricsText& metrics) {
  std::uint64_t failed = 0;
  for (const Finding& finding : report.findings()) {
    failed += finding.failed ? 1 : 0;
  }
  addFindings(report.findings().size() - failed, failed, metrics);
}

void addStorageFailure(MetricsText& metrics) {
  addUp(metrics, false);
  addFindings(0, 1, metrics);
}

}  // namespace tvp::host::tvpcim
