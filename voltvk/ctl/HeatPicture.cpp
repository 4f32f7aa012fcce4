// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/HeatPicture.h"

#include "terminal/Width.h"
#include "text/Size.h"
#include "text/Utf8.h"
#include "voltvk/ctl/HeatLegend.h"

#include <algorithm>
#include <array>

namespace voltvk::ctl {

namespace {

using tvp::terminal::Terminal;

constexpr std::size_t USUAL_COLUMNS = 80;
constexpr std::size_t FEWEST_COLUMNS = 20;
constexpr std::size_t MAX_ROWS = 16;
/** From this width on, rows begin with their place in the volume, in so many columns. */
constexpr std::size_t LABELLED_COLUMNS = 40;
constexpr std::size_t LABEL_COLUMNS = 12;
/** Rows hold a multiple of this many cells, so that they begin at round places. */
constexpr std::size_t CELL_STEP = 16;
constexpr std::size_t LEGEND_COLUMNS = 7;

/** By place and level. Disks are shaded, SSDs are bars, both are posts, and what is dirty hangs down. */
using Symbols = std::array<std::array<const char*, HeatMap::LEVELS>, 4>;
constexpr Symbols BLOCKS = {
    {{"·", "░", "▒", "▓"}, {"▏", "▍", "▋", "▉"}, {"▁", "▃", "▅", "█"}, {"▔", "▝", "▚", "▜"}}};
constexpr Symbols ASCII = {
    {{".", "1", "2", "3"}, {":", "a", "b", "c"}, {"_", "A", "B", "C"}, {"!", "X", "Y", "Z"}}};

constexpr std::array<const char*, HeatMap::LEVELS> COLOURS = {"", "\033[36m", "\033[33m", "\033[31m"};
constexpr const char* PLAIN = "\033[0m";

std::string padded(const std::string& text, std::size_t columns) {
  return text + std::string(columns - std::min(columns, tvp::terminal::displayWidth(text)), ' ');
}

class Picture {
public:
  Picture(const HeatMap& map, std::size_t columns, std::size_t cellsPerRow, bool colour, bool blocks)
      : m_map(map), m_columns(columns), m_cellsPerRow(cellsPerRow), m_colour(colour),
        m_symbols(blocks ? BLOCKS : ASCII) {}

  std::string text() const {
    std::string text = tvp::terminal::wrapped(tvp::text::printable(heatTitle(m_map)), m_columns) + "\n";
    for (std::size_t first = 0; first < m_map.cells().size(); first += m_cellsPerRow) {
      text += row(first);
    }
    text += "\n" + legend() + "\n";
    for (const HeatFact& fact : heatFacts(m_map)) {
      text += tvp::terminal::wrapped(padded(fact.subject + ":", LEGEND_COLUMNS + 1) + fact.text, m_columns);
    }
    return text;
  }

private:
  std::string row(std::size_t first) const {
    std::string text;
    if (m_columns >= LABELLED_COLUMNS) {
      const std::uint64_t sectors = m_map.cells()[first].first * m_map.volume().chunkSectors;
      const std::string label = tvp::text::formatSectors(sectors) + "  ";
      text = std::string(LABEL_COLUMNS - std::min(LABEL_COLUMNS, label.size()), ' ') + label;
    }
    const std::size_t end = std::min(first + m_cellsPerRow, m_map.cells().size());
    std::string colour;
    for (std::size_t index = first; index < end; ++index) {
      const HeatCell& cell = m_map.cells()[index];
      const unsigned level = m_map.levelOf(cell.hottest);
      if (m_colour && colour != COLOURS[level]) {
        text += (colour.empty() ? "" : PLAIN) + std::string(COLOURS[level]);
        colour = COLOURS[level];
      }
      text += m_symbols[static_cast<std::size_t>(cell.place())][level];
    }
    return text + (colour.empty() ? "" : PLAIN) + "\n";
  }

  /** A row for each place, a column for each level. */
  std::string legend() const {
    const std::string gap(m_columns < LABELLED_COLUMNS ? 1 : 2, ' ');
    std::string text = padded("heat >=", LEGEND_COLUMNS);
    std::vector<std::string> lowest;
    for (unsigned level = 0; level <= m_map.levelOf(m_map.total().hottest); ++level) {
      lowest.push_back(shortNumber(m_map.lowestOf(level)));
      text += gap + lowest.back();
    }
    text += "\n";
    for (const HeatCell::Place place : placesOf(m_map)) {
      text += padded(placeName(m_map, place), LEGEND_COLUMNS);
      for (std::size_t level = 0; level < lowest.size(); ++level) {
        const std::string colour = m_colour ? COLOURS.at(level) : "";
        const std::string blanks(level + 1 < lowest.size() ? lowest[level].size() - 1 : 0, ' ');
        text += gap;
        text += colour;
        text += m_symbols[static_cast<std::size_t>(place)].at(level);
        text += colour.empty() ? "" : PLAIN;
        text += blanks;
      }
      text += "\n";
    }
    return text;
  }

  const HeatMap& m_map;
  std::size_t m_columns;
  std::size_t m_cellsPerRow;
  bool m_colour;
  const Symbols& m_symbols;
};

}  // namespace

std::string heatPicture(
    const VolumeRecord& volume, const std::vector<RememberedChunk>& chunks, const Terminal& terminal,
    bool blocks) {
  const std::size_t columns =
      terminal.columns == Terminal::UNLIMITED ? USUAL_COLUMNS : std::max(terminal.columns, FEWEST_COLUMNS);
  const std::size_t room = columns < LABELLED_COLUMNS ? columns : columns - LABEL_COLUMNS;
  const std::size_t cellsPerRow = room < CELL_STEP ? room : room - room % CELL_STEP;
  const HeatMap map(volume, chunks, cellsPerRow * MAX_ROWS);
  return Picture(map, columns, cellsPerRow, terminal.colour, blocks).text();
}

}  // namespace voltvk::ctl
