// SPDX-License-Identifier: Apache-2.0
// A dry run shows what a change would make and changes nothing; deleting asks on a terminal; shares of what
// there is are sizes.
#include "support/Lines.h"
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <algorithm>

#include <pty.h>
#include <sys/wait.h>

namespace tvp::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint64_t MIB = 2048;  // sectors

class TvpcimTrial : public TvpcimTest {
protected:
  void SetUp() override {
    m_hardDisk = addDrive("hdd", "1GiB");
    answer({"pool", "create", "slow", "--drives", addDrive("hdd", "1GiB"), "--size", "1GiB"});
    answer(
        {"pool", "create", "fast", "--drives", addDrive("ssd", "1GiB"), "--size", "512MiB", "--chunk",
         "4MiB"});
  }

  /** Runs a command on a terminal that answers its question. @return what the terminal showed */
  std::string onTerminal(const Words& words, const std::string& answer) const {
    std::vector<std::string> line = {TVP_BINARY_DIR "/bin/tvpcim"};
    line.insert(line.end(), words.begin(), words.end());
    std::vector<char*> pointers(line.size() + 1);  // the last one stays null
    std::transform(line.begin(), line.end(), pointers.begin(), [](std::string& word) { return word.data(); });
    ::setenv("VOLTVK_STATE", directory().file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", "/nonexistent", 1);
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
      ::execv(pointers[0], pointers.data());
      ::_exit(127);
    }
    std::string seen;
    char buffer[1024];
    for (ssize_t count = 1; count > 0;) {
      count = ::read(terminal, buffer, sizeof buffer);
      seen.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
      if (seen.size() > 7 && seen.substr(seen.size() - 7) == " [y/N] ") {
        EXPECT_EQ(::write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
      }
    }
    ::close(terminal);
    ::waitpid(child, nullptr, 0);
    return seen;
  }

  std::string m_hardDisk;
};

TEST_F(TvpcimTrial, ADryRunShowsTheOutcomeAndChangesNothing) {
  answer({"volume", "create", "data", "--pool", "slow:100MiB", "--pool", "fast:8MiB"});
  const auto state = [&] {
    return answer({"tree"}).dump() + answer({"volumes"}).dump() + answer({"pools"}).dump() +
           voltvkctl({"events", "--count", "4096"}) + voltvkctl({"-o", "json", "status"});
  };
  const std::string before = state();
  const struct {
    Words words;
    int exitStatus;
    const char* text;
  } cases[] = {
      {{"pool", "create", "more", "--drives", m_hardDisk, "--size", "64MiB"},
       0,
       "Nothing was changed; pool 3 (more) would be created:\n"},
      {{"pool", "modify", "slow", "--name", "slower"}, 0, "pool 1 (slower) would be changed:\n"},
      {{"volume", "create", "v", "--pool", "slow:max"}, 0, "volume 2 (v) would be created:\n"},
      {{"volume", "cache", "v", "--drive", m_hardDisk, "--size", "max", "--ssd-pool", "fast", "--ssd-size",
        "25%"},
       0,
       "volume 2 (v) would be created:\n"},
      {{"volume", "modify", "data", "--knob", "passive"}, 0, "Passive"},
      {{"volume", "reset-stats", "data"}, 0, "volume 1 (data) would be given statistics of 0.\n"},
      {{"volume", "delete", "data"}, 0, "Nothing was changed; volume 1 (data) would be deleted.\n"},
      {{"pool", "delete", "slow"},
       1,
       "hint: pool 1 (slow) is used by volume 1 (data); delete what uses it first"},
      {{"volume", "create", "v", "--pool", "slow:2GiB"}, 1, "slow"},
      {{"im", "TVP_TierService", "DeleteVirtualVolume", "VirtualVolumeId=1"}, 0, "nothing was changed"},
      {{"pools"}, 2, "--dry-run is for verbs that change something: pool create, "},
      {{"serve"}, 2, "--dry-run is for verbs"},
      {{"pool", "delete", "slow", "--url", "http://127.0.0.1:1"}, 2, "which a server cannot do"},
  };
  for (const auto& [words, exitStatus, text] : cases) {
    Words dry = {"-n"};
    dry.insert(dry.end(), words.begin(), words.end());
    const CommandResult result = tvpcim(dry);
    EXPECT_EQ(result.exitStatus, exitStatus) << text << result.err;
    EXPECT_THAT(result.out + result.err, HasSubstr(text));
    EXPECT_EQ(state(), before) << text;
  }
  const Json made =
      answer({"--dry-run", "pool", "create", "more", "--drives", m_hardDisk, "--size", "64MiB"});
  EXPECT_EQ(made.at("Name"), "more");
  EXPECT_EQ(made.at("DryRun"), true);
  EXPECT_EQ(made.at("Members").at(0).at("DeviceNumber").dump(), m_hardDisk) << "where it would lie";

  // What the storage library is told by the environment, people are told.
  const struct {
    Words words;
    const char* value;
    int exitStatus;
    const char* text;
  } prescribed[] = {
      {{"volume", "delete", "data"}, "1", 0, "Nothing was changed; volume 1 (data) would be deleted.\n"},
      {{"volume", "delete", "data"}, "yes", 0, "Nothing was changed; "},
      {{"pools"}, "1", 0, "slow"},
      {{"serve"}, "1", 2, "VOLTVK_DRY_RUN is set, so no client's change would be kept; unset it"},
      {{"pools", "--url", "http://127.0.0.1:1"}, "1", 1, "127.0.0.1"},
  };
  for (const auto& [words, value, exitStatus, text] : prescribed) {
    const CommandResult result = command("tvpcim", words).with("VOLTVK_DRY_RUN", value).run();
    EXPECT_EQ(result.exitStatus, exitStatus) << text << result.err;
    EXPECT_THAT(result.out + result.err, HasSubstr(text));
    EXPECT_EQ(state(), before) << text;
  }
  EXPECT_EQ(command("tvpcim", {"volume", "delete", "data"}).with("VOLTVK_DRY_RUN", "0").run().exitStatus, 0);
  EXPECT_NE(state(), before);
}

TEST_F(TvpcimTrial, DeletingAsksOnATerminalAndNowhereElse) {
  answer({"volume", "create", "data", "--pool", "slow:100MiB", "--pool", "fast:8MiB"});
  answer(
      {"volume", "cache", "mail", "--drive", m_hardDisk, "--size", "1GiB", "--ssd-pool", "fast", "--ssd-size",
       "64MiB"});
  // A volume that has grown has several extents on a pool.
  voltvkctl({"volume", "grow", "data", "116MiB", "--pool", "fast"});
  const std::string drive = "drive " + m_hardDisk + " (/dev/tvk" + m_hardDisk + ")";
  for (const char* no : {"n\n", "\n", "\x04"}) {
    EXPECT_THAT(
        onTerminal({"volume", "delete", "mail"}, no),
        AllOf(
            HasSubstr("Delete volume 2 (mail), 1 GiB, and all data in it, which frees "), HasSubstr(drive),
            HasSubstr("its part of pool 2 (fast)"), HasSubstr("not confirmed, so nothing was deleted")));
  }
  EXPECT_THAT(
      onTerminal({"volume", "delete", "data"}, "n\n"),
      HasSubstr("which frees its part of pool 1 (slow) and its part of pool 2 (fast)? "));
  EXPECT_EQ(answer({"volumes"}).size(), 2U);
  EXPECT_THAT(onTerminal({"volume", "delete", "mail"}, "y\n"), HasSubstr("VirtualVolumeId  2"));
  EXPECT_THAT(onTerminal({"volume", "delete", "data", "--yes"}, ""), StartsWith("ReturnValue"));
  EXPECT_THAT(
      onTerminal({"pool", "delete", "slow"}, "yes\n"),
      AllOf(
          StartsWith("Delete pool 1 (slow), 1 GiB on drive 1 (/dev/tvk1)? [y/N] "),
          HasSubstr("VirtualPoolId")));
  EXPECT_EQ(tvpcim({"pool", "delete", "fast"}).exitStatus, 0);
}

TEST_F(TvpcimTrial, SharesAreOfTheRoomThatThereIs) {
  const auto capacity = [&](const Words& words) {
    answer(words);
    return answer({"volumes"}).back().at("CapacityInSectors").get<std::uint64_t>();
  };
  EXPECT_EQ(capacity({"volume", "create", "a", "--pool", "slow:25%", "--pool", "fast:1%"}), (256 + 4) * MIB)
      << "in chunks of the volume, 4 MiB";
  EXPECT_EQ(capacity({"volume", "create", "b", "--pool", "slow:50 %"}), 384 * MIB) << "of what is free";
  EXPECT_EQ(capacity({"volume", "create", "c", "--pool", "slow:max"}), 384 * MIB);
  EXPECT_EQ(
      capacity(
          {"volume", "cache", "d", "--drive", m_hardDisk, "--size", "max", "--ssd-pool", "fast", "--ssd-size",
           "100%"}),
      1024 * MIB);
  EXPECT_EQ(answer({"volume", "stats", "d"}).at("SSD_VDExtraChunks"), 508)
      << "512 MiB less the 4 of the first, in chunks of 1 MiB";
  const struct {
    const char* share;
    int exitStatus;
    const char* text;
  } cases[] = {
      {"slow:max", 1, "pool 1 (slow) has 0 B free, of which 'max' is less than a chunk"},
      {"slow:0%", 2, "the size '0%' cannot be read"},
      {"slow:101%", 2, "the size '101%' cannot be read"},
      {"slow:1.5%", 2, "the size '1.5%' cannot be read"},
      {"slow:MAX", 2, "the size 'MAX' cannot be read"},
      {"slow:%", 2, "the size '%' cannot be read"},
      {"slow:", 2, "cannot be read"},
  };
  for (const auto& [share, exitStatus, text] : cases) {
    const CommandResult result = tvpcim({"volume", "create", "e", "--pool", share});
    EXPECT_EQ(result.exitStatus, exitStatus) << share << result.err;
    EXPECT_THAT(result.err, HasSubstr(text));
  }
}

}  // namespace
}  // namespace tvp::test
