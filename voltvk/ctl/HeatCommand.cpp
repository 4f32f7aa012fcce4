// SPDX-License-Identifier: Apache-2.0
#include "text/Utf8.h"
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/HeatLegend.h"
#include "voltvk/ctl/HeatPicture.h"
#include "voltvk/ctl/HeatSvg.h"
#include "voltvk/ctl/ReplaceFile.h"
#include "voltvk/ctl/Volumes.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <stdexcept>

namespace voltvk::ctl {

namespace {

struct HeatOptions {
  std::string volume;
  std::string svg;  ///< file to write; empty: none
};

Json describe(const VolumeRecord& volume, const std::vector<RememberedChunk>& chunks) {
  const HeatMap map(volume, chunks, 1);
  const HeatCell& total = map.total();
  Json list = Json::array();
  for (const RememberedChunk& chunk : chunks) {
    list.push_back(
        {{"number", chunk.number}, {"heat", chunk.heat}, {"ssd", chunk.ssd}, {"dirty", chunk.dirty}});
  }
  Json laidOnSsd = Json::array();
  for (const Extent& laid : volume.laidOnSsd) {
    laidOnSsd.push_back({{"first", laid.first}, {"chunks", laid.chunks}});
  }
  return {
      {"number", volume.id},
      {"name", volume.name},
      {"type", typeName(volume)},
      {"sectors", volume.capacitySectors()},
      {"chunkSectors", volume.chunkSectors},
      {"totalChunks", total.chunks},
      {"hddChunks", volume.hddChunks},
      {"ssdChunks", volume.ssdChunks},
      {"laidOnSsd", std::move(laidOnSsd)},
      {"chunksOnSsd", total.onSsd},
      {"dirtyChunks", total.dirty},
      {"threshold", map.threshold()},
      {"hotChunks", total.hot},
      {"hotChunksOnSsd", total.hotOnSsd},
      {"heat", total.heat},
      {"heatOnSsd", total.heatOnSsd},
      {"chunks", std::move(list)}};
}

void showHeat(const HeatOptions& options, const Context& context) {
  const bool svgOnly = options.svg == "-";
  if (svgOnly && context.output.isJson()) {
    throw std::invalid_argument(
        "a picture and JSON cannot both go to standard output; give --svg the name of a file");
  }
  VolumeRecord volume;
  std::vector<RememberedChunk> chunks;
  const std::shared_ptr<State> state = context.state();
  state->read([&](Connection& connection) {
    volume = findVolume(connection, options.volume);
    chunks = rememberedChunks(connection, volume);
  });
  require(
      !volume.isCached() || !state->backing()->isReal(), TVK_NOT_POSSIBLE_HERE,
      "the kernel does not tell which chunks are in a cache; see `tvpcim volume stats` for its hits");
  if (svgOnly) {
    std::cout << heatSvg(volume, chunks);
    return;
  }
  if (!options.svg.empty()) {
    replaceFile(options.svg, heatSvg(volume, chunks));
  }
  if (context.output.isJson()) {
    context.output.write(describe(volume, chunks), "");
  } else if (options.svg.empty()) {
    const auto terminal = tvp::terminal::Terminal::ofStandardOutput();
    std::cout << heatPicture(volume, chunks, terminal, tvp::terminal::isUtf8Wanted());
  } else {
    std::cout << tvp::text::printable("the heat of volume " + volume.name + " is drawn in " + options.svg)
              << '\n';
  }
}

}  // namespace

void addHeatCommand(CLI::App& app, Context& context) {
  auto options = std::make_shared<HeatOptions>();
  CLI::App* heat = app.add_subcommand("heat", "Show where the chunks of a volume lie and how hot they are");
  heat->add_option("VOLUME", options->volume, "Name or number of the volume")->required();
  heat->add_option("--svg", options->svg, "Draw an SVG picture into this file; - is standard output")
      ->type_name("FILE");
  heat->callback([options, &context] { showHeat(*options, context); });
}

}  // namespace voltvk::ctl
