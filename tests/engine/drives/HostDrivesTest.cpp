// SPDX-License-Identifier: Apache-2.0
// The drives of a machine, read from recorded sysfs trees.
#include "engine/EngineFixture.h"
#include "voltvk/engine/drives/HostDriveScanner.h"

#include <filesystem>
#include <map>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

/** Writes the sysfs and proc files of a machine. */
class Machine {
public:
  explicit Machine(const TemporaryDirectory& directory) : m_directory(directory) {
    fs::create_directories(m_directory.path() / "host/sys/block");
    mounts("");
    swaps("");
  }

  using Files = std::map<std::string, std::string>;

  /** @param place path of the device below /sys/devices, which shows how it is attached */
  void drive(
      const std::string& name, const std::string& place, const std::string& subsystem,
      const Files& files) const {
    const fs::path device = m_directory.path() / "host/sys/devices" / place;
    const fs::path bus = m_directory.path() / "host/sys/bus" / subsystem;
    fs::create_directories(device / "block" / name);
    fs::create_directories(bus);
    fs::create_symlink(device, device / "block" / name / "device");
    if (!fs::exists(device / "subsystem")) {
      fs::create_symlink(bus, device / "subsystem");
    }
    fs::create_directory_symlink(device / "block" / name, m_directory.path() / "host/sys/block" / name);
    write(name, files);
  }
  void write(const std::string& name, const Files& files) const {
    for (const auto& [file, content] : files) {
      m_directory.write((fs::path("host/sys/block") / name / file).string(), content);
    }
  }
  void remove(const std::string& name) const { fs::remove(m_directory.path() / "host/sys/block" / name); }
  void mounts(const std::string& table) const { m_directory.write("host/proc/self/mountinfo", table); }
  void swaps(const std::string& table) const {
    m_directory.write("host/proc/swaps", "Filename\t\t\tType\t\tSize\n" + table);
  }

  std::map<std::string, voltvk::DriveRecord> scan() const {
    std::map<std::string, voltvk::DriveRecord> drives;
    for (const voltvk::DriveRecord& drive : voltvk::HostDriveScanner::ofThisMachine().scan()) {
      drives[drive.name] = drive;
    }
    return drives;
  }

private:
  const TemporaryDirectory& m_directory;
};

class HostDrivesTest : public EngineTest {
protected:
  HostDrivesTest() : m_machine(m_directory) {}

  void plainDrive(const std::string& name, const std::string& serial = "") const {
    m_machine.drive(
        name, "pci0/ata1/host0/" + name, "scsi",
        {{"size", "204800\n"}, {"queue/rotational", "1\n"}, {"dev", "8:0\n"}, {"device/serial", serial}});
  }
  std::vector<std::string> names() const {
    state()->scanDrives();
    std::vector<std::string> texts;
    const Listing<LogicalDevice> listed = drives();
    for (std::size_t i = 0; i < listed.size(); ++i) {
      texts.push_back(std::to_string(listed[i]->getDeviceNumber()) + " " + listed[i]->getDeviceName());
    }
    return texts;
  }

  Machine m_machine;
};

