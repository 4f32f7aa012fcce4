// SPDX-License-Identifier: Apache-2.0
// The real backing on the drives of the emulated machine: what it makes, moves and removes, and what it
// leaves alone. Refuses to run anywhere else.
#include "machine/inside/Shell.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/backing/lvm/LvmBacking.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace voltvk {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tvp::test::isEmulatedMachine;
using tvp::test::shell;

constexpr std::size_t MIB = 1048576;
constexpr std::uint64_t MIB_SECTORS = 2048;

/** The status with which a step is refused; TVK_OK if it is not. */
template <typename Step>
TvkStatus statusOf(const Step& step, std::string* sentence = nullptr) {
  try {
    step();
    return TVK_OK;
  } catch (const Refusal& refusal) {
    if (sentence != nullptr) {
      *sentence = refusal.what();
    }
    return refusal.status();
  }
}

std::string text(const std::vector<VolumeExtentRecord>& layout) {
  std::string result;
  for (const VolumeExtentRecord& part : layout) {
    result += std::to_string(part.pool) + ":" + std::to_string(part.extent.first) + "+" +
              std::to_string(part.extent.chunks) + " ";
  }
  return result;
}

class RealVolumes : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(isEmulatedMachine()) << "this test writes to drives; run it with tests/machine/run";
    for (std::uint16_t number = 0; number < 4; ++number) {
      DriveRecord drive;
      drive.number = number;
      drive.name = std::string("/dev/sd") + static_cast<char>('a' + number);
      drive.type = number < 2 ? 1 : 2;
      std::ifstream("/sys/class/block/" + drive.name.substr(5) + "/size") >> drive.sectors;
      m_configuration.drives.push_back(drive);
    }
  }

  void TearDown() override {
    for (const VolumeRecord& volume : m_configuration.volumes) {
      EXPECT_EQ(statusOf([&] { m_backing.removeVolume(volume.id); }), TVK_OK);
    }
    for (const PoolRecord& pool : m_configuration.pools) {
      EXPECT_EQ(statusOf([&] { m_backing.removePool(pool, m_configuration); }), TVK_OK);
    }
    EXPECT_EQ(shell("blkid -p /dev/sd[abcd]"), "(status 2)") << shell("lvm pvs -a; lvm lvs -a tvp");
  }

  PoolRecord pool(
      std::uint32_t id, std::uint64_t chunkMib, const std::vector<std::uint16_t>& drives,
      std::uint64_t chunks) {
    PoolRecord made;
    made.id = id;
    made.name = "pool \xC3\xA4 " + std::to_string(id);
    made.tierLevel = drives.front() < 2 ? TVK_TIER_HDD : TVK_TIER_SSD;
    made.chunkSectors = chunkMib * MIB_SECTORS;
    made.chunks = chunks * drives.size() - 4;
    for (const std::uint16_t drive : drives) {
      made.members.push_back({drive, chunks});
    }
    m_configuration.pools.push_back(made);
    return made;
  }

  VolumeRecord volume(
      std::uint32_t id, std::uint8_t type, std::uint64_t chunkMib, std::uint64_t hdd, std::uint64_t ssd,
      const std::vector<VolumeExtentRecord>& extents) {
    VolumeRecord made;
    made.id = id;
    made.name = "volume " + std::to_string(id);
    made.type = type;
    made.knob = TVK_KNOB_NORMAL;
    made.deviceNumber = 1;
    made.chunkSectors = chunkMib * MIB_SECTORS;
    made.hddChunks = hdd;
    made.ssdChunks = ssd;
    made.extents = extents;
    m_configuration.volumes.push_back(made);
    return made;
  }

  void makePools() {
    for (const PoolRecord& one : m_configuration.pools) {
      m_backing.makePool(one, m_configuration);
    }
  }

  /** Writes something else to each MiB of a volume. */
  void fill(std::uint32_t id) {
    const FileDescriptor device(open(m_backing.devicePath(id).c_str(), O_WRONLY));
    std::vector<char> block(MIB);
    for (std::size_t index = 0; index < sizeOf(id); ++index) {
      mark(block, id, index);
      ASSERT_EQ(pwrite(device.get(), block.data(), MIB, static_cast<off_t>(index * MIB)), MIB);
    }
    ASSERT_EQ(fsync(device.get()), 0);
  }

  void expectFilled(std::uint32_t id) {
    const FileDescriptor device(open(m_backing.devicePath(id).c_str(), O_RDONLY));
    ioctl(device.get(), BLKFLSBUF);
    std::vector<char> block(MIB);
    std::vector<char> expected(MIB);
    for (std::size_t index = 0; index < sizeOf(id); ++index) {
      mark(expected, id, index);
      ASSERT_EQ(pread(device.get(), block.data(), MIB, static_cast<off_t>(index * MIB)), MIB);
      ASSERT_EQ(block == expected, true) << "MiB " << index;
    }
  }

  std::size_t sizeOf(std::uint32_t id) const {
    for (const VolumeRecord& one : m_configuration.volumes) {
      if (one.id == id) {
        return one.capacitySectors() / MIB_SECTORS;
      }
    }
    return 0;
  }

  static void mark(std::vector<char>& block, std::uint32_t id, std::size_t index) {
    for (std::size_t i = 0; i < block.size(); ++i) {
      block[i] = static_cast<char>(i / 512 + 31 * index + std::size_t{7} * id);
    }
  }

  std::string layout(const VolumeRecord& one) { return text(m_backing.layout(one, m_configuration)); }

  Configuration m_configuration;
  LvmBacking m_backing{"tvp"};
};

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
  const std::string address = shell("basename $(readlink -f /sys/block/sdd/device)");
  const auto die = [] { shell("echo 1 > /sys/block/sdd/device/delete"); };
  const auto comeBack = [&] {
    std::string numbers = address.substr(address.find(':') + 1);
    std::replace(numbers.begin(), numbers.end(), ':', ' ');
    shell(
        "echo '" + numbers.substr(0, numbers.find('\n')) + "' > /sys/class/scsi_host/host" +
        address.substr(0, address.find(':')) +
        "/scan; for i in $(seq 100); do [ -b /dev/sdd ] && break; sleep 0.1; done");
  };
  // A drive that comes back is used again, also after the group was changed without it.
  shell("lvm vgchange -an tvp");
  die();
  m_backing.activate();
  EXPECT_EQ(m_backing.differences(m_configuration).size(), 3U);
  shell("lvm lvchange --addtag other tvp/vol1");
  comeBack();
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
  comeBack();
  shell("wipefs -a /dev/sdd");
}

}  // namespace
}  // namespace voltvk
