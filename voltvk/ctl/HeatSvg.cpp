// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/HeatSvg.h"

#include "terminal/Width.h"
#include "text/Size.h"
#include "text/Utf8.h"
#include "voltvk/ctl/HeatLegend.h"

namespace voltvk::ctl {

namespace {

constexpr std::size_t CELLS_PER_ROW = 64;
constexpr std::size_t MAX_DRAWN_ROWS = 32;
// In user units, which are pixels at the natural size.
constexpr std::size_t TILE = 12;
constexpr std::size_t PITCH = 15;
constexpr std::size_t PIP = 4;
constexpr std::size_t MARGIN = 16;
constexpr std::size_t LEFT = 96;
constexpr std::size_t TOP = 48;
constexpr std::size_t LINE = 22;
constexpr std::size_t LEGEND_STEP = 140;
constexpr std::size_t WIDTH = LEFT + CELLS_PER_ROW * PITCH + MARGIN;
constexpr std::size_t TITLE_COLUMNS = 110;

constexpr const char* STYLE = R"(<style>
.tvp-heat { font: 13px sans-serif; }
.tvp-heat .page { fill: #ffffff; }
.tvp-heat text { fill: #1f2328; }
.tvp-heat .name { font-size: 16px; font-weight: bold; }
.tvp-heat .row { font-size: 11px; text-anchor: end; }
.tvp-heat .h0 { fill: #e4e7eb; }
.tvp-heat .h1 { fill: #fdcc8a; }
.tvp-heat .h2 { fill: #fc8d59; }
.tvp-heat .h3 { fill: #d7301f; }
.tvp-heat .ssd, .tvp-heat .dirty { stroke: #1f2328; stroke-width: 2; }
.tvp-heat .both { stroke: #1f2328; stroke-width: 2; stroke-dasharray: 3 3; }
.tvp-heat .pip { fill: #ffffff; stroke: #1f2328; }
@media (prefers-color-scheme: dark) {
.tvp-heat .page { fill: #0d1117; }
.tvp-heat text { fill: #e6edf3; }
.tvp-heat .h0 { fill: #30363d; }
.tvp-heat .h1 { fill: #7a3b1d; }
.tvp-heat .h2 { fill: #d9691e; }
.tvp-heat .h3 { fill: #ffd98a; }
.tvp-heat .ssd, .tvp-heat .both, .tvp-heat .dirty { stroke: #e6edf3; }
.tvp-heat .pip { fill: #0d1117; stroke: #e6edf3; }
}
</style>
)";

/** The text as content or attribute of an XML document, which cannot hold every character. */
std::string escaped(const std::string& text) {
  const std::string valid = tvp::text::printable(text);
  std::string result;
  for (std::size_t at = 0; at < valid.size();) {
    const tvp::text::Character next = tvp::text::characterAt(valid, at);
    const bool noCharacter = next.code == 0xFFFE || next.code == 0xFFFF;
    result += next.code == '&'   ? "&amp;"
              : next.code == '<' ? "&lt;"
              : next.code == '>' ? "&gt;"
              : next.code == '"' ? "&quot;"
              : noCharacter      ? "\uFFFD"
                                 : valid.substr(at, next.step());
    at += next.step();
  }
  return result;
}

std::string attribute(const char* name, std::size_t value) {
  return " " + std::string(name) + "=\"" + std::to_string(value) + "\"";
}

std::string textAt(std::size_t x, std::size_t y, const char* kind, const std::string& text) {
  const std::string style = *kind == '\0' ? "" : std::string(" class=\"") + kind + "\"";
  return "<text" + style + attribute("x", x) + attribute("y", y) + ">" + escaped(text) + "</text>\n";
}

std::string square(const std::string& kind, std::size_t x, std::size_t y, std::size_t size) {
  return "<rect class=\"" + kind + "\"" + attribute("x", x) + attribute("y", y) + attribute("width", size) +
         attribute("height", size);
}

const char* styleOf(HeatCell::Place place) {
  switch (place) {
  case HeatCell::Place::Disk:
    return "disk";
  case HeatCell::Place::Both:
    return "both";
  case HeatCell::Place::Ssd:
    return "ssd";
  default:
    return "dirty";
  }
}

class Drawing {
public:
  explicit Drawing(const HeatMap& map) : m_map(map) {}

  std::string text() {
    std::string body = textAt(
        MARGIN, 28, "name", tvp::terminal::cutToWidth(tvp::text::printable(heatTitle(m_map)), TITLE_COLUMNS));
    body += cells();  // each draws below the one before it
    body += legend();
    body += facts();
    const std::string id = "tvp-heat-" + std::to_string(m_map.volume().id);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"tvp-heat\" role=\"img\" aria-labelledby=\"" +
           id + "-title " + id + "-desc\"" + attribute("width", WIDTH) + attribute("height", m_y) +
           " viewBox=\"0 0 " + std::to_string(WIDTH) + " " + std::to_string(m_y) + "\">\n<title id=\"" + id +
           "-title\">" + escaped(heatTitle(m_map)) + "</title>\n<desc id=\"" + id + "-desc\">" +
           escaped(description()) + "</desc>\n" + STYLE +
           "<rect class=\"page\" width=\"100%\" height=\"100%\"/>\n" + body + "</svg>\n";
  }

private:
  std::string
  tile(HeatCell::Place place, unsigned level, std::size_t x, std::size_t y, const std::string& title) const {
    std::string text = square("h" + std::to_string(level) + " " + styleOf(place), x, y, TILE);
    text += title.empty() ? "/>" : "><title>" + escaped(title) + "</title></rect>";
    if (place == HeatCell::Place::Dirty) {
      text += square("pip", x + (TILE - PIP) / 2, y + (TILE - PIP) / 2, PIP) + "/>";
    }
    return text + "\n";
  }

  std::string cells() {
    std::string text;
    for (std::size_t index = 0; index < m_map.cells().size(); ++index) {
      const HeatCell& cell = m_map.cells()[index];
      const std::size_t column = index % CELLS_PER_ROW;
      if (column == 0) {
        const std::uint64_t sectors = cell.first * m_map.volume().chunkSectors;
        text += textAt(LEFT - 8, m_y + TILE - 2, "row", tvp::text::formatSectors(sectors));
      }
      const std::string last = cell.chunks == 1 ? "" : " to " + std::to_string(cell.first + cell.chunks - 1);
      text += tile(
          cell.place(), m_map.levelOf(cell.hottest), LEFT + column * PITCH, m_y,
          "chunk " + std::to_string(cell.first) + last + ": " + placeName(m_map, cell.place()) + ", heat " +
              std::to_string(cell.hottest));
      if (column + 1 == CELLS_PER_ROW || index + 1 == m_map.cells().size()) {
        m_y += PITCH;
      }
    }
    return text;
  }

  std::string legend() {
    m_y += LINE;
    std::string text;
    std::size_t x = LEFT;
    const auto entry = [&](HeatCell::Place place, unsigned level, const std::string& label) {
      text += tile(place, level, x, m_y - TILE + 1, "") + textAt(x + PITCH + 5, m_y, "", label);
      x += LEGEND_STEP;
    };
    const auto next = [&](const char* subject) {
      m_y += LINE;
      x = LEFT;
      text += textAt(MARGIN, m_y, "", subject);
    };
    next("heat");
    const std::uint64_t hottest = m_map.total().hottest;
    for (unsigned level = 0; level <= m_map.levelOf(hottest); ++level) {
      const std::uint64_t lowest = m_map.lowestOf(level);
      const std::uint64_t highest = level == m_map.levelOf(hottest) ? hottest : m_map.lowestOf(level + 1) - 1;
      entry(
          HeatCell::Place::Disk, level,
          shortNumber(lowest) + (highest > lowest ? " to " + shortNumber(highest) : ""));
    }
    next("place");
    for (const HeatCell::Place place : placesOf(m_map)) {
      entry(place, 0, placeName(m_map, place));
    }
    return text;
  }

  std::string facts() {
    std::string text;
    for (const HeatFact& fact : heatFacts(m_map)) {
      m_y += LINE;
      text += textAt(MARGIN, m_y, "", fact.subject) + textAt(LEFT, m_y, "", fact.text);
    }
    m_y += MARGIN;
    return text;
  }

  std::string description() const {
    std::string text;
    for (const HeatFact& fact : heatFacts(m_map)) {
      text += (text.empty() ? "" : " ") + fact.subject + ": " + fact.text + ".";
    }
    return text;
  }

  const HeatMap& m_map;
  std::size_t m_y = TOP;  ///< where what comes next begins
};

}  // namespace

std::string heatSvg(const VolumeRecord& volume, const std::vector<RememberedChunk>& chunks) {
  return Drawing(HeatMap(volume, chunks, CELLS_PER_ROW * MAX_DRAWN_ROWS)).text();
}

}  // namespace voltvk::ctl