TEST_F(HostDrivesTest, EveryKindOfDriveIsReadFromTheSystemFiles) {
  m_machine.drive(
      "sda", "pci0/ata1/host0/0:0:0:0", "scsi",
      {{"size", "1953525168\n"},
       {"device/vendor", "ATA     \n"},
       {"device/model", "Disk Model 4000 \n"},
       {"device/wwid", "naa.5000c500a1b2c3d4\n"},
       {"queue/rotational", "1\n"},
       {"device/vpd_pg80", std::string("\0\x80\0\x08  WD-X1  ", 13)}});
  m_machine.drive(
      "sdb", "pci0/usb2/2-1/host1/1:0:0:0", "scsi",
      {{"size", "60000\n"},
       {"queue/rotational", "0\n"},
       {"removable", "1\n"},
       {"device/model", "Bad \xFF\x01 text"}});
  m_machine.drive("sdc", "pci0/host2/target2", "scsi", {{"size", "8\n"}, {"queue/rotational", "1\n"}});
  m_machine.drive(
      "nvme0n1", "pci0/nvme/nvme0", "nvme",
      {{"size", "1000\n"},
       {"wwid", "eui.0025\n"},
       {"device/model", "Fast\n"},
       {"device/serial", "S4EV\n"},
       {"queue/rotational", "0\n"}});
  m_machine.drive(
      "vda", "pci0/virtio1", "virtio",
      {{"size", "2000\n"}, {"device/vendor", "0x1af4\n"}, {"serial", "disk-1"}});
  m_machine.drive("cciss!c0d0", "pci0/cciss0", "pci", {{"size", "100\n"}, {"queue/rotational", "1\n"}});
  m_machine.drive("md0", "virtual/md0", "none", {{"size", "100\n"}, {"md/uuid", "abc\n"}});
  for (const char* name : {"loop0", "ram1", "zram0", "sr0", "fd0", "dm-3"}) {
    m_machine.drive(name, std::string("virtual/") + name, "none", {{"size", "100\n"}});
  }
  m_machine.drive("sdd", "pci0/host3/target3", "scsi", {{"size", "0\n"}});
  m_machine.drive("nvme0c0n1", "pci0/nvme/nvme1", "nvme", {{"size", "100\n"}, {"hidden", "1\n"}});
  m_machine.drive("sde", "pci0/host4/target4", "scsi", {});  // vanishes while it is being read

  const auto drives = m_machine.scan();
  ASSERT_EQ(drives.size(), 7U);
  const auto sda = drives.at("/dev/sda");
  EXPECT_EQ(sda.sectors, 1953525168U);
  EXPECT_EQ(
      sda.vendor + "|" + sda.model + "|" + sda.serial + "|" + sda.wwid,
      "ATA|Disk Model 4000|WD-X1|naa.5000c500a1b2c3d4");
  EXPECT_EQ(sda.type, TVK_DEVICE_HDD);
  EXPECT_EQ(sda.interfaceType, TVK_INTERFACE_SATA);
  EXPECT_EQ(drives.at("/dev/sdb").interfaceType, TVK_INTERFACE_USB);
  EXPECT_EQ(drives.at("/dev/sdb").model, "Bad ?? text");
  EXPECT_TRUE(drives.at("/dev/sdb").removable);
  EXPECT_EQ(drives.at("/dev/sdc").interfaceType, TVK_INTERFACE_SAS);
  const auto nvme = drives.at("/dev/nvme0n1");
  EXPECT_EQ(nvme.interfaceType, TVK_INTERFACE_NVME);
  EXPECT_EQ(nvme.type, TVK_DEVICE_SSD);
  EXPECT_EQ(nvme.wwid + "|" + nvme.serial + "|" + nvme.model, "eui.0025|S4EV|Fast");
  EXPECT_EQ(drives.at("/dev/vda").interfaceType, TVK_INTERFACE_VIRTIO);
  EXPECT_EQ(drives.at("/dev/vda").vendor, "");
  EXPECT_EQ(drives.at("/dev/vda").serial, "disk-1");
  EXPECT_EQ(drives.count("/dev/cciss/c0d0"), 1U);
  EXPECT_EQ(drives.at("/dev/md0").wwid, "abc");
}

TEST_F(HostDrivesTest, DrivesInUseCannotJoinAPool) {
  // sda boots through a volume group on its second partition, sdb swaps, sdc is half of a RAID device
  // that is mounted, sdd is mounted as a whole by a file system with numbers of its own, sde has an
  // unused partition, sdf is free.
  for (const char* name : {"sda", "sdb", "sdc", "sdd", "sde", "sdf"}) {
    m_machine.drive(
        name, std::string("pci0/host0/") + name, "scsi",
        {{"size", "204800\n"},
         {"queue/rotational", "1\n"},
         {"dev", "8:" + std::to_string(16 * (name[2] - 'a')) + "\n"}});
  }
  m_machine.write(
      "sda",
      {{"sda1/partition", "1\n"}, {"sda1/dev", "8:1\n"}, {"sda2/partition", "2\n"}, {"sda2/dev", "8:2\n"}});
  m_machine.write("sdb", {{"sdb1/partition", "1\n"}, {"sdb1/dev", "8:17\n"}});
  m_machine.write("sde", {{"sde1/partition", "1\n"}, {"sde1/dev", "8:65\n"}});
  m_machine.drive(
      "dm-0", "virtual/dm-0", "none",
      {{"size", "100\n"}, {"dev", "253:0\n"}, {"dm/name", "vg-root\n"}, {"slaves/sda2/dev", "8:2\n"}});
  m_machine.drive(
      "md0", "virtual/md0", "none", {{"size", "100\n"}, {"dev", "9:0\n"}, {"slaves/sdc/dev", "8:32\n"}});
  m_machine.mounts("20 1 0:5 / /proc rw - proc proc rw\n"
                   "21 1 253:0 / / rw,relatime shared:1 master:2 - ext4 /dev/mapper/vg-root rw\n"
                   "22 21 9:0 / /data rw - xfs /dev/md0 rw\n"
                   "23 21 0:44 /sub /more rw - btrfs /dev/sdd rw\n"
                   "line that makes no sense\n");
  m_machine.swaps("/dev/sdb1 partition 100 0 -2\n");
  struct Expected {
    const char* name;
    bool bootable;
    bool partitioned;
    bool mounted;
  };
  const auto drives = m_machine.scan();
  for (const Expected& expected :
       {Expected{"/dev/sda", true, true, true}, Expected{"/dev/sdb", false, true, true},
        Expected{"/dev/sdc", false, false, true}, Expected{"/dev/sdd", false, false, true},
        Expected{"/dev/sde", false, true, false}, Expected{"/dev/md0", false, false, true},
        Expected{"/dev/sdf", false, false, false}}) {
    const voltvk::DriveRecord& drive = drives.at(expected.name);
    EXPECT_EQ(drive.bootable, expected.bootable) << expected.name;
    EXPECT_EQ(drive.partitioned, expected.partitioned) << expected.name;
    EXPECT_EQ(drive.mounted, expected.mounted) << expected.name;
  }
  state()->scanDrives();
  const Listing<LogicalDevice> listed = this->drives();
  for (std::size_t i = 0; i < listed.size(); ++i) {
    const bool free = listed[i]->getDeviceName() == std::string("/dev/sdf");
    auto spec = poolSpec(
        ("pool" + std::to_string(i)).c_str(), {static_cast<std::uint8_t>(listed[i]->getDeviceNumber())},
        listed[i]->getCapacityInSectors());
    const std::uint32_t status = adapter().createVirtualPool(spec).getReturn();
    EXPECT_EQ(status, free ? TVK_OK : TVK_DEVICE_NOT_ELIGIBLE) << listed[i]->getDeviceName();
  }
}

