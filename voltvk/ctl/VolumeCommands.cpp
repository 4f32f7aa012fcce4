// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/HeatLegend.h"
#include "voltvk/ctl/Volumes.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <csignal>
#include <iostream>

#include <unistd.h>

namespace voltvk::ctl {

VolumeRecord findVolume(Connection& connection, const std::string& wanted) {
  const std::vector<VolumeRecord> volumes = SnapshotReader(connection).configuration().volumes;
  auto found = std::find_if(volumes.begin(), volumes.end(), [&](const VolumeRecord& volume) {
    return std::to_string(volume.id) == wanted;
  });
  if (found == volumes.end()) {
    found = std::find_if(
        volumes.begin(), volumes.end(), [&](const VolumeRecord& volume) { return volume.name == wanted; });
  }
  if (found == volumes.end()) {
    throw Refusal(TVK_NO_SUCH_VOLUME, "there is no volume '" + wanted + "'; give the name or number of one");
  }
  return *found;
}

namespace {

/** The names of the pools that a volume uses, each once, in the order of its parts. */
Json poolNamesOf(const VolumeRecord& volume, const std::vector<PoolRecord>& pools) {
  Json names = Json::array();
  for (const VolumeExtentRecord& extent : volume.extents) {
    const PoolRecord* pool = findById(pools, extent.pool);
    if (pool != nullptr && std::find(names.begin(), names.end(), pool->name) == names.end()) {
      names.push_back(pool->name);
    }
  }
  return names;
}

Json orNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

Json listVolumes(State& state) {
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  const Configuration& configuration = snapshot->configuration();
  const Health health(configuration.drives, configuration.pools, configuration.volumes);
  Json list = Json::array();
  for (const VolumeRecord& volume : configuration.volumes) {
    const std::uint64_t hddSectors = volume.hddChunks * volume.chunkSectors;
    const std::uint64_t ssdSectors = volume.ssdChunks * volume.chunkSectors;
    const std::string& trouble = health.ofVolume(volume.id);
    list.push_back(
        {{"number", volume.id},
         {"name", volume.name},
         {"type", typeName(volume)},
         {"sectors", volume.capacitySectors()},
         {"size", tvp::text::formatSectors(volume.capacitySectors())},
         {"hddSectors", hddSectors},
         {"hddSize", tvp::text::formatSectors(hddSectors)},
         {"ssdSectors", ssdSectors},
         {"ssdSize", tvp::text::formatSectors(ssdSectors)},
         {"pools", poolNamesOf(volume, configuration.pools)},
         {"state", trouble.empty() ? "good" : "degraded"},
         {"trouble", orNull(trouble)},
         {"device", orNull(devicePathOf(state, volume))}});
  }
  return list;
}

/** Set by the signal that ends a flush early. */
volatile std::sig_atomic_t interrupted = 0;

/** While it exists, Ctrl-C and a request to end are kept for the flush, which then ends in order. */
class InterruptGuard {
public:
  InterruptGuard() {
    interrupted = 0;
    m_before = {std::signal(SIGINT, remember), std::signal(SIGTERM, remember)};
  }
  ~InterruptGuard() {
    std::signal(SIGINT, m_before[0]);
    std::signal(SIGTERM, m_before[1]);
  }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
  static void remember(int /*signal*/) { interrupted = 1; }

  std::array<void (*)(int), 2> m_before{};
};

void flush(const std::string& wanted, const Context& context) {
  const std::shared_ptr<State> state = context.state();
  VolumeRecord volume;
  state->read([&](Connection& connection) { volume = findVolume(connection, wanted); });
  const bool showsProgress = ::isatty(STDERR_FILENO) == 1;
  const InterruptGuard guard;
  VolumeUpkeep(*state).flush(volume.id, [&](std::uint64_t dirty) {
    if (showsProgress) {
      std::cerr << '\r' << volume.name << ": " << counted(dirty, "block") << " left \033[K" << std::flush;
    }
    return interrupted == 0;
  });
  if (showsProgress) {
    std::cerr << "\r\033[K" << std::flush;
  }
  const bool isWhole = interrupted == 0;
  context.output.write(
      {{"volume", volume.name}, {"id", volume.id}, {"complete", isWhole}},
      "volume " + volume.name + (isWhole ? ": the cache is written back" : ": ended early"));
}

}  // namespace

std::string devicePathOf(State& state, const VolumeRecord& volume) {
  return state.backing()->devicePath(volume.id);
}

void addVolumeCommands(CLI::App& app, Context& context) {
  CLI::App* volume = app.add_subcommand("volume", "List volumes, write back their caches");
  volume->require_subcommand(1);
  auto flushed = std::make_shared<std::string>();
  CLI::App* flushing =
      volume->add_subcommand("flush", "Write back the cache of a volume; Ctrl-C ends it early");
  flushing->add_option("VOLUME", *flushed, "Name or number of the volume")->required();
  flushing->callback([flushed, &context] { flush(*flushed, context); });
  volume->add_subcommand("list", "List the volumes with their parts, pools and devices")
      ->callback([&context] {
        context.output.writeList(
            listVolumes(*context.state()),
            {{"number", "NUMBER", true},
             {"name", "NAME", false, true},
             {"type", "TYPE"},
             {"size", "SIZE", true, true},
             {"state", "STATE", false, true},
             {"device", "DEVICE", false, true},
             {"hddSize", "ON HDD", true},
             {"ssdSize", "ON SSD", true},
             {"pools", "POOLS"},
             {"trouble", "TROUBLE"}},
            "No volumes.");
      });
}

}  // namespace voltvk::ctl
