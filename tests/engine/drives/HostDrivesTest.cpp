// SPDX-License-Identifier: Apache-2.0
// The drives of a machine, read from recorded sysfs trees.
#include "engine/EngineFixture.h"
#include "support/Threads.h"
#include "voltvk/engine/drives/HostDriveScanner.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <thread>

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

  /** What a drive stores, at an offset. */
  void content(const std::string& name, std::size_t offset, const std::string& bytes) const {
    m_directory.write("host/dev/" + name, std::string(offset, '\0') + bytes + std::string(1U << 20U, '\0'));
  }

  std::map<std::string, voltvk::DriveRecord> scan(
      const voltvk::HostDriveScanner& scanner = voltvk::HostDriveScanner::ofThisMachine(),
      const std::string& ownGroup = "") const {
    std::map<std::string, voltvk::DriveRecord> drives;
    for (const voltvk::DriveRecord& drive : scanner.scan(ownGroup)) {
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

  /** @param wwid none if empty: the drive is then known by its place, "place" and its name unless given */
  void plainDrive(
      const std::string& name, const std::string& wwid = "", const Machine::Files& more = {},
      const std::string& place = "") const {
    m_machine.drive(
        name, place.empty() ? "pci0/ata1/host0/" + name : place, "scsi",
        {{"size", "204800\n"}, {"queue/rotational", "1\n"}, {"device/wwid", wwid}});
    m_machine.write(name, more);
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
  for (const char* name : {"loop0", "ram1", "zram0", "sr0", "fd0", "dm-3", "mmcblk0boot1", "mmcblk0rpmb"}) {
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
  // that is mounted, sdd is mounted as a whole by a file system with numbers of its own and sdg is its second
  // device, sde has an unused partition, sdf is free. sdh is held by a device that does not say so, sdi is
  // read-only, c0d2 swaps, c0d3 is mounted.
  for (const char* name : {"sda", "sdb", "sdc", "sdd", "sde", "sdf", "sdg", "sdh", "sdi"}) {
    plainDrive(name, "", {{"dev", "8:" + std::to_string(16 * (name[2] - 'a')) + "\n"}});
  }
  plainDrive("cciss!c0d2");
  plainDrive("cciss!c0d3");
  m_machine.write("sdh", {{"holders/bcache0/dev", "251:0\n"}});
  m_machine.write("sdi", {{"ro", "1\n"}});
  m_directory.write("host/sys/fs/btrfs/0815/devices/sdd", "");
  m_directory.write("host/sys/fs/btrfs/0815/devices/sdg", "");
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
                   "24 21 0:45 / /old rw - btrfs /dev/cciss/c0d3 rw\n"
                   "line that makes no sense\n");
  m_machine.swaps("/dev/sdb1 partition 100 0 -2\n/dev/cciss/c0d2 partition 100 0 -3\n");
  const std::map<std::string, std::string> expected = {
      {"/dev/sda", "boots this machine"},
      {"/dev/sdb", "has partitions"},
      {"/dev/sdc", "is held by md0"},
      {"/dev/sdd", "is mounted at /more"},
      {"/dev/sde", "has partitions"},
      {"/dev/sdf", ""},
      {"/dev/sdg", "is part of a mounted btrfs file system"},
      {"/dev/sdh", "is held by bcache0"},
      {"/dev/sdi", "is read-only"},
      {"/dev/md0", "is mounted at /data"},
      {"/dev/cciss/c0d2", "is used for swap"},
      {"/dev/cciss/c0d3", "is mounted at /old"},
  };
  EXPECT_EQ(m_machine.scan().size(), expected.size());
  state()->scanDrives();
  const Listing<LogicalDevice> listed = this->drives();
  for (std::size_t i = 0; i < listed.size(); ++i) {
    const std::string& use = expected.at(listed[i]->getDeviceName());
    EXPECT_EQ(listed[i]->getObstacle(), use + (use.empty() ? "" : " and cannot join a pool"));
    EXPECT_EQ(listed[i]->isBootable(), use == "boots this machine");
    auto spec = poolSpec(
        ("pool" + std::to_string(i)).c_str(), {static_cast<std::uint8_t>(listed[i]->getDeviceNumber())},
        listed[i]->getCapacityInSectors());
    const std::uint32_t status = adapter().createVirtualPool(spec).getReturn();
    EXPECT_EQ(status, use.empty() ? TVK_OK : TVK_DEVICE_NOT_ELIGIBLE) << listed[i]->getDeviceName();
  }
}

TEST_F(HostDrivesTest, TheOwnVolumeGroupIsNoUseOfItsDrivesAndOnlyDrivesThatSeemFreeAreOpened) {
  for (const char* name : {"sda", "sdb", "sdc", "sdd", "sde", "sdf"}) {
    plainDrive(name, "", {{"dev", "8:" + std::to_string(16 * (name[2] - 'a')) + "\n"}});
    m_machine.content(name, 0, "LUKS\xba\xbe");
  }
  m_machine.content("sdf", 0, "");
  const auto mapped = [&](int number, const char* name, const char* uuid, const std::string& below) {
    const std::string device = "dm-" + std::to_string(number);
    m_machine.drive(
        device, "virtual/" + device, "none",
        {{"size", "100\n"},
         {"dev", "253:" + std::to_string(number) + "\n"},
         {"dm/name", name},
         {"dm/uuid", uuid},
         {"slaves/" + below + "/dev", "8:0\n"}});
  };
  mapped(0, "my--pools-vol1", "LVM-abc", "sda");
  mapped(1, "my--pools-vol2", "CRYPT-abc", "sdb");   // of the same name, but no volume
  mapped(2, "my--pools--2-vol1", "LVM-def", "sdc");  // of the group "my-pools-2"
  mapped(3, "my--pools-vol3", "LVM-ghi", "sdd");     // sdd is also used by others
  m_machine.drive("md0", "virtual/md0", "none", {{"size", "0\n"}, {"slaves/sdd/dev", "8:48\n"}});
  m_machine.mounts("21 1 253:0 / / rw - ext4 /dev/mapper/my--pools-vol1 rw\n");
  mapped(4, "", "", "sde");  // about to vanish
  m_machine.swaps("/dev/dm-0 partition 100 0 -2\n");
  const auto scanner = voltvk::HostDriveScanner::ofThisMachine();
  const auto looks = [](const std::map<std::string, voltvk::DriveRecord>& drives) {
    std::string text;
    for (const auto& [name, drive] : drives) {
      text +=
          name.substr(5) + ": " + (drive.bootable ? "boots, " : "") + drive.use + " " + drive.content + "\n";
    }
    return text;
  };
  EXPECT_EQ(
      looks(m_machine.scan(scanner, "my-pools")), "sda:  is a physical volume of LVM\n"
                                                  "sdb: is held by dm-1 (my--pools-vol2) \n"
                                                  "sdc: is held by dm-2 (my--pools--2-vol1) \n"
                                                  "sdd: is held by md0 is a physical volume of LVM\n"
                                                  "sde:  is encrypted (LUKS)\n"
                                                  "sdf:  \n");
  EXPECT_EQ(
      looks(m_machine.scan(scanner)), "sda: boots, is held by dm-0 (my--pools-vol1) \n"
                                      "sdb: is held by dm-1 (my--pools-vol2) \n"
                                      "sdc: is held by dm-2 (my--pools--2-vol1) \n"
                                      "sdd: is held by dm-3 (my--pools-vol3) \n"
                                      "sde:  \nsdf:  \n");
  m_machine.content("sdf", 0, "LUKS\xba\xbe");
  EXPECT_EQ(m_machine.scan(scanner, "my-pools").at("/dev/sdf").content, "") << "nothing says that it changed";
  m_machine.write("sdf", {{"stat", "   9 0 72 1   1 0 8 1   0 1 2   0 0 0 0\n"}});
  EXPECT_EQ(m_machine.scan(scanner, "my-pools").at("/dev/sdf").content, "is encrypted (LUKS)");
  const auto recorded = [&](const std::string& ownGroup) {
    state()->change([&](voltvk::Connection& connection) {
      voltvk::DriveRegistry(connection).reconcile(scanner.scan(ownGroup));
    });
    return Storage::rows("SELECT content FROM drive ORDER BY name DESC LIMIT 2");
  };
  EXPECT_EQ(recorded("my-pools"), "is encrypted (LUKS)|\nis encrypted (LUKS)|\n");
  EXPECT_EQ(recorded(""), "|\n|\n");
}

TEST_F(HostDrivesTest, DevicesOfTheOwnGroupThatComeAndGoAreNoUse) {
  plainDrive("sda");
  m_machine.drive("dm-0", "virtual/dm-0", "none", {{"dm/name", "own-vol1\n"}, {"dm/uuid", "LVM-abc\n"}});
  for (int i = 0; i < 40; ++i) {  // time between the list of devices and the look at what holds the drive
    m_machine.drive(
        "loop" + std::to_string(i), "virtual/loop" + std::to_string(i), "none", {{"size", "0\n"}});
  }
  const fs::path system = m_directory.path() / "host/sys";
  const fs::path device = system / "block/dm-0";
  const fs::path holder = system / "block/sda/holders/dm-0";
  const fs::path place = fs::read_symlink(device);
  fs::create_directories(holder.parent_path());
  std::atomic<bool> isOver{false};
  std::thread volumeManager([&] {
    const auto pause = [](unsigned int length) {
      for (unsigned int i = 0; i < length; ++i) {
        std::this_thread::yield();
      }
    };
    for (unsigned int round = 0; !isOver; ++round) {
      fs::remove(device);
      pause(round % 7 * 100);
      fs::create_directory_symlink(place, device);
      std::ofstream(holder) << '\n';
      pause(round % 11 * 100);
      fs::remove(holder);
    }
  });
  const auto scanner = voltvk::HostDriveScanner::ofThisMachine();
  std::set<std::string> uses;
  for (int i = 0; i < 500; ++i) {
    uses.insert(m_machine.scan(scanner, "own").at("/dev/sda").use);
  }
  isOver = true;
  volumeManager.join();
  EXPECT_EQ(uses, std::set<std::string>{""});
}

TEST_F(HostDrivesTest, ADriveThatHoldsDataIsShownAsUnsuitable) {
  addDrive(TVK_DEVICE_HDD, 2 * MIB);
  execute("UPDATE drive SET content = 'holds swap space'");
  EXPECT_EQ(drives()[0]->getDeviceProperty(), TVK_PROPERTY_VIRTUAL | TVK_PROPERTY_UNSUITABLE);
  EXPECT_STREQ(drives()[0]->getObstacle(), "holds swap space and cannot join a pool");
  auto spec = poolSpec("pool", {0}, MIB);
  EXPECT_EQ(adapter().createVirtualPool(spec).getReturn(), TVK_DEVICE_NOT_ELIGIBLE);
  state()->change(
      [](voltvk::Connection& connection) { voltvk::DriveRegistry(connection).forgetContents({0}); });
  createPool(spec);
  execute("UPDATE drive SET content = 'is a physical volume of LVM'");
  EXPECT_EQ(drives()[0]->getDeviceProperty(), TVK_PROPERTY_VIRTUAL);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD);
  EXPECT_EQ(adapter().deleteVirtualPool(pools()[0]->getPoolId()).getReturn(), TVK_OK);
  EXPECT_STREQ(drives()[0]->getObstacle(), "") << "went with the pool";
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
}

TEST_F(HostDrivesTest, NoDriveTakesThePlaceOfAnother) {
  const auto adapterPath = [](const char* host) {
    return std::string("pci0/host") + host + "/target" + host + ":0:0/" + host + ":0:0:0";
  };
  const Machine::Files serial = {{"device/serial", "S1"}};
  plainDrive("sda", "", serial, adapterPath("3"));
  plainDrive("sdb", "", serial, "pci1/host4/4:0:0:0");  // a bridge that gives every drive this number
  plainDrive("sdc", "naa.1", serial);
  plainDrive("sdd", "naa.1", {{"device/serial", "S2"}});  // a copy of the other's WWID
  EXPECT_EQ(names().size(), 4U);
  const std::uint32_t pool = createPool(poolSpec("pool", {0, 2}, 100 * MIB));
  m_machine.remove("sda");
  m_machine.remove("sdc");
  EXPECT_EQ(names(), (std::vector<std::string>{"0 /dev/sda", "1 /dev/sdb", "2 /dev/sdc", "3 /dev/sdd"}));
  EXPECT_EQ(drives()[0]->getStatus() + drives()[2]->getStatus(), 2 * TVK_DEVICE_MISSING);
  EXPECT_STREQ(pools()[0]->getTrouble(), "drive 0 (/dev/sda) is missing; drive 2 (/dev/sdc) is missing");
  plainDrive("sdx", "", serial, adapterPath("7"));  // hosts are numbered as they are found
  plainDrive("sdy", "naa.1", serial);
  EXPECT_EQ(names(), (std::vector<std::string>{"0 /dev/sdx", "1 /dev/sdb", "2 /dev/sdy", "3 /dev/sdd"}));
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD) << pool;
}

