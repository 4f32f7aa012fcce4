// SPDX-License-Identifier: Apache-2.0
// The real backing on the drives of the emulated machine: what it makes, moves and removes, and what it
// leaves alone. Refuses to run anywhere else.
#include "machine/inside/RealVolumesFixture.h"

#include <gmock/gmock.h>

namespace voltvk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tvp::test::shell;

TEST_F(RealVolumes, AreMadeChangedComparedRecoveredAndRemoved) {
  EXPECT_EQ(statusOf([&] { m_backing.requireUsable(); }), TVK_OK);
  pool(1, 4, {0, 1}, 60);
  pool(2, 4, {2}, 40);
  makePools();
  makePools();
  // From both drives of its pool, in two pieces on the first one.
  VolumeRecord tiered = volume(7, TVK_VOLUME_TIERED, 4, 20, 10, {{1, {50, 14}}, {1, {0, 6}}, {2, {3, 10}}});
  m_backing.makeVolume(tiered, m_configuration);
  m_backing.makeVolume(tiered, m_configuration);
  EXPECT_EQ(layout(tiered), "1:50+10 1:60+4 1:0+6 2:3+10 ");
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
  EXPECT_EQ(m_backing.devicePath(7), "/dev/tvp/vol7");
  fill(7);
  EXPECT_FALSE(m_backing.takeCounters(tiered).areas.empty());

  m_configuration.volumes[0].name = tiered.name = "renamed";
  m_configuration.pools[0].description = "other";
  EXPECT_EQ(m_backing.differences(m_configuration).size(), 3U);
  m_backing.describeVolume(tiered);
  m_backing.describePool(m_configuration.pools[0], m_configuration);
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());

  const Configuration recovered = m_backing.recovered(m_configuration.drives);
  ASSERT_EQ(recovered.pools.size(), 2U);
  ASSERT_EQ(recovered.volumes.size(), 1U);
  EXPECT_EQ(recovered.pools[0].name, m_configuration.pools[0].name);
  EXPECT_EQ(recovered.pools[0].chunks, 116U);
  EXPECT_EQ(recovered.pools[0].members[1].drive, 1);
  EXPECT_EQ(recovered.volumes[0].name, "renamed");
  EXPECT_EQ(text(recovered.volumes[0].extents), "1:50+14 1:0+6 2:3+10 ");

  {
    const FileDescriptor open(::open("/dev/tvp/vol7", O_RDONLY));
    EXPECT_TRUE(m_backing.isOpen(7));
    std::string sentence;
    EXPECT_EQ(statusOf([&] { m_backing.removeVolume(7); }, &sentence), TVK_VOLUME_OPEN);
    EXPECT_THAT(sentence, HasSubstr("/dev/tvp/vol7"));
  }
  EXPECT_EQ(
      statusOf([&] { m_backing.removePool(m_configuration.pools[1], m_configuration); }), TVK_BACKING_FAILED);
  expectFilled(7);
  m_backing.removeVolume(7);
  m_backing.removeVolume(7);
  EXPECT_EQ(m_backing.devicePath(7), "");
}

TEST_F(RealVolumes, KeepTheirContentsWhileChunksMove) {
  for (const bool mixed : {false, true}) {
    m_configuration.pools.clear();
    m_configuration.volumes.clear();
    // The chunks of a volume are those of its SSDs; with smaller ones on hard disks they are in pieces there.
    const std::uint64_t hddChunk = mixed ? 1 : 4;
    const std::uint64_t scale = 4 / hddChunk;
    pool(1, hddChunk, {0, 1}, 20 * scale);
    pool(2, 4, {2}, 8);
    makePools();
    const VolumeRecord tiered = volume(
        1, TVK_VOLUME_TIERED, 4, 10, 4, {{1, {16 * scale, 8 * scale}}, {1, {0, 2 * scale}}, {2, {0, 4}}});
    m_backing.makeVolume(tiered, m_configuration);
    fill(1);
    // Four chunks of the SSD are free: a round without demotions, then one with them, twice.
    m_backing.exchange(tiered, {}, {0, 4, 5}, m_configuration);
    expectFilled(1);
    m_backing.exchange(tiered, {0, 10, 11}, {3, 9}, m_configuration);
    m_backing.exchange(tiered, {0, 10, 11}, {3, 9}, m_configuration);
    expectFilled(1);
    std::uint64_t onSsd = 0;
    std::uint64_t sectors = 0;
    for (const VolumeExtentRecord& part : m_backing.layout(tiered, m_configuration)) {
      onSsd += part.pool == 2 ? part.extent.chunks : 0;
      sectors += part.extent.chunks * m_configuration.pools[part.pool - 1].chunkSectors;
    }
    EXPECT_EQ(onSsd, 6U);
    EXPECT_EQ(sectors, tiered.capacitySectors());
    std::string sentence;
    EXPECT_EQ(
        statusOf(
            [&] {
              m_backing.exchange(tiered, {}, {0, 1, 2}, m_configuration);
            },
            &sentence),
        TVK_NOT_ENOUGH_SPACE);
    EXPECT_THAT(sentence, HasSubstr("2 free chunks for moves, and 3 are needed"));
    EXPECT_THAT(m_backing.differences(m_configuration), ElementsAre(HasSubstr("chunks elsewhere")));
    m_backing.removeVolume(1);
    m_backing.removePool(m_configuration.pools[1], m_configuration);
    m_backing.removePool(m_configuration.pools[0], m_configuration);
  }
}

