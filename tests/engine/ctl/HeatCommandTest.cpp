// SPDX-License-Identifier: Apache-2.0
// The pictures of voltvkctl heat, and the list of volumes.
#include "engine/ctl/VoltvkctlFixture.h"
#include "support/Lines.h"

#include <regex>

#include <sys/stat.h>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

class HeatCommandTest : public VoltvkctlTest {
protected:
  HeatCommandTest() {
    addDrive(TVK_DEVICE_HDD, 100 * MIB);
    addDrive(TVK_DEVICE_SSD, 100 * MIB);
    m_hdd = createPool(poolSpec("slow", {0}, 100 * MIB));
    m_ssd = createPool(poolSpec("fast", {1}, 100 * MIB, TVK_TIER_SSD));
  }
  std::uint32_t
  create(const char* name, TvkVolumeType type, std::uint64_t hddChunks, std::uint64_t ssdChunks) {
    return createVolume(volumeSpec(name, type, {{m_hdd, hddChunks * MIB}, {m_ssd, ssdChunks * MIB}}));
  }
  /** @param rows number, heat, whether on SSD, whether dirty */
  static void remember(std::uint32_t volume, const std::vector<std::array<std::uint64_t, 4>>& rows) {
    for (const auto& [number, heat, ssd, dirty] : rows) {
      execute(
          "INSERT INTO chunk VALUES(" + std::to_string(volume) + "," + std::to_string(number) + "," +
          std::to_string(heat) + "," + std::to_string(ssd) + "," + std::to_string(dirty) + ")");
    }
  }
  static Command picture(const std::string& volume) {
    return Command({TVP_BINARY_DIR "/bin/voltvkctl", "heat", volume})
        .with("LC_ALL", "C.UTF-8")
        .without("NO_COLOR");
  }

  std::uint32_t m_hdd = 0;
  std::uint32_t m_ssd = 0;
};

/** Whether elements are nested properly, attributes are quoted, and nothing else has angle brackets. */
bool isWellFormed(const std::string& xml) {
  static const std::regex TAG(
      R"re(<(/?)([a-z]+)((?: [A-Za-z-]+="[^"<]*")*)(/?)>|[<>]|&(?!(?:amp|lt|gt|quot);))re");
  std::vector<std::string> open;
  for (std::sregex_iterator found(xml.begin(), xml.end(), TAG), none; found != none; ++found) {
    const std::string name = (*found)[2];
    const bool closes = (*found)[1].length() > 0;
    if (name.empty() || (closes && (open.empty() || open.back() != name))) {
      return false;
    }
    if (closes) {
      open.pop_back();
    } else if ((*found)[4].length() == 0) {
      open.push_back(name);
    }
  }
  return open.empty() && xml.rfind("<svg ", 0) == 0;
}

TEST_F(HeatCommandTest, PictureShowsPlaceHeatAndTotalsWithAndWithoutColour) {
  create("cold", TVK_VOLUME_TIERED, 2, 1);
  remember(
      create("data", TVK_VOLUME_CACHED, 8, 6), {{0, 0, 1, 1},
                                                {1, 1, 1, 1},
                                                {2, 4, 1, 1},
                                                {3, 90, 1, 1},
                                                {4, 1, 1, 0},
                                                {5, 4, 1, 0},
                                                {6, 3, 0, 0},
                                                {7, 100, 0, 0}});
  EXPECT_EQ(
      picture("cold").run().out, "volume 1 (cold): tiered, 2 MiB on hard disks and 1 MiB on SSDs\n\n"
                                 "       0 B  ··▁\n\n"
                                 "heat >=  0\ndisk     ·\nSSD      ▁\n\n"
                                 "cell:   1 chunk of 1 MiB\n"
                                 "SSD:    1 of 3 chunks; the volume has no heat, since nothing uses it\n"
                                 "hot:    0 chunks (heat 4 or more), 0 on SSD\n");
  const std::string ascii = "volume 2 (data): cached, 8 MiB on hard disks and 6 MiB of cache on SSDs\n\n"
                            "       0 B  !XYZAB13\n\n"
                            "heat >=  0  1  4  20\n"
                            "disk     .  1  2  3\n"
                            "cached   _  A  B  C\n"
                            "dirty    !  X  Y  Z\n\n"
                            "cell:   1 chunk of 1 MiB\n"
                            "cached: 6 of 8 chunks, with 49% of the heat\n"
                            "hot:    4 chunks (heat 4 or more), 3 cached\n"
                            "dirty:  4 chunks cached and not yet written back\n";
  EXPECT_EQ(picture("data").with("LC_ALL", "C").run().out, ascii);
  const std::string coloured = picture("2").terminal(80).with("TERM", "xterm").run().out;
  EXPECT_NE(
      coloured.find("▔\033[36m▝\033[0m\033[33m▚\033[0m\033[31m▜\033[0m\033[36m▃\033[0m\033[33m▅"),
      std::string::npos)
      << coloured;
  const std::string plain = picture("2").terminal(80).with("TERM", "xterm").with("NO_COLOR", "1").run().out;
  EXPECT_NE(plain.find("  ▔▝▚▜▃▅░▓\r\n"), std::string::npos) << plain;
  EXPECT_EQ(plain.find('\033'), std::string::npos);
}

