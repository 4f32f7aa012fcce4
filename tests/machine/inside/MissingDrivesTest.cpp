// SPDX-License-Identifier: Apache-2.0
// The real backing when drives are taken out of the emulated machine.
#include "machine/inside/RealVolumesFixture.h"

#include <gmock/gmock.h>

namespace voltvk {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using tvp::test::shell;

TEST_F(RealVolumes, AreAsBeforeIfADriveIsPulledOutThatWasBeingAdded) {
  pool(1, 1, {0}, 100);
  makePools();
  const VolumeRecord tiered = volume(1, TVK_VOLUME_TIERED, 1, 20, 0, {{1, {0, 20}}});
  m_backing.makeVolume(tiered, m_configuration);
  fill(1);
  const PoolRecord before = m_configuration.pools[0];
  for (const bool replaces : {false, true}) {
    if (replaces) {
      EXPECT_EQ(
          statusOf([&] {
            m_backing.replaceDrive(before, {0, 1}, m_configuration, [](auto...) { return false; });
          }),
          TVK_BACKING_FAILED);
    } else {
      m_configuration.pools[0].members.push_back({1, 100});
      m_backing.extendPool(m_configuration.pools[0], m_configuration);
      m_configuration.pools[0] = before;
    }
    EXPECT_THAT(
        m_backing.differences(m_configuration), testing::Contains(HasSubstr("/dev/sdb has the marks")));
    const std::string back = comeBack("sdb");
    pull("sdb");
    if (replaces) {
      EXPECT_TRUE(m_backing.undoReplacement(before, {0, 1}, m_configuration));
    } else {
      m_backing.releaseDrive(before, 1, m_configuration);
    }
    m_backing.activate();
    EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
    expectFilled(1);
    putBack("sdb", back);
    EXPECT_EQ(shell("wipefs -qa /dev/sdb"), "");
  }
}

TEST_F(RealVolumes, AreNeverLeftOnADriveThatIsMissing) {
  pool(1, 1, {0}, 100);
  makePools();
  // Two pieces, of which one is moved.
  const VolumeRecord tiered = volume(1, TVK_VOLUME_TIERED, 1, 20, 0, {{1, {0, 10}}, {1, {50, 10}}});
  m_backing.makeVolume(tiered, m_configuration);
  fill(1);
  const PoolRecord before = m_configuration.pools[0];
  const auto replace = [&](const MoveProgress& progress) {
    return statusOf([&] { m_backing.replaceDrive(before, {0, 1}, m_configuration, progress); });
  };
  EXPECT_EQ(replace([](auto moved, auto) { return moved == 0; }), TVK_BACKING_FAILED);
  for (const std::string drive : {"sdb", "sda"}) {
    const std::string back = comeBack(drive);
    pull(drive);
    const bool isKnown = statusOf([&] {
                           EXPECT_FALSE(m_backing.undoReplacement(before, {0, 1}, m_configuration));
                         }) == TVK_OK;
    EXPECT_EQ(isKnown, drive == "sda") << "whether something was moved";
    EXPECT_NE(replace({}), TVK_OK);
    putBack(drive, back);
    m_backing.activate();
    expectFilled(1);
  }
  EXPECT_EQ(replace({}), TVK_OK);
  m_configuration.pools[0].members[0].drive = 1;
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
  expectFilled(1);
}

TEST_F(RealVolumes, AreRemovedThoughADriveIsDead) {
  pool(1, 1, {0}, 100);
  pool(2, 1, {3}, 100);
  pool(3, 1, {1}, 100);
  makePools();
  const VolumeRecord tiered = volume(1, TVK_VOLUME_TIERED, 1, 20, 20, {{1, {0, 20}}, {2, {0, 20}}});
  const VolumeRecord cached = volume(2, TVK_VOLUME_CACHED, 1, 64, 40, {{1, {30, 64}}, {2, {30, 40}}});
  m_backing.makeVolume(tiered, m_configuration);
  m_backing.makeVolume(cached, m_configuration);
  fill(1);
  // A drive that comes back is used again, also after the group was changed without it.
  const std::string back = comeBack("sdd");
  const auto die = [] { shell("echo 1 > /sys/block/sdd/device/delete"); };
  shell("lvm vgchange -an tvp");
  die();
  m_backing.activate();
  EXPECT_EQ(m_backing.differences(m_configuration).size(), 3U);
  shell("lvm lvchange --addtag other tvp/vol1");
  shell(back);
  EXPECT_THAT(m_backing.differences(m_configuration), Each(AllOf(HasSubstr("missing"))));
  m_backing.activate();
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
  expectFilled(1);
  // One that does not is dropped with its pool.
  die();
  std::string sentence;
  EXPECT_EQ(
      statusOf([&] { m_backing.removePool(m_configuration.pools[1], m_configuration); }), TVK_BACKING_FAILED);
  EXPECT_EQ(
      statusOf([&] { m_backing.removePool(m_configuration.pools[2], m_configuration); }, &sentence),
      TVK_BACKING_FAILED);
  EXPECT_THAT(sentence, HasSubstr("while PVs are missing"));
  m_backing.removeVolume(1);
  m_backing.removeVolume(2);
  m_backing.removePool(m_configuration.pools[1], m_configuration);
  EXPECT_EQ(shell("lvm lvs --noheadings -a tvp"), "");
  EXPECT_EQ(m_backing.differences(m_configuration).size(), 3U);
  shell(back);
  shell("wipefs -a /dev/sdd");
}

}  // namespace
}  // namespace voltvk