TEST_F(RealVolumes, AreCompleteAfterAMoveThatWasCutOff) {
  pool(1, 4, {0, 1}, 100);
  makePools();
  const VolumeRecord tiered = volume(1, TVK_VOLUME_TIERED, 4, 75, 0, {{1, {0, 75}}});
  m_backing.makeVolume(tiered, m_configuration);
  const std::string sum = "dd if=/dev/tvp/vol1 bs=1M skip=284 iflag=direct 2>/dev/null | sha256sum";
  shell("dd if=/dev/urandom of=/dev/tvp/vol1 bs=1M count=16 seek=284 oflag=direct");
  const std::string before = shell(sum);
  // Once it says how far it is, the volume is in use with its two copies.
  shell("rm -f /tmp/move; lvm pvmove --atomic -i 900 -n vol1 /dev/sda:8-299 /dev/sdb:8-299 > /tmp/move & "
        "for i in $(seq 300); do grep -q Moved /tmp/move && break; sleep 0.1; done; kill -9 $!");
  EXPECT_THAT(m_backing.differences(m_configuration), testing::Contains(HasSubstr("is not completed")));
  EXPECT_EQ(layout(tiered), "1:0+2 1:102+73 ");
  EXPECT_EQ(shell(sum), before);
}

TEST_F(RealVolumes, WriteBackTheirCache) {
  pool(1, 1, {0}, 100);
  pool(2, 1, {3}, 100);
  makePools();
  const VolumeRecord cached = volume(3, TVK_VOLUME_CACHED, 1, 64, 40, {{1, {0, 64}}, {2, {10, 40}}});
  m_backing.makeVolume(cached, m_configuration);
  m_backing.makeVolume(cached, m_configuration);
  EXPECT_EQ(layout(cached), "1:0+64 2:10+40 ");
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
  fill(3);
  shell("dd if=/dev/tvp/vol3 of=/dev/tvp/vol3 bs=1M count=20 oflag=direct conv=notrunc");
  const std::uint64_t dirty = m_backing.counters(cached).cache.dirtyBlocks;
  EXPECT_GT(dirty, 0U) << shell("dmsetup status");
  std::vector<std::uint64_t> seen;
  m_backing.flush(cached, [&](std::uint64_t left) {
    seen.push_back(left);
    EXPECT_THAT(shell("dmsetup table tvp-vol3"), HasSubstr("cleaner"));
    return true;
  });
  EXPECT_EQ(m_backing.takeCounters(cached).cache.dirtyBlocks, 0U);
  EXPECT_THAT(shell("dmsetup table tvp-vol3"), testing::Not(HasSubstr("cleaner")));
  shell("lvm lvchange --cachepolicy cleaner tvp/vol3");
  EXPECT_THAT(m_backing.differences(m_configuration), ElementsAre(HasSubstr("only writes back")));
  m_backing.endFlush(cached);
  EXPECT_THAT(m_backing.differences(m_configuration), IsEmpty());
  expectFilled(3);
  shell("lvm vgchange -an tvp");
  EXPECT_THAT(m_backing.differences(m_configuration), ElementsAre(HasSubstr("is not active")));
  m_backing.activate();
  expectFilled(3);
}