TEST_F(HeatCommandTest, PictureOfAHugeVolumeFitsEveryWidth) {
  const std::uint64_t chunks = std::uint64_t{1} << 32U;
  addDrive(TVK_DEVICE_HDD, chunks * 8 + GIB);
  const std::uint32_t pool = createPool(poolSpec("large", {2}, chunks * 8, TVK_TIER_HDD, 8));
  const std::uint32_t id = createVolume(volumeSpec("huge", TVK_VOLUME_TIERED, {{pool, chunks * 8}}));
  remember(id, {{0, 7, 0, 0}, {chunks - 1, 123456, 0, 0}});
  for (const unsigned short columns : std::initializer_list<unsigned short>{20, 39, 40, 200}) {
    const CommandResult result = picture("huge").terminal(columns).with("NO_COLOR", "1").run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    std::size_t cells = 0;
    for (const std::string& line : linesOf(result.out)) {
      const auto width =
          std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80 && c != '\r'; });
      EXPECT_LE(width, columns) << line;
      cells = std::max(cells, static_cast<std::size_t>(width));
    }
    EXPECT_GE(cells + 16, columns) << "the width is used";
    EXPECT_NE(result.out.find("▓\r\n\r\nheat"), std::string::npos) << "the last chunk is the hottest\n"
                                                                   << result.out;
  }
  EXPECT_EQ(json({"heat", "huge"})["totalChunks"], chunks);
  EXPECT_LT(text({"heat", "huge", "--svg", "-"}).size(), 500000U);
}

TEST_F(HeatCommandTest, JsonHasEveryRememberedChunk) {
  const std::uint32_t id = create("data", TVK_VOLUME_TIERED, 9, 3);
  remember(create("other", TVK_VOLUME_TIERED, 9, 3), {{1, 1, 0, 0}});
  remember(id, {{11, 0, 0, 0}, {4, 6, 1, 0}, {5, 2, 0, 0}, {12, 9, 0, 0}});
  const auto chunk = [](int number, int heat, bool ssd) {
    return Json{{"number", number}, {"heat", heat}, {"ssd", ssd}, {"dirty", false}};
  };
  EXPECT_EQ(
      json({"heat", "data"}), (Json{
                                  {"number", id},
                                  {"name", "data"},
                                  {"type", "tiered"},
                                  {"sectors", 12 * MIB},
                                  {"chunkSectors", MIB},
                                  {"totalChunks", 12},
                                  {"hddChunks", 9},
                                  {"ssdChunks", 3},
                                  {"laidOnSsd", {{{"first", 9}, {"chunks", 3}}}},
                                  {"chunksOnSsd", 3},
                                  {"dirtyChunks", 0},
                                  {"threshold", 4},
                                  {"hotChunks", 1},
                                  {"hotChunksOnSsd", 1},
                                  {"heat", 8},
                                  {"heatOnSsd", 6},
                                  {"chunks", {chunk(4, 6, true), chunk(5, 2, false), chunk(11, 0, false)}}}));
}

