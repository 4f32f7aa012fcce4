// SPDX-License-Identifier: Apache-2.0
// What only real pools and volumes have to withstand, as seen through the contract and its programs.
#include "engine/backing/PoolsAndVolumesFixture.h"
#include "machine/inside/Shell.h"
#include "voltvk/engine/contract/StateBackups.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/Intents.h"

#include <csignal>

using namespace tvp::test;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class RealPools : public PoolsAndVolumes {
protected:
  Ret createOnDrive0() const {
    VirtualPoolSpec spec = poolSpec("pool", {0}, 100 * MIB);
    return adapter().createVirtualPool(spec);
  }

  /** A tiered volume with displaced chunks and a cached one: number 1 and 2. */
  void createVolumes() {
    createPool(poolSpec("slow \xC3\xA4", {0}, 300 * MIB));
    createPool(poolSpec("fast", {2, 3}, 300 * MIB, TVK_TIER_SSD));
    createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 40 * MIB}, {2, 4 * MIB}}));
    ASSERT_EQ(createCachedDrive("mail", 1, 2, 100 * MIB).getReturn(), TVK_OK);
    m_backing->fill(1, 44);
    m_backing->read(1, 7, 9);
    ASSERT_EQ(runRound(1).promoted, 1U);
  }

  std::string m_state = m_directory.file("state.db");
};

TEST_F(RealPools, TakeOnlyDrivesThatNothingIsOn) {
  const std::string address = shell("basename $(readlink /sys/block/sda/device) | tr ':\\n' ' '");
  const struct {
    std::string use;
    std::string end;
    TvkStatus status;
    std::string sentence;
  } cases[] = {
      {"mkfs.ext4 -q /dev/sda", "wipefs -qa /dev/sda", TVK_DEVICE_NOT_ELIGIBLE, "ext4"},
      {"mkfs.ext4 -q /dev/sda; mount /dev/sda /mnt", "umount /mnt; wipefs -qa /dev/sda",
       TVK_DEVICE_NOT_ELIGIBLE, "mounted"},
      {"mkswap /dev/sda >/dev/null; swapon /dev/sda", "swapoff /dev/sda; wipefs -qa /dev/sda",
       TVK_DEVICE_NOT_ELIGIBLE, "swap"},
      {"blockdev --setro /dev/sda", "blockdev --setrw /dev/sda", TVK_DEVICE_NOT_ELIGIBLE, "read-only"},
      {"echo 1 >/sys/block/sda/device/delete",
       "set -- " + address +
           "; echo $2 $3 $4 >/sys/class/scsi_host/host$1/scan"
           "; for i in $(seq 100); do [ -b /dev/sda ] && exit; sleep 0.1; done; exit 1",
       TVK_NO_SUCH_DEVICE, "unplugged"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.use);
    EXPECT_EQ(shell(test.use), "");
    const std::string before = shell("blkid --probe /dev/sda");
    const Ret ret = createOnDrive0();
    EXPECT_EQ(ret.getReturn(), test.status) << ret.getDetail();
    EXPECT_THAT(ret.getDetail(), HasSubstr(test.sentence));
    EXPECT_EQ(shell("blkid --probe /dev/sda"), before);
    EXPECT_EQ(shell(test.end), "");
    EXPECT_THAT(configuration(), IsEmpty());
  }
  EXPECT_EQ(createOnDrive0().getReturn(), TVK_OK) << "free again";
}

TEST_F(RealPools, LeaveAloneWhatOthersKeepInTheGroup) {
  EXPECT_EQ(createOnDrive0().getReturn(), TVK_OK);
  const std::uint32_t pool = pools()[0]->getPoolId();
  shell("lvm lvcreate -qq -y -n theirs -l 5 tvp /dev/sda:50-54");
  EXPECT_THAT(differences(), testing::ElementsAre(HasSubstr("tvp/theirs")));
  const Ret ret = adapter().deleteVirtualPool(pool);
  EXPECT_EQ(ret.getReturn(), TVK_BACKING_FAILED);
  EXPECT_THAT(ret.getDetail(), HasSubstr("tvp/theirs"));
  EXPECT_THAT(shell("lvm lvs --noheadings -o lv_name tvp"), HasSubstr("theirs"));
  EXPECT_EQ(shell("lvm lvremove -qq -y tvp/theirs"), "");
  EXPECT_EQ(deleteAll(), "");

  shell("lvm pvcreate -qq /dev/sdb && lvm vgcreate -qq theirs /dev/sdb");
  voltvk::BackingAdministration administration(*state());
  EXPECT_THROW(administration.choose({voltvk::BackingKind::Lvm, "theirs"}), voltvk::Refusal);
  EXPECT_THAT(shell("lvm vgs --noheadings -o vg_name"), HasSubstr("theirs"));
  EXPECT_EQ(shell("lvm vgremove -qq theirs && lvm pvremove -qq /dev/sdb"), "");
}

