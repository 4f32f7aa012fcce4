// SPDX-License-Identifier: Apache-2.0
// 'tvpcim volume stats --interval' shows what happens while it happens, and ends as it should.
#include "support/Lines.h"
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <csignal>

namespace tvp::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class TvpcimStatistics : public TvpcimTest {
protected:
  void SetUp() override {
    const std::string hardDisk = addDrive("hdd", "1GiB");
    answer({"pool", "create", "slow", "--drives", hardDisk, "--size", "1GiB"});
    answer({"pool", "create", "fast", "--drives", addDrive("ssd", "1GiB"), "--size", "1GiB"});
    answer({"volume", "create", "data", "--pool", "slow:100MiB", "--pool", "fast:32MiB"});
  }

  static Words watch(const Words& more) {
    Words words = {"volume", "stats", "data", "--interval"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  RunningCommand watching(const Words& more, unsigned short columns = 0, unsigned short rows = 0) const {
    return command("tvpcim", watch(more)).terminal(columns, rows).start();
  }
};

TEST_F(TvpcimStatistics, RatesHitsAndMovesAreThoseOfTheInterval) {
  RunningCommand watch = watching({"0.1", "-o", "json"});
  ASSERT_TRUE(watch.waitFor("\n"));
  voltvkctl({"io", "data", "--reads", "300", "--writes", "100", "--hot", "100"});
  voltvkctl({"policy", "run"});
  ASSERT_TRUE(watch.waitFor("\"MovedChunks\":16}\n"));
  voltvkctl({"io", "data", "--reads", "600", "--hot", "100"});
  ASSERT_TRUE(watch.waitFor("\"SSDHitRatio\":1.0"));
  watch.signal(SIGINT);
  const CommandResult result = watch.finish();
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  double reads = 0;
  double writes = 0;
  for (const std::string& line : linesOf(result.out)) {
    const Json rates = Json::parse(line);
    EXPECT_EQ(rates.at("VolumeName"), "data");
    reads += rates.at("ReadsPerSecond").get<double>() * rates.at("Seconds").get<double>();
    writes += rates.at("WritesPerSecond").get<double>() * rates.at("Seconds").get<double>();
    if (rates.at("MovedChunks") == 16) {
      break;  // whatever was read before the move is in the lines up to here
    }
  }
  EXPECT_NEAR(reads, 300, 2);
  EXPECT_NEAR(writes, 100, 2);
}

TEST_F(TvpcimStatistics, LinesAreAlignedAndAsManyAsWereAskedFor) {
  const CommandResult file = watching({"0.1", "--count", "3"}).finish();
  EXPECT_EQ(file.exitStatus, 0) << file.err;
  const std::vector<std::string> lines = linesOf(file.out);
  ASSERT_EQ(lines.size(), 4U) << file.out;
  EXPECT_THAT(lines[0], MatchesRegex("TIME +READS/S +WRITES/S +SEQ/S +RANDOM/S +SSD HIT +MOVED"));
  for (const std::string& line : lines) {
    EXPECT_EQ(line.size(), lines[0].size()) << line;
  }
  const struct {
    unsigned short rows;
    const char* count;
    std::size_t titles;
  } terminals[] = {{0, "3", 1}, {1, "3", 1}, {2, "3", 1}, {3, "3", 3}, {25, "25", 2}};
  for (const auto& [rows, count, expected] : terminals) {
    const CommandResult terminal = watching({"0.1", "--count", count}, 40, rows).finish();
    EXPECT_EQ(terminal.exitStatus, 0) << "rows: " << rows << terminal.err;
    std::size_t titles = 0;
    for (const std::string& line : linesOf(terminal.out)) {
      titles += line.rfind("TIME", 0) == 0 ? 1 : 0;
      EXPECT_LE(line.size(), 40U + 3) << line;
    }
    EXPECT_EQ(titles, expected) << "rows: " << rows << "\n" << terminal.out;
  }
}

TEST_F(TvpcimStatistics, MovesAreCountedFromTheFirstAnswerOn) {
  voltvkctl({"io", "data", "--reads", "300", "--hot", "100"});
  voltvkctl({"policy", "run"});
  const std::string flag = directory().file("asked");
  const struct {
    std::string script;
    const char* moved;
  } cases[] = {
      {"test -e " + flag + " || { : > " + flag + "; exit 1; }; exec " TVP_BINARY_DIR "/bin/voltvkctl \"$@\"",
       "[null,0]"},
      {"echo '[{\"number\": 1}]'", "[null,null]"},  // of another version
      {"echo '[]'", "[0,0]"},
  };
  for (const auto& [script, moved] : cases) {
    const CommandResult result = besideScript(script, watch({"0.1", "--count", "2", "-o", "json"})).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    Json shown = Json::array();
    for (const std::string& line : linesOf(result.out)) {
      shown.push_back(Json::parse(line).at("MovedChunks"));
    }
    EXPECT_EQ(shown.dump(), moved) << script;
  }
}

TEST_F(TvpcimStatistics, AVolumeThatVanishesEndsIt) {
  RunningCommand watch = watching({"0.1"});
  ASSERT_TRUE(watch.waitFor("0.0"));
  answer({"volume", "delete", "data"});
  const CommandResult result = watch.finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "tvpcim: volume stats: volume 'data' is gone: it was deleted while it was watched\n");
}

TEST_F(TvpcimStatistics, BadIntervalsAndCountsAreRefused) {
  for (const Words& more : std::vector<Words>{
           {"--interval", "0"},
           {"--interval", "-1"},
           {"--interval", "x"},
           {"--interval", "1e9"},
           {"--interval", "nan"},
           {"--interval", "1", "--count", "0"},
           {"--interval", "1", "--count", "1.5"},
           {"--count", "1"}}) {
    Words words = {"volume", "stats", "data"};
    words.insert(words.end(), more.begin(), more.end());
    const CommandResult result = command("tvpcim", words).limit(std::chrono::seconds(60)).run();
    EXPECT_EQ(result.exitStatus, 2) << testing::PrintToString(more) << result.err;
    EXPECT_THAT(result.err, HasSubstr("tvpcim volume stats --help"));
  }
  EXPECT_EQ(watching({"0.1", "--count", "1", "-n"}).finish().exitStatus, 2);
}

}  // namespace
}  // namespace tvp::test
