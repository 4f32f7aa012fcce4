// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/HeatLegend.h"

#include "text/Size.h"
#include "voltvk/engine/state/Wording.h"

#include <string_view>

namespace voltvk::ctl {

namespace {

using tvp::text::formatSectors;

std::string sizeOf(const HeatMap& map, std::uint64_t chunks) {
  return formatSectors(chunks * map.volume().chunkSectors);
}

std::string cellText(const HeatMap& map) {
  const std::string chunk = sizeOf(map, 1);
  return map.chunksPerCell() == 1 ? "1 chunk of " + chunk
                                  : std::to_string(map.chunksPerCell()) + " chunks of " + chunk +
                                        ", shown with the heat of the hottest";
}

std::string ssdText(const HeatMap& map) {
  const HeatCell& total = map.total();
  const std::string text = std::to_string(total.onSsd) + " of " + counted(total.chunks, "chunk");
  if (total.heat == 0) {
    return text + "; the volume has no heat, since nothing uses it";
  }
  const double share = 100 * static_cast<double>(total.heatOnSsd) / static_cast<double>(total.heat);
  return text + ", with " + std::to_string(static_cast<int>(share)) + "% of the heat";
}

}  // namespace

const char* typeName(const VolumeRecord& volume) {
  return volume.isCached() ? "cached" : "tiered";
}

std::string heatTitle(const HeatMap& map) {
  const VolumeRecord& volume = map.volume();
  std::vector<std::string> parts;
  if (volume.hddChunks > 0) {
    parts.push_back(sizeOf(map, volume.hddChunks) + " on hard disks");
  }
  if (volume.ssdChunks > 0) {
    parts.push_back(sizeOf(map, volume.ssdChunks) + (volume.isCached() ? " of cache on SSDs" : " on SSDs"));
  }
  return nameOf(volume) + ": " + typeName(volume) + ", " + enumerated(parts);
}

std::vector<HeatFact> heatFacts(const HeatMap& map) {
  const HeatCell& total = map.total();
  std::vector<HeatFact> facts = {
      {"cell", cellText(map)},
      {map.volume().isCached() ? "cached" : "SSD", ssdText(map)},
      {"hot", counted(total.hot, "chunk") + " (heat " + std::to_string(map.threshold()) + " or more), " +
                  std::to_string(total.hotOnSsd) + (map.volume().isCached() ? " cached" : " on SSD")}};
  if (map.volume().isCached()) {
    facts.push_back({"dirty", counted(total.dirty, "chunk") + " cached and not yet written back"});
  }
  return facts;
}

std::vector<HeatCell::Place> placesOf(const HeatMap& map) {
  using Place = HeatCell::Place;
  const bool disk = map.volume().hddChunks > 0;
  const bool ssd = map.volume().ssdChunks > 0;
  std::vector<Place> places;
  if (disk) {
    places.push_back(Place::Disk);
  }
  if (disk && ssd && map.chunksPerCell() > 1) {
    places.push_back(Place::Both);
  }
  if (ssd) {
    places.push_back(Place::Ssd);
  }
  if (map.volume().isCached()) {
    places.push_back(Place::Dirty);
  }
  return places;
}

const char* placeName(const HeatMap& map, HeatCell::Place place) {
  const bool cached = map.volume().isCached();
  switch (place) {
  case HeatCell::Place::Disk:
    return "disk";
  case HeatCell::Place::Both:
    return cached ? "partly" : "both";
  case HeatCell::Place::Ssd:
    return cached ? "cached" : "SSD";
  default:
    return "dirty";
  }
}

std::string shortNumber(std::uint64_t number) {
  std::string unit;
  for (const char next : std::string_view("kMGTPE")) {
    if (number < (unit.empty() ? 10000 : 1000)) {
      break;
    }
    number /= 1000;
    unit = next;
  }
  return std::to_string(number) + unit;
}

}  // namespace voltvk::ctl
