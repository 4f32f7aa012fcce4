// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/HeatLegend.h"
#include "voltvk/ctl/LongWork.h"
#include "voltvk/ctl/Volumes.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/contract/StorageGrowth.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

namespace voltvk::ctl {

namespace {

/** The record with an identifier or else a name. */
template <typename Record>
Record
find(const std::vector<Record>& records, const std::string& wanted, TvkStatus otherwise, const char* noun) {
  auto found = std::find_if(records.begin(), records.end(), [&](const Record& record) {
    return std::to_string(record.id) == wanted;
  });
  if (found == records.end()) {
    found = std::find_if(
        records.begin(), records.end(), [&](const Record& record) { return record.name == wanted; });
  }
  require(found != records.end(), otherwise, [&] {
    return "there is no " + std::string(noun) + " '" + wanted + "'; give the name or number of one";
  });
  return *found;
}

}  // namespace

VolumeRecord findVolume(Connection& connection, const std::string& wanted) {
  return find(SnapshotReader(connection).configuration().volumes, wanted, TVK_NO_SUCH_VOLUME, "volume");
}

PoolRecord findPool(Connection& connection, const std::string& wanted) {
  return find(SnapshotReader(connection).configuration().pools, wanted, TVK_NO_SUCH_POOL, "pool");
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

void flush(const std::string& wanted, const Context& context) {
  const std::shared_ptr<State> state = context.state();
  VolumeRecord volume;
  state->read([&](Connection& connection) { volume = findVolume(connection, wanted); });
  LongWork work;
  VolumeUpkeep(*state).flush(volume.id, [&](std::uint64_t dirty) {
    return work.goesOn(volume.name + ": " + counted(dirty, "block") + " left");
  });
  const bool isWhole = !work.isInterrupted();
  context.report(
      {{"volume", volume.name}, {"id", volume.id}, {"complete", isWhole}},
      "volume " + volume.name + (isWhole ? ": the cache is written back" : ": ended early"));
}

struct GrowOptions {
  std::string volume;
  std::string size;
  std::string pool;
};

void grow(const GrowOptions& options, const Context& context) {
  const std::shared_ptr<State> state = context.state();
  VolumeGrowth wanted;
  if (options.size == "max") {
    wanted.percent = 100;
  } else if (const std::optional<unsigned> share = tvp::text::percentage(options.size)) {
    wanted.percent = *share;
  } else {
    wanted.sectors = tvp::text::parseSectors(options.size);
  }
  VolumeRecord volume;
  const auto find = [&](Connection& connection) { volume = findVolume(connection, options.volume); };
  state->read([&](Connection& connection) {
    find(connection);
    if (!options.pool.empty()) {
      wanted.pool = findPool(connection, options.pool).id;
    }
  });
  const std::uint64_t before = volume.capacitySectors();
  StorageGrowth(*state).growVolume(volume.id, wanted);
  state->read(find);
  const std::uint64_t after = volume.capacitySectors();
  context.report(
      {{"volume", volume.name}, {"id", volume.id}, {"previousSectors", before}, {"sectors", after}},
      nameOf(volume) + ": made larger, from " + sizeText(before) + " to " + sizeText(after));
}

}  // namespace

std::string devicePathOf(State& state, const VolumeRecord& volume) {
  return state.backing()->devicePath(volume.id);
}

void addVolumeCommands(CLI::App& app, Context& context) {
  CLI::App* volume = app.add_subcommand("volume", "List volumes, write back their caches, make them larger");
  volume->require_subcommand(1);
  auto flushed = std::make_shared<std::string>();
  CLI::App* flushing =
      volume->add_subcommand("flush", "Write back the cache of a volume; Ctrl-C ends it early");
  flushing->add_option("VOLUME", *flushed, "Name or number of the volume")->required();
  flushing->callback([flushed, &context] { flush(*flushed, context); });
  auto grown = std::make_shared<GrowOptions>();
  CLI::App* growing = volume->add_subcommand("grow", "Make a volume larger, while it is in use");
  growing->add_option("VOLUME", grown->volume, "Name or number of the volume")->required();
  growing
      ->add_option(
          "SIZE", grown->size,
          "Size that it is to have, such as 100GiB; max: with all the room of its pool; "
          "25%: with that share of the room")
      ->required();
  growing->add_option("--pool", grown->pool, "Pool to grow on (default: that of hard disks, if it has one)");
  growing->callback([grown, &context] { grow(*grown, context); });
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