TEST_F(HostDrivesTest, PathsToOneUnitAreOneDrive) {
  plainDrive("sda", "naa.1");
  plainDrive("sdb", "naa.1");
  plainDrive("sdc", "naa.2");
  m_machine.write("sdb", {{"ro", "1\n"}});
  plainDrive("sde", "naa.3", {}, "pci0/usb1/1-1/host5/sde");
  EXPECT_EQ(names().size(), 3U);
  plainDrive("sdd", "naa.3", {}, "pci0/usb1/1-2/host6/sdd");  // the bridges' number
  const std::vector<std::string> found = {"0 /dev/sda", "1 /dev/sdc", "2 /dev/sde", "3 /dev/sdd"};
  EXPECT_EQ(names(), found);
  EXPECT_EQ(std::string(drives()[0]->getObstacle()), "is read-only and cannot join a pool");
  m_machine.remove("sda");
  EXPECT_EQ(names().front(), "0 /dev/sdb");
}

TEST_F(HostDrivesTest, DrivesOfAnEarlierVersionAreFoundOnce) {
  insertDrives("VALUES(10, 'wwid:naa.1', 0, 1, '/dev/sda', '', 'naa.1', '', '', 204800, 1, 1, 0, 0, 0, 0),"
               "(11, 'serial:S1/', 0, 1, '/dev/sdb', 'S1', '', '', '', 204800, 1, 1, 0, 0, 0, 0),"
               "(12, 'name:/dev/sdc', 0, 1, '/dev/sdc', '', '', '', '', 204800, 1, 1, 0, 0, 0, 0),"
               "(13, 'serial:S2/', 0, 1, '/dev/sdd', 'S2', '', '', '', 204800, 1, 1, 0, 0, 0, 0),"
               "(14, 'serial:S2///dev/sde', 0, 1, '/dev/sde', 'S2', '', '', '', 204800, 1, 1, 0, 0, 0, 0);"
               "UPDATE setting SET value = 14 WHERE name = 'last_drive_number'");
  plainDrive("sda", "naa.1");
  plainDrive("sdb", "", {{"device/serial", "S1"}});
  plainDrive("sdc");
  plainDrive("sdd", "", {{"device/serial", "S2"}});
  const std::vector<std::string> found = {"10 /dev/sda", "11 /dev/sdb", "12 /dev/sdc", "15 /dev/sdd"};
  EXPECT_EQ(names(), found) << "13 and 14 could both be the last";
  plainDrive("sdf", "", {{"device/serial", "S1"}});
  EXPECT_EQ(names().back(), "16 /dev/sdf") << "11 is known by its place now";
}