TEST_F(HeatCommandTest, SvgIsWellFormedAndReplacesOnlyRegularFilesAsAWhole) {
  const std::uint32_t id = create("<b>&\"\xEF\xBF\xBE", TVK_VOLUME_CACHED, 20, 10);
  remember(id, {{0, 9, 1, 1}, {1, 90, 1, 0}});
  const std::string number = std::to_string(id);
  const std::string svg = text({"heat", number, "--svg", "-"});
  EXPECT_TRUE(isWellFormed(svg)) << svg;
  for (const char* part :
       {"<title id=\"tvp-heat-1-title\">volume 1 (&lt;b&gt;&amp;&quot;\xEF\xBF\xBD): cached",
        "aria-labelledby=\"tvp-heat-1-title tvp-heat-1-desc\"", "cached: 2 of 20 chunks",
        "class=\"h2 dirty\"", "class=\"h3 ssd\"", "prefers-color-scheme: dark"}) {
    EXPECT_NE(svg.find(part), std::string::npos) << part << "\n" << svg;
  }
  const fs::path place = m_directory.path() / "pictures";
  fs::create_directory(place);
  const std::string file = place / "heat.svg";
  ctl({"heat", number, "--svg", file});
  EXPECT_EQ(readFile(file), svg);
  fs::permissions(file, fs::perms::owner_read);
  std::ofstream(place / "kept") << "kept";
  fs::create_symlink(place / "kept", place / "link");
  fs::create_hard_link(file, place / "old");
  remember(id, {{2, 5, 0, 0}});
  EXPECT_EQ(json({"heat", number, "--svg", file})["hotChunks"], 3);
  EXPECT_NE(readFile(file), svg);
  EXPECT_EQ(readFile(place / "old"), svg) << "the file that others have open is not written to";
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read);
  ASSERT_EQ(::mkfifo((place / "fifo").c_str(), 0600), 0);
  for (const char* refused : {"link", "fifo", ".", "nowhere/heat.svg"}) {
    const CommandResult result = ctl({"heat", number, "--svg", place / refused});
    EXPECT_EQ(result.exitStatus, 1) << refused;
    EXPECT_NE(result.err.find("; name "), std::string::npos) << result.err;
  }
  EXPECT_EQ(readFile(place / "kept"), "kept");
  EXPECT_EQ(std::distance(fs::directory_iterator(place), {}), 5) << "nothing is left beside them";
}

TEST_F(HeatCommandTest, VolumeListHasPartsPoolsAndTrouble) {
  EXPECT_EQ(text({"volume", "list"}), "No volumes.\n");
  create("data", TVK_VOLUME_TIERED, 8, 2);
  create("cache", TVK_VOLUME_CACHED, 8, 2);
  EXPECT_EQ(
      text({"volume", "list"}),
      "NUMBER  NAME   TYPE      SIZE  STATE  DEVICE  ON HDD  ON SSD  POOLS       TROUBLE\n"
      "     1  data   tiered  10 MiB  good            8 MiB   2 MiB  slow, fast\n"
      "     2  cache  cached   8 MiB  good            8 MiB   2 MiB  slow, fast\n");
  execute("UPDATE drive SET present = 0 WHERE number = 1");
  EXPECT_EQ(
      json({"volume", "list"})[1],
      (Json{
          {"number", 2},
          {"name", "cache"},
          {"type", "cached"},
          {"sectors", 8 * MIB},
          {"size", "8 MiB"},
          {"hddSectors", 8 * MIB},
          {"hddSize", "8 MiB"},
          {"ssdSectors", 2 * MIB},
          {"ssdSize", "2 MiB"},
          {"pools", {"slow", "fast"}},
          {"state", "degraded"},
          {"trouble", "pool 2 (fast) is degraded: drive 1 (/dev/tvk1) is missing"},
          {"device", nullptr}}));
}

}  // namespace