TEST_F(RealPools, KeepVolumesThatAreMounted) {
  createVolumes();
  EXPECT_EQ(shell("mkfs.ext4 -q /dev/tvp/vol1 && mount /dev/tvp/vol1 /mnt && date >/mnt/file"), "");
  const std::string before = configuration();
  const Ret ret = adapter().deleteVirtualVolume(1);
  EXPECT_EQ(ret.getReturn(), TVK_VOLUME_OPEN);
  EXPECT_THAT(ret.getDetail(), HasSubstr("/dev/tvp/vol1"));
  EXPECT_EQ(configuration(), before);
  EXPECT_EQ(shell("umount /mnt && mount /dev/tvp/vol1 /mnt && test -s /mnt/file && umount /mnt"), "");
  EXPECT_EQ(adapter().deleteVirtualVolume(1).getReturn(), TVK_OK);
}

TEST_F(RealPools, ChangeOneAfterTheOtherInAnyHost) {
  // Two processes at once, and a host that ignores the end of its children.
  EXPECT_EQ(
      shell("tvpcim pool create a --drives 1 --tier hdd --size 1GiB --chunk 1MiB >/dev/null & first=$!\n"
            "(trap '' CHLD; tvpcim pool create b --drives 3 --tier ssd --size 1GiB --chunk 1MiB >/dev/null)\n"
            "wait $first"),
      "");
  std::signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(createOnDrive0().getReturn(), TVK_OK);
  std::signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(pools().size(), 3U);
  EXPECT_THAT(differences(), IsEmpty());
}

TEST_F(RealPools, AreFoundOnTheDrivesWhenTheStateIsLost) {
  createVolumes();
  const std::string before = configuration();
  reopen([&] { shell("rm " + m_state + "*"); });
  voltvk::BackingAdministration administration(*state());
  administration.choose({voltvk::BackingKind::Lvm, "tvp"});
  EXPECT_THAT(differences(), testing::Not(IsEmpty()));
  const voltvk::RecoveredState recovered = administration.recover();
  EXPECT_EQ(recovered.pools, 3U);
  EXPECT_EQ(recovered.volumes, 2U);
  EXPECT_EQ(configuration(), before);
  EXPECT_THAT(differences(), IsEmpty());
  EXPECT_TRUE(m_backing->isFilled(1, 44));
}

TEST_F(RealPools, AreFoundOnTheDrivesAfterTheyHaveGrown) {
  createVolumes();
  ASSERT_EQ(growVolume(1, {54 * MIB}).getReturn(), TVK_OK);
  ASSERT_EQ(growVolume(1, {58 * MIB, 0, 2}).getReturn(), TVK_OK);
  m_backing->fill(1, 58);
  const std::vector<std::string> before = volumeTexts();
  reopen([&] { shell("rm " + m_state + "*"); });
  voltvk::BackingAdministration administration(*state());
  administration.choose({voltvk::BackingKind::Lvm, "tvp"});
  administration.recover();
  EXPECT_EQ(volumeTexts(), before);
  EXPECT_THAT(differences(), IsEmpty());
  // Of what was added, 10 MiB are on the hard disk and 4 MiB behind them on SSDs.
  adapter().resetVirtualVolumeStats(1);
  m_backing->read(1, 45, 9);
  m_backing->read(1, 55, 9);
  expectReads(1, 18, 9);
  EXPECT_EQ(runRound(1).promoted, 1U);
  EXPECT_EQ(volumeTexts(), before);
  EXPECT_THAT(differences(), IsEmpty());
  EXPECT_TRUE(m_backing->isFilled(1, 58));
}