TEST_F(HostDrivesTest, DrivesBeyondTheLastNumberAreReported) {
  insertDrives("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 253)"
               "SELECT i, i, 1, 1, i, '', '', '', '', 8, 1, 6, 0, 0, 0, 0 FROM n;"
               "UPDATE setting SET value = 253 WHERE name = 'last_drive_number'");
  for (const char* name : {"sda", "sdb", "sdc"}) {
    plainDrive(name);
  }
  EXPECT_EQ(names().size(), 255U);
  EXPECT_EQ(names().size(), 255U);
  const std::vector<std::string> expected = {
      "601 Drive [/dev/sda] was added",
      "603 [2] drives of the machine are left out, since there are [255] already"};
  EXPECT_EQ(newEvents(), expected) << "once";
  EXPECT_EQ(state()->snapshot()->configuration().drivesLeftOut, 2U);
}

TEST_F(HostDrivesTest, AMissingDriveDegradesItsPoolsAndVolumes) {
  plainDrive("sda", "one");
  plainDrive("sdb", "two");
  EXPECT_EQ(names().size(), 2U);
  const std::uint32_t pool = createPool(poolSpec("pool", {0, 1}, 100 * MIB));
  createVolume(volumeSpec("volume", TVK_VOLUME_TIERED, {{pool, MIB}}));
  EXPECT_STREQ(volumes()[0]->getTrouble(), "");
  newEvents();
  m_machine.remove("sda");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(drives()[0]->getStatus(), TVK_DEVICE_MISSING);
  EXPECT_EQ(drives()[1]->getStatus(), TVK_DEVICE_ONLINE);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_DEGRADED);
  EXPECT_EQ(volumes()[0]->getState(), TVK_HEALTH_DEGRADED);
  EXPECT_STREQ(drives()[0]->getTrouble(), "drive 0 (/dev/sda) is missing");
  EXPECT_STREQ(volumes()[0]->getTrouble(), "pool 1 (pool) is degraded: drive 0 (/dev/sda) is missing");
  EXPECT_EQ(newEvents(), std::vector<std::string>{"602 Drive [/dev/sda] was removed"});
  auto more = volumeSpec("more", TVK_VOLUME_TIERED, {{pool, MIB}});
  const Ret refused = adapter().createVirtualVolume(more);
  EXPECT_EQ(refused.getReturn(), TVK_POOL_DEGRADED);
  EXPECT_STREQ(
      refused.getDetail(),
      "pool 1 (pool) is degraded: drive 0 (/dev/sda) is missing; mend that, or choose another pool");
  newEvents();
  plainDrive("sdc", "one");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"601 Drive [/dev/sdc] was added"});
}

