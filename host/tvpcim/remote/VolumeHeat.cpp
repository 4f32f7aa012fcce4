// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/VolumeHeat.h"

#include "host/tvpcim/output/Text.h"

#include <algorithm>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

using Json = nlohmann::ordered_json;

/** Volumes that are kept; a machine has fewer. */
constexpr std::size_t MOST_KNOWN = 256;

struct Cell {
  std::uint64_t chunks = 0;
  std::uint64_t ssd = 0;
  std::uint64_t hot = 0;
  std::uint64_t hottest = 0;
};

/** Chunks in a row. */
struct Part {
  std::uint64_t first = 0;
  std::uint64_t end = 0;
};

std::vector<Part> partsIn(const Json& ranges) {
  std::vector<Part> parts;
  for (const Json& range : ranges) {
    const auto first = range.at("first").get<std::uint64_t>();
    parts.push_back({first, first + range.at("chunks").get<std::uint64_t>()});
  }
  return parts;
}

/** How many chunks of one part are in the others. */
std::uint64_t chunksOf(const std::vector<Part>& others, const Part& part) {
  std::uint64_t chunks = 0;
  for (const Part& other : others) {
    const std::uint64_t first = std::max(other.first, part.first);
    chunks += std::max(std::min(other.end, part.end), first) - first;
  }
  return chunks;
}

}  // namespace

Json heatCells(const Json& heat, std::size_t most) {
  const auto number = [&heat](const char* name) { return heat.at(name).get<std::uint64_t>(); };
  const std::uint64_t total = number("totalChunks");
  const std::uint64_t perCell = std::max<std::uint64_t>((total + most - 1) / most, 1);
  // Chunks that nothing is said of are where they were laid.
  const std::vector<Part> laidOnSsd = partsIn(heat.at("laidOnSsd"));
  std::vector<Cell> cells;
  for (std::uint64_t first = 0; first < total; first += perCell) {
    const Part part = {first, std::min(first + perCell, total)};
    cells.push_back({part.end - part.first, chunksOf(laidOnSsd, part), 0, 0});
  }
  for (const Json& chunk : heat.at("chunks")) {
    const auto position = chunk.at("number").get<std::uint64_t>();
    const auto chunkHeat = chunk.at("heat").get<std::uint64_t>();
    Cell& cell = cells.at(position / perCell);
    cell.ssd =
        cell.ssd - chunksOf(laidOnSsd, {position, position + 1}) + (chunk.at("ssd").get<bool>() ? 1 : 0);
    cell.hot += chunkHeat >= number("threshold") ? 1 : 0;
    cell.hottest = std::max(cell.hottest, chunkHeat);
  }
  Json result = heat;
  result.erase("chunks");
  result["cells"] = Json::array();
  for (const Cell& cell : cells) {
    result["cells"].push_back(
        {{"chunks", cell.chunks}, {"ssd", cell.ssd}, {"hot", cell.hot}, {"hottest", cell.hottest}});
  }
  return result;
}

std::string VolumeHeat::read(std::uint32_t volume) {
  Json answer = {{"number", volume}};
  if (const std::optional<Json> heat = m_tool.ask({"heat", std::to_string(volume)})) {
    try {
      return text::printableJson(heatCells(*heat, CELLS).dump());
    } catch (const std::exception&) {
      answer["reason"] = "voltvkctl said nothing that is understood; is it of the same version?";
    }
  } else {
    answer["reason"] = m_tool.reason();
  }
  return text::printableJson(answer.dump());
}

std::string VolumeHeat::of(std::uint32_t volume) {
  const auto known = [&](bool anyAge) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_known.find(volume);
    return found != m_known.end() && (anyAge || Clock::now() < found->second.until) ? found->second.text
                                                                                    : std::string();
  };
  std::string text = known(false);
  std::unique_lock<std::mutex> reading(m_reading, std::defer_lock);
  if (!text.empty() || !reading.try_lock()) {
    return text.empty() ? known(true) : text;
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Clock::now() < m_next) {
      const auto found = m_known.find(volume);
      return found == m_known.end() ? "" : found->second.text;
    }
  }
  text = read(volume);
  const std::lock_guard<std::mutex> lock(m_mutex);
  const Clock::time_point now = Clock::now();
  if (m_known.size() >= MOST_KNOWN) {
    m_known.clear();
  }
  m_known[volume] = {text, now + KEPT};
  m_next = now + PAUSE;
  return text;
}

}  // namespace tvp::host::tvpcim