TEST_F(RealVolumes, ThatWereHalfMadeAreCompletedOrRemoved) {
  pool(1, 1, {0, 1}, 100);
  pool(2, 1, {2}, 100);
  makePools();
  const VolumeRecord cached = volume(3, TVK_VOLUME_CACHED, 1, 64, 40, {{1, {80, 64}}, {2, {10, 40}}});
  const std::string origin = "lvm lvcreate -y -n vol3 --addtag tvp.volume=3 -l 20 tvp /dev/sda:80-99";
  const std::string cache = "lvm lvcreate -y -n vol3_cache --addtag tvp.volume=3 -l 40 tvp /dev/sdc:10-49";
  std::string both = origin;
  both += " && ";
  both += cache;
  for (const std::string& made : {origin, cache, both}) {
    shell(made);
    m_backing.makeVolume(cached, m_configuration);
    EXPECT_EQ(layout(cached), "1:80+20 1:100+44 2:10+40 ") << made;
    m_backing.removeVolume(3);
    shell(made);
    m_backing.removeVolume(3);
    EXPECT_EQ(shell("lvm lvs --noheadings -a tvp"), "") << made;
  }
  // A drive that is claimed without being in the group, and one that is in the group without tags.
  shell("lvm vgreduce tvp /dev/sdb && lvm pvchange --deltag tvp.pool=1 /dev/sda");
  EXPECT_EQ(m_backing.differences(m_configuration).size(), 4U);
  m_backing.makePool(m_configuration.pools[0], m_configuration);
  shell("lvm vgreduce tvp /dev/sdb && lvm pvchange --deltag tvp.pool=1 /dev/sda");
  m_backing.removePool(m_configuration.pools[0], m_configuration);
  m_backing.removePool(m_configuration.pools[0], m_configuration);
  m_backing.removePool(m_configuration.pools[1], m_configuration);
  EXPECT_EQ(shell("lvm pvs --noheadings"), "");
}

TEST_F(RealVolumes, LeaveAloneWhatBelongsToSomebodyElse) {
  pool(1, 1, {0, 1}, 100);
  shell("mkfs.ext4 -q /dev/sdb");
  EXPECT_EQ(statusOf([&] { makePools(); }), TVK_DEVICE_NOT_ELIGIBLE);
  m_backing.removePool(m_configuration.pools[0], m_configuration);
  EXPECT_THAT(shell("blkid /dev/sdb"), HasSubstr("ext4"));
  EXPECT_EQ(shell("lvm pvs --noheadings"), "") << "no drive is claimed if one cannot be";
  shell("wipefs -a /dev/sdb; lvm pvcreate /dev/sdb");
  EXPECT_EQ(statusOf([&] { makePools(); }), TVK_DEVICE_NOT_ELIGIBLE);
  m_backing.removePool(m_configuration.pools[0], m_configuration);
  EXPECT_THAT(shell("lvm pvs --noheadings"), HasSubstr("/dev/sdb"));

  shell("lvm vgcreate tvp /dev/sdb");
  for (const auto& step : std::vector<std::function<void()>>{
           [&] { m_backing.requireUsable(); }, [&] { makePools(); },
           [&] { m_backing.recovered(m_configuration.drives); }}) {
    EXPECT_EQ(statusOf(step), TVK_BACKING_UNAVAILABLE);
  }
  m_backing.removePool(m_configuration.pools[0], m_configuration);
  EXPECT_THAT(m_backing.differences(m_configuration), ElementsAre(HasSubstr("belongs to somebody else")));
  shell("lvm vgremove tvp && lvm pvremove /dev/sdb");

  makePools();
  shell("lvm lvcreate -y -n theirs -l 5 tvp /dev/sda:0-4 && lvm lvcreate -y -n vol2 -l 5 tvp /dev/sda:10-14");
  const VolumeRecord tiered = volume(2, TVK_VOLUME_TIERED, 1, 20, 0, {{1, {20, 20}}});
  std::string sentence;
  EXPECT_EQ(statusOf([&] { m_backing.makeVolume(tiered, m_configuration); }, &sentence), TVK_BACKING_FAILED);
  EXPECT_THAT(sentence, HasSubstr("tvp/vol2 belongs to somebody else"));
  m_backing.removeVolume(2);
  EXPECT_THAT(m_backing.differences(m_configuration), testing::Contains(HasSubstr("tvp/theirs belongs to")));
  EXPECT_EQ(
      statusOf([&] { m_backing.removePool(m_configuration.pools[0], m_configuration); }, &sentence),
      TVK_BACKING_FAILED);
  EXPECT_THAT(sentence, HasSubstr("tvp/theirs is on its drive /dev/sda"));
  EXPECT_EQ(shell("lvm lvs --noheadings -o lv_name tvp"), "  theirs\n  vol2  \n");
  shell("lvm lvremove -y tvp/theirs tvp/vol2");
}

}  // namespace
}  // namespace voltvk