TEST_F(HostDrivesTest, APoolIsDegradedWhileItsDriveIsTooSmallOrUsedOtherwise) {
  plainDrive("sda", "one", {{"dev", "8:0\n"}});  // 100 MiB
  EXPECT_EQ(names().size(), 1U);
  createPool(poolSpec("pool", {0}, 100 * MIB));
  EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_GOOD);
  const auto troubleAfter = [&](const Machine::Files& files) {
    m_machine.write("sda", files);
    names();
    EXPECT_EQ(pools()[0]->getPoolStatus(), TVK_HEALTH_DEGRADED);
    return std::string(pools()[0]->getTrouble());
  };
  m_machine.mounts("22 21 8:0 / /my\\040data rw - xfs /dev/sda rw\n");
  EXPECT_EQ(troubleAfter({}), "drive 0 (/dev/sda) is mounted at /my data");
  EXPECT_EQ(troubleAfter({{"sda1/partition", "1\n"}}), "drive 0 (/dev/sda) has partitions");
  EXPECT_EQ(
      troubleAfter({{"size", "204799\n"}}), "drive 0 (/dev/sda) has shrunk to 100 MiB (204799 sectors), less "
                                            "than the 100 MiB that its pool keeps on it");
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
  createVolume(volumeSpec("volume", TVK_VOLUME_TIERED, {{pool, MIB}}));
  m_machine.write("sda", {{"queue/rotational", "1\n"}});
  EXPECT_EQ(names().size(), 1U);
  EXPECT_EQ(
      adapter().modifyVirtualPool(pool, poolSpec("", {}, 0, TVK_TIER_HDD)).getReturn(), TVK_POOL_IN_USE);
  EXPECT_EQ(
      adapter().modifyVirtualPool(pool, poolSpec("", {}, 0, TVK_TIER_SSD)).getReturn(),
      TVK_INVALID_TIER_LEVEL);
}

TEST_F(HostDrivesTest, ARefreshFindsNewDrives) {
  EXPECT_EQ(drives().size(), 0U);
  plainDrive("sda");
  EXPECT_TRUE(waitFor([this] {
    m_lib->refreshConfiguration();
    return drives().size() == 1;
  }));
}

}  // namespace