TEST_F(HostDrivesTest, DrivesKeepTheirNumbers) {
  plainDrive("sda", "one");
  plainDrive("sdb", "two");
  EXPECT_EQ(names(), (std::vector<std::string>{"0 /dev/sda", "1 /dev/sdb"}));
  m_machine.remove("sda");
  EXPECT_EQ(names(), (std::vector<std::string>{"1 /dev/sdb"}));
  plainDrive("sdc", "three");
  EXPECT_EQ(names(), (std::vector<std::string>{"1 /dev/sdb", "2 /dev/sdc"})) << "0 is kept for its drive";
  addDrive(TVK_DEVICE_SSD, 2 * MIB);
  EXPECT_EQ(names(), (std::vector<std::string>{"1 /dev/sdb", "2 /dev/sdc", "3 /dev/tvk3"}));
  plainDrive("sdd", "one");  // back again under another name
  EXPECT_EQ(names(), (std::vector<std::string>{"0 /dev/sdd", "1 /dev/sdb", "2 /dev/sdc", "3 /dev/tvk3"}));
  plainDrive("sde", "two");  // two drives that cannot be told apart
  EXPECT_EQ(names().size(), 5U);
  EXPECT_EQ(names().size(), 5U);
}

TEST_F(HostDrivesTest, AMissingDriveDegradesItsPoolsAndVolumes) {
  plainDrive("sda", "one");
  plainDrive("sdb", "two");
  EXPECT_EQ(names().size(), 2U);
  const std::uint32_t pool = createPool(poolSpec("pool", {0, 1}, 100 * MIB));
  createVolume(volumeSpec("volume", TVK_VOLUME_TIERED, {{pool, MIB}}));
  newEvents();
  m_machine.remove("sda");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(drives()[0]->getStatus(), TVK_DEVICE_MISSING);
  EXPECT_EQ(drives()[1]->getStatus(), TVK_DEVICE_ONLINE);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_DEGRADED);
  EXPECT_EQ(volumes()[0]->getState(), TVK_HEALTH_DEGRADED);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"602 Drive [/dev/sda] was removed"});
  plainDrive("sdc", "one");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"601 Drive [/dev/sdc] was added"});
}

TEST_F(HostDrivesTest, APoolThatFillsItsDriveExactlyIsGood) {
  plainDrive("sda", "one");  // 100 MiB
  EXPECT_EQ(names().size(), 1U);
  createPool(poolSpec("pool", {0}, 100 * MIB));
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD);
  m_machine.write("sda", {{"size", "204799\n"}});
  EXPECT_EQ(names().size(), 1U);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_DEGRADED) << "it has shrunk below its pool";
}

TEST_F(HostDrivesTest, ThePoolsTierLevelFollowsTheKindOfItsDrive) {
  plainDrive("sda", "one");
  EXPECT_EQ(names().size(), 1U);
  const std::uint32_t pool = createPool(poolSpec("pool", {0}, MIB));
  m_machine.write("sda", {{"queue/rotational", "0\n"}});
  EXPECT_EQ(names().size(), 1U);
  newEvents();
  EXPECT_EQ(adapter().modifyVirtualPool(pool, poolSpec("", {}, 0, TVK_TIER_SSD)).getReturn(), TVK_OK);
  EXPECT_EQ(pools()[0]->getTierLevel(), TVK_TIER_SSD);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"20A Pool [pool] has now the tier level [3]"});
  EXPECT_EQ(
      adapter().modifyVirtualPool(pool, poolSpec("", {}, 0, TVK_TIER_HDD)).getReturn(),
      TVK_INVALID_TIER_LEVEL);
}

TEST_F(HostDrivesTest, ARefreshFindsNewDrives) {
  EXPECT_EQ(drives().size(), 0U);
  plainDrive("sda");
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (drives().size() == 0 && std::chrono::steady_clock::now() < end) {
    m_lib->refreshConfiguration();
  }
  EXPECT_EQ(drives().size(), 1U);
}

}  // namespace