TEST_F(RealPools, AreNewerThanAStateFromABackup) {
  createVolumes();
  createVolume(volumeSpec("grown", TVK_VOLUME_TIERED, {{1, 10 * MIB}}));
  reopen([&] {
    shell("cp " + m_state + " " + m_state + ".backup");
    // Made while volume 1 was being deleted, say, which did not happen then.
    voltvk::Connection backup(m_state + ".backup");
    voltvk::Intents(backup).record({{voltvk::Step::RemoveVolume, 1, {}}});
  });
  ASSERT_EQ(adapter().deleteVirtualVolume(2).getReturn(), TVK_OK);
  createVolume(volumeSpec("newer", TVK_VOLUME_TIERED, {{1, 10 * MIB}}));
  EXPECT_EQ(growVolume(3, {20 * MIB}).getReturn(), TVK_OK);
  EXPECT_EQ(addDriveTo(1, 1).getReturn(), TVK_OK);
  m_backing->read(1, 9, 9);
  EXPECT_EQ(runRound(1).promoted, 1U);
  reopen([&] {
    shell(
        "mv " + m_state + " " + m_state + ".new; rm -f " + m_state + "-*; cp " + m_state + ".backup " +
        m_state);
  });
  const std::vector<std::string> found = differences();
  for (const char* missing :
       {"volume 1 (data) has chunks elsewhere", "tvp/vol2", "tvp/vol4", "volume 3 (grown) has other marks",
        "/dev/sdb has the marks of pool 1 (slow \xC3\xA4), which does not have it"}) {
    EXPECT_THAT(found, Contains(HasSubstr(missing)));
  }
  // The number of a volume that is made now is that of the newer one.
  VirtualVolumeSpec spec = volumeSpec("another", TVK_VOLUME_TIERED, {{1, 10 * MIB}});
  EXPECT_EQ(adapter().createVirtualVolume(spec).getReturn(), TVK_BACKING_FAILED);
  EXPECT_THAT(shell("lvm lvs --noheadings -o lv_name tvp"), HasSubstr("vol4"));
  const voltvk::BackingReport report = voltvk::BackingAdministration(*state()).check(true);
  EXPECT_THAT(report.repairs, Contains(HasSubstr("where the chunks of volume")));
  EXPECT_THAT(report.repairs, testing::Not(Contains(HasSubstr("description")))) << "there was none to write";
  EXPECT_THAT(report.differences, testing::Not(Contains(HasSubstr("volume 1 (data)"))));
  for (const char* grown : {"pool 1 (slow \xC3\xA4) has another size", "volume 3 (grown) has another size"}) {
    EXPECT_THAT(report.differences, Contains(HasSubstr(grown)));
  }
  EXPECT_TRUE(m_backing->isFilled(1, 44));
  reopen([&] { shell("rm -f " + m_state + " " + m_state + "-*; mv " + m_state + ".new " + m_state); });
  EXPECT_THAT(differences(), IsEmpty()) << "an older state changes nothing on the drives";
}

TEST_F(RealPools, AreRestoredFromABackupThatMatchesTheDrives) {
  createVolumes();
  const std::string backup = m_directory.file("backup");
  voltvk::StateBackups(*state()).make(backup, "1", false);
  m_backing->read(1, 9, 9);
  ASSERT_EQ(runRound(1).promoted, 1U);
  const std::string before = configuration();
  reopen([&] {
    shell("rm " + m_state + "*");
    const voltvk::BackupOutcome trial = voltvk::StateBackups(*state()).restore(backup, true);
    EXPECT_THAT(trial.notes, Contains(HasSubstr("volume 1 (data) has chunks elsewhere")));
    EXPECT_EQ(shell("test -e " + m_state), "(status 1)");
    const voltvk::BackupOutcome outcome = voltvk::StateBackups(*state()).restore(backup, false);
    EXPECT_THAT(
        outcome.notes, testing::ElementsAre(HasSubstr("where the chunks of volume 1 (data) are now")));
  });
  EXPECT_EQ(configuration(), before);
  EXPECT_THAT(differences(), IsEmpty());
  EXPECT_TRUE(m_backing->isFilled(1, 44));

  // What is newer than the backup is told by the marks on the drives.
  VirtualVolumeSpec renamed = volumeSpec("renamed", 0, {});
  EXPECT_EQ(adapter().modifyVirtualVolume(2, renamed).getReturn(), TVK_OK);
  createVolume(volumeSpec("newer", TVK_VOLUME_TIERED, {{1, 10 * MIB}}));
  const std::string after = configuration();
  try {
    voltvk::StateBackups(*state()).restore(backup, false);
    FAIL() << "restored";
  } catch (const voltvk::Refusal& refusal) {
    EXPECT_THAT(
        refusal.what(), HasSubstr("does not match what is on the drives: volume 2 (mail) has other marks"));
    EXPECT_THAT(refusal.what(), HasSubstr("and 1 more difference; "));
  }
  EXPECT_EQ(configuration(), after);
}

}  // namespace
