// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_MACHINE_INSIDE_REALVOLUMESFIXTURE_H
#define TESTS_MACHINE_INSIDE_REALVOLUMESFIXTURE_H

#include "machine/inside/Shell.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/backing/lvm/LvmBacking.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Refusal.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace voltvk {

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

inline std::string text(const std::vector<VolumeExtentRecord>& layout) {
  std::string result;
  for (const VolumeExtentRecord& part : layout) {
    result += std::to_string(part.pool) + ":" + std::to_string(part.extent.first) + "+" +
              std::to_string(part.extent.chunks) + " ";
  }
  return result;
}

/** The real backing on the drives of the emulated machine: two hard disks, 0 and 1, and two SSDs, 2 and 3. */
class RealVolumes : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(tvp::test::isEmulatedMachine())
        << "this test writes to drives; run it with tests/machine/run";
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
    EXPECT_EQ(tvp::test::shell("blkid -p /dev/sd[abcd]"), "(status 2)")
        << tvp::test::shell("lvm pvs -a; lvm lvs -a tvp");
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

  /** The command that puts a drive back which is taken out of the machine from now on. */
  static std::string comeBack(const std::string& name) {
    const std::string address =
        tvp::test::shell("basename $(readlink /sys/block/" + name + "/device) | tr ':\\n' ' '");
    return "set -- " + address + "; echo $2 $3 $4 >/sys/class/scsi_host/host$1/scan" +
           "; for i in $(seq 100); do [ -b /dev/" + name + " ] && break; sleep 0.1; done";
  }

  /** Takes a drive out of the machine while no volume is active. */
  void pull(const std::string& name) {
    tvp::test::shell("lvm vgchange -an tvp; echo 1 >/sys/block/" + name + "/device/delete");
    setPresent(name, false);
  }

  void putBack(const std::string& name, const std::string& command) {
    tvp::test::shell(command);
    setPresent(name, true);
  }

  void setPresent(const std::string& name, bool present) {
    for (DriveRecord& drive : m_configuration.drives) {
      drive.present = drive.name == "/dev/" + name ? present : drive.present;
    }
  }

  std::string layout(const VolumeRecord& one) { return text(m_backing.layout(one, m_configuration)); }

  Configuration m_configuration;
  LvmBacking m_backing{"tvp"};
};

}  // namespace voltvk

#endif
