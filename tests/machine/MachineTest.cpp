// SPDX-License-Identifier: Apache-2.0
// The emulated machine that other tests rely on: its drives, what comes out of it, how it ends.
#include "support/Command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tvp::test {
namespace {

using testing::HasSubstr;

class Machine : public testing::Test {
protected:
  /** A boot of the machine that runs a script for sh. */
  static Command
  boot(const TemporaryDirectory& scratch, std::vector<std::string> options, const std::string& script) {
    options.insert(options.begin(), TVP_SOURCE_DIR "/tests/machine/run");
    options.insert(options.end(), {"sh", "-c", script});
    return Command(options).with("TMPDIR", scratch.path()).limit(std::chrono::seconds(200));
  }

  const TemporaryDirectory m_directory;
  const TemporaryDirectory m_scratch;  ///< what the launcher leaves behind
};

TEST_F(Machine, KeepsWhatWasSyncedWhenThePowerIsCut) {
  const std::vector<std::string> options = {"--images", m_directory.file("images"), "--ssd", "64M"};
  const CommandResult cut = boot(m_scratch, options, R"(
    set -e
    (cd /sys/block && grep -H . sd?/queue/rotational sd?/size)
    vgcreate -q -q tvp /dev/sda /dev/sdc
    lvcreate -q -q -y -W y -n vol1 -l 4 tvp /dev/sda:0-2 /dev/sdc:0
    mkfs.ext4 -q /dev/tvp/vol1
    mount /dev/tvp/vol1 /mnt
    echo data >/mnt/file
    echo state >/var/lib/voltvk/file
    sync
    echo b >/proc/sysrq-trigger
    sleep 60
  )")
                                .run();
  EXPECT_EQ(cut.exitStatus, 125) << cut.err;
  EXPECT_EQ(cut.out, R"(sda/queue/rotational:1
sdb/queue/rotational:1
sdc/queue/rotational:0
sda/size:4194304
sdb/size:4194304
sdc/size:131072
)");
  EXPECT_THAT(cut.err, HasSubstr("the machine ended before the command"));
  const CommandResult found = boot(m_scratch, options, R"(
    mount /dev/tvp/vol1 /mnt
    cat /mnt/file /var/lib/voltvk/file
    echo error >/dev/stderr
    exit 7
  )")
                                  .run();
  EXPECT_EQ(found.exitStatus, 7);
  EXPECT_EQ(found.out, "data\nstate\n");
  EXPECT_EQ(found.err, "error\n");
  EXPECT_TRUE(std::filesystem::is_empty(m_scratch.path()));
}

TEST_F(Machine, EndsAtItsTimeLimitAndShowsTheConsole) {
  const CommandResult result = boot(m_scratch, {"--timeout", "10"}, "sleep 1000").run();
  EXPECT_EQ(result.exitStatus, 124);
  EXPECT_THAT(result.err, HasSubstr("the last messages of the kernel:\n[ "));
  EXPECT_THAT(result.err, HasSubstr("the time limit of 10 seconds was reached"));
  EXPECT_TRUE(std::filesystem::is_empty(m_scratch.path()));
}

TEST_F(Machine, EndsWithItsLauncher) {
  RunningCommand machine = boot(m_scratch, {}, "echo started; sleep 1000").start();
  ASSERT_TRUE(machine.waitFor("started"));
  machine.signal(SIGTERM);
  EXPECT_EQ(machine.finish().exitStatus, 143);
  EXPECT_TRUE(std::filesystem::is_empty(m_scratch.path()));
}

}  // namespace
}  // namespace tvp::test
