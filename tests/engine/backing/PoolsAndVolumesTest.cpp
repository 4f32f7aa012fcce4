// SPDX-License-Identifier: Apache-2.0
// What holds for pools and volumes with every backing, as seen through the contract.
#include "engine/backing/PoolsAndVolumesFixture.h"
#include "voltvk/engine/rules/Limits.h"

#include <cctype>

using namespace tvp::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

TEST_F(PoolsAndVolumes, AreCreatedListedModifiedUsedAndDeleted) {
  const std::uint32_t slow = createPool(poolSpec("slow", {0}, 300 * MIB - 1));
  const std::uint32_t fast = createPool(poolSpec("fast", {2, 3}, 800 * MIB, TVK_TIER_SSD, 4 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{fast, 60 * MIB}, {slow, 101 * MIB}}));
  const std::uint32_t flash = createVolume(volumeSpec("flash", TVK_VOLUME_TIERED, {{fast, 5 * MIB}}));
  const std::uint32_t mail =
      createVolume(volumeSpec("mail", TVK_VOLUME_CACHED, {{slow, 64 * MIB}, {fast, 40 * MIB}}));
  EXPECT_EQ(createCachedDrive("archive", 1, fast, 100 * MIB).getReturn(), TVK_OK);
  const std::string whole = std::to_string(usableMib());
  EXPECT_THAT(
      poolTexts(),
      ElementsAre("slow 300 168 1 2", "fast 800 208 2 4", "disk " + whole + " " + whole + " 1 1"));
  EXPECT_THAT(
      volumeTexts(), ElementsAre(
                         "data 1 164 fast:60 slow:104", "flash 1 8 fast:8", "mail 2 64 fast:40 slow:64",
                         "archive 2 " + whole + " disk:" + whole + " fast:100"));
  const std::vector<Chunk*> members = chunksOf(pools()[1]);
  ASSERT_EQ(members.size(), 2U);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(members[i]->getProviderLogical()->getDeviceNumber(), 2 + i);
    EXPECT_EQ(
        members[i]->getEndRange() + 1 - members[i]->getStartRange(), (200 + reservedChunks()) / 2 * 4 * MIB);
  }
  EXPECT_THAT(differences(), IsEmpty());

  VirtualPoolSpec pool = poolSpec("gold \xE2\x82\xAC", {}, 0, 0);
  tvkSetText(pool.description, sizeof pool.description, "two\nlines");
  EXPECT_EQ(adapter().modifyVirtualPool(slow, pool).getReturn(), TVK_OK);
  VirtualVolumeSpec volume = volumeSpec("letters", 0, {});
  volume.knobSetting = TVK_KNOB_PASSIVE;
  EXPECT_EQ(adapter().modifyVirtualVolume(mail, volume).getReturn(), TVK_OK);
  EXPECT_STREQ(pools()[0]->getDescription(), "two\nlines");
  EXPECT_EQ(volumes()[2]->getKnobSetting(), TVK_KNOB_PASSIVE);
  EXPECT_THAT(differences(), IsEmpty()) << "names and descriptions are beside the data, too";

  m_backing->read(flash, 1, 7);
  expectReads(flash, 7, 7);
  EXPECT_EQ(adapter().resetVirtualVolumeStats(flash).getReturn(), TVK_OK);
  EXPECT_EQ(statistics(flash).readIoCount, 0U);
  m_backing->fill(mail, 64);
  EXPECT_EQ(adapter().flushVirtualVolume(mail).getReturn(), TVK_OK);
  EXPECT_TRUE(m_backing->isFilled(mail, 64));

  EXPECT_EQ(deleteAll(), "");
  EXPECT_THAT(
      newEvents(),
      ElementsAre(
          "201 Pool [slow] was created: tier level [1], [614400] sectors",
          "201 Pool [fast] was created: tier level [3], [1638400] sectors",
          "401 Volume [data] was created: volume type [1], [335872] sectors",
          "401 Volume [flash] was created: volume type [1], [16384] sectors",
          "401 Volume [mail] was created: volume type [2], [131072] sectors",
          StartsWith("201 Pool [disk] was created: tier level [1], ["),
          StartsWith("401 Volume [archive] was created: volume type [2], ["),
          "20B Pool [slow] was renamed to [gold \xE2\x82\xAC]",
          "20C Pool [gold \xE2\x82\xAC] got a new description", "40B Volume [mail] was renamed to [letters]",
          "40A Volume [letters] changed its fetch and flush mode from [2] to [3]",
          "40E The statistics of volume [flash] were reset",
          StartsWith("40D Volume [letters] was flushed: ["), "405 Volume [archive] was deleted",
          "205 Pool [disk] was deleted, pool type [16]", "405 Volume [letters] was deleted",
          "405 Volume [flash] was deleted", "405 Volume [data] was deleted",
          "205 Pool [fast] was deleted, pool type [0]",
          "205 Pool [gold \xE2\x82\xAC] was deleted, pool type [0]"));
  const auto freed = drives();
  for (std::size_t i = 0; i < freed.size(); ++i) {
    EXPECT_FALSE(freed[i]->isUsed());
    EXPECT_STREQ(freed[i]->getObstacle(), "") << freed[i]->getDeviceName();
  }
}

TEST_F(PoolsAndVolumes, HoldWhatTheIdentitySays) {
  TvkAdapterIdentity identity{};
  EXPECT_EQ(adapter().getIdentity(identity).getReturn(), TVK_OK);
  const auto statusOf = [&](std::uint64_t sectors, std::uint64_t chunk) {
    VirtualPoolSpec spec = poolSpec("pool", {0}, sectors, TVK_TIER_HDD, chunk);
    return adapter().createVirtualPool(spec).getReturn();
  };
  for (std::size_t index = 1; index < voltvk::CHUNK_SECTORS.size(); ++index) {
    const std::uint64_t chunk = voltvk::CHUNK_SECTORS[index];
    const bool isSupported = !m_backing->isReal() || chunk >= MIB;
    EXPECT_EQ(identity.chunkSizeSupport[index], isSupported ? 1U : 0U);
    EXPECT_EQ(identity.maxVolumeSizeInSectors[index] > 0, isSupported);
    EXPECT_EQ(statusOf(DRIVE + chunk, chunk), isSupported ? TVK_NOT_ENOUGH_SPACE : TVK_INVALID_CHUNK_SIZE);
  }
  const std::uint64_t largest = (usableMib() / 32 - reservedChunks()) * 32 * MIB;
  EXPECT_EQ(statusOf(largest + 1, 32 * MIB), TVK_NOT_ENOUGH_SPACE);
  EXPECT_EQ(statusOf(largest, 32 * MIB), TVK_OK);
  const std::uint32_t id = pools()[0]->getPoolId();
  createVolume(volumeSpec("all", TVK_VOLUME_TIERED, {{id, largest}}));
  auto more = volumeSpec("more", TVK_VOLUME_TIERED, {{id, MIB}});
  EXPECT_EQ(adapter().createVirtualVolume(more).getReturn(), TVK_NOT_ENOUGH_SPACE);
}

TEST_F(PoolsAndVolumes, AreNotChangedByARefusal) {
  const std::uint32_t slow = createPool(poolSpec("slow", {0}, 300 * MIB));
  const std::uint32_t fast = createPool(poolSpec("fast", {2}, 300 * MIB, TVK_TIER_SSD));
  const std::uint32_t data =
      createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{slow, 100 * MIB}, {fast, 100 * MIB}}));
  const std::string before = configuration() + m_backing->onDrives();
  TvkAdapter& library = adapter();
  const auto pool = [&](VirtualPoolSpec spec) { return library.createVirtualPool(spec); };
  const auto volume = [&](std::uint8_t type, const std::vector<VirtualPoolEntry>& parts) {
    VirtualVolumeSpec spec = volumeSpec("other", type, parts);
    return library.createVirtualVolume(spec);
  };
  const auto knob = [&](std::uint32_t setting) {
    VirtualVolumeSpec spec = volumeSpec("", 0, {});
    spec.knobSetting = setting;
    return library.modifyVirtualVolume(data, spec);
  };
  const std::vector<std::pair<Ret, TvkStatus>> refusals = {
      {pool(poolSpec("p", {0}, MIB)), TVK_DEVICE_IN_USE},
      {pool(poolSpec("p", {1, 3}, MIB)), TVK_DEVICE_KINDS_MIXED},
      {pool(poolSpec("p", {1, 1}, MIB)), TVK_DEVICE_DUPLICATE},
      {pool(poolSpec("p", {9}, MIB)), TVK_NO_SUCH_DEVICE},
      {pool(poolSpec("slow", {1}, MIB)), TVK_NAME_IN_USE},
      {pool(poolSpec("p", {1}, DRIVE + 1)), TVK_NOT_ENOUGH_SPACE},
      {pool(poolSpec("p", {1}, MIB, TVK_TIER_SSD)), TVK_INVALID_TIER_LEVEL},
      {volume(TVK_VOLUME_TIERED, {{slow, 201 * MIB}}), TVK_NOT_ENOUGH_SPACE},
      {volume(TVK_VOLUME_TIERED, {{slow, MIB}, {fast, 201 * MIB}}), TVK_NOT_ENOUGH_SPACE},
      {volume(TVK_VOLUME_TIERED, {{slow, MIB}, {slow, MIB}}), TVK_POOL_DUPLICATE},
      {volume(TVK_VOLUME_CACHED, {{slow, MIB}}), TVK_POOL_COUNT_MISMATCH},
      {createCachedDrive("c", 0, fast, MIB), TVK_DEVICE_IN_USE},
      {createCachedDrive("c", 3, fast, MIB), TVK_INVALID_TIER_LEVEL},
      {createCachedDrive("c", 1, slow, MIB), TVK_POOL_KINDS_CONFLICT},
      {createCachedDrive("c", 1, fast, 201 * MIB), TVK_NOT_ENOUGH_SPACE},
      {createCachedDrive("data", 1, fast, MIB), TVK_NAME_IN_USE},
      {library.deleteVirtualPool(slow), TVK_POOL_IN_USE},
      {library.deleteVirtualPool(fast), TVK_POOL_IN_USE},
      {library.deleteVirtualPool(9), TVK_NO_SUCH_POOL},
      {library.deleteVirtualVolume(9), TVK_NO_SUCH_VOLUME},
      {library.flushVirtualVolume(data), TVK_NOT_CACHED},
      {library.resetVirtualVolumeStats(9), TVK_NO_SUCH_VOLUME},
      {knob(4), TVK_INVALID_KNOB},
      {addDriveTo(9, 1), TVK_NO_SUCH_POOL},
      {addDriveTo(slow, 9), TVK_NO_SUCH_DEVICE},
      {addDriveTo(slow, 2), TVK_DEVICE_IN_USE},
      {addDriveTo(slow, 3), TVK_DEVICE_KINDS_MIXED},
      {replaceDrive(slow, 0, 0), TVK_DEVICE_IN_USE},
      {replaceDrive(slow, 0, 3), TVK_DEVICE_KINDS_MIXED},
      {replaceDrive(slow, 2, 1), TVK_NO_SUCH_DEVICE},
      {growVolume(9, {300 * MIB}), TVK_NO_SUCH_VOLUME},
      {growVolume(data, {199 * MIB}), TVK_INVALID_CAPACITY},
      {growVolume(data, {200 * MIB}), TVK_INVALID_CAPACITY},
      {growVolume(data, {401 * MIB}), TVK_NOT_ENOUGH_SPACE},
      {growVolume(data, {300 * MIB, 0, 9}), TVK_NO_SUCH_POOL},
  };
  for (const auto& [ret, status] : refusals) {
    EXPECT_EQ(ret.getReturn(), status) << ret.getDetail();
    EXPECT_STRNE(ret.getDetail(), "");
  }
  EXPECT_EQ(configuration() + m_backing->onDrives(), before);
}

TEST_F(PoolsAndVolumes, GoInAnyOrderThatLeavesVolumesTheirPools) {
  // Pools: slow and fast. Volumes: hard disk only, SSD only, both.
  for (const std::string order : {"hbsSF", "bhSsF", "sbFhS"}) {
    std::map<char, std::uint32_t> ids;
    ids['S'] = createPool(poolSpec("slow", {0, 1}, 300 * MIB));
    ids['F'] = createPool(poolSpec("fast", {2}, 300 * MIB, TVK_TIER_SSD));
    ids['h'] = createVolume(volumeSpec("h", TVK_VOLUME_TIERED, {{ids['S'], 30 * MIB}}));
    ids['s'] = createVolume(volumeSpec("s", TVK_VOLUME_TIERED, {{ids['F'], 30 * MIB}}));
    ids['b'] = createVolume(volumeSpec("b", TVK_VOLUME_CACHED, {{ids['S'], 30 * MIB}, {ids['F'], 30 * MIB}}));
    for (const char next : order) {
      const Ret ret = std::isupper(next) ? adapter().deleteVirtualPool(ids[next])
                                         : adapter().deleteVirtualVolume(ids[next]);
      EXPECT_EQ(ret.getReturn(), TVK_OK) << next << " in " << order << ": " << ret.getDetail();
    }
    EXPECT_EQ(m_backing->onDrives(), "");
  }
}

TEST_F(PoolsAndVolumes, KeepTheirContentsWhileHotChunksMoveToSsds) {
  const std::uint32_t slow = createPool(poolSpec("slow", {0}, 300 * MIB));
  const std::uint32_t fast = createPool(poolSpec("fast", {2}, 300 * MIB, TVK_TIER_SSD));
  const std::uint32_t data =
      createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{slow, 40 * MIB}, {fast, 4 * MIB}}));
  m_backing->fill(data, 44);
  EXPECT_EQ(runRound(data).promoted, 0U) << "nothing is hot";
  newEvents();
  const auto readHot = [&](const std::vector<std::uint64_t>& chunks) {
    for (const std::uint64_t chunk : chunks) {
      m_backing->read(data, chunk, 8);
    }
  };
  // The second time the SSDs are full of what was hot before, and what cooled down goes back.
  for (const std::vector<std::uint64_t>& hot : {std::vector<std::uint64_t>{3, 4, 20}, {30, 31, 39, 0}}) {
    readHot(hot);
    EXPECT_EQ(runRound(data, true).promoted, hot.size());
    EXPECT_EQ(runRound(data).promoted, hot.size());
    EXPECT_THAT(
        newEvents(),
        ElementsAre("40F Volume [data]: [" + std::to_string(hot.size()) + "] chunks moved to the SSD pool"));
    EXPECT_EQ(adapter().resetVirtualVolumeStats(data).getReturn(), TVK_OK);
    newEvents();
    readHot(hot);
    expectReads(data, 8 * hot.size(), 8 * hot.size());
    EXPECT_TRUE(m_backing->isFilled(data, 44));
    EXPECT_THAT(volumeTexts(), ElementsAre("data 1 44 fast:4 slow:40"));
    EXPECT_THAT(poolTexts(), ElementsAre("slow 300 40 1 1", "fast 300 4 1 1"));
    EXPECT_THAT(differences(), IsEmpty());
    while (runRound(data).promoted > 0) {
    }
    newEvents();
  }
}

TEST_F(PoolsAndVolumes, GrowWithWhatTheyHold) {
  const std::uint32_t slow = createPool(poolSpec("slow", {0}, 300 * MIB));
  const std::uint32_t fast = createPool(poolSpec("fast", {2}, 200 * MIB, TVK_TIER_SSD));
  const std::uint32_t data =
      createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{slow, 100 * MIB}, {fast, 20 * MIB}}));
  const std::uint32_t mail =
      createVolume(volumeSpec("mail", TVK_VOLUME_CACHED, {{slow, 40 * MIB}, {fast, 20 * MIB}}));
  m_backing->fill(data, 120);
  m_backing->fill(mail, 40);
  newEvents();
  const auto expectDone = [](const Ret& ret) { EXPECT_EQ(ret.getReturn(), TVK_OK) << ret.getDetail(); };
  expectDone(addDriveTo(slow, 1));
  expectDone(growVolume(data, {150 * MIB}));
  expectDone(growVolume(mail, {60 * MIB - 1}));
  expectDone(growVolume(data, {160 * MIB, 0, fast}));
  EXPECT_EQ(growVolume(mail, {90 * MIB, 0, fast}).getReturn(), TVK_POOL_KINDS_CONFLICT) << "its cache";
  const std::string whole = std::to_string(300 + usableMib());
  EXPECT_THAT(poolTexts(), ElementsAre("slow " + whole + " 190 2 2", "fast 200 50 1 2"));
  EXPECT_THAT(volumeTexts(), ElementsAre("data 1 160 fast:30 slow:130", "mail 2 60 fast:20 slow:60"));
  EXPECT_THAT(differences(), IsEmpty());
  EXPECT_TRUE(m_backing->isFilled(data, 120));
  EXPECT_TRUE(m_backing->isFilled(mail, 40));

  // What was added is used like the rest: here are 30 MiB on hard disks, and 10 on SSDs behind them.
  m_backing->fill(data, 160);
  adapter().resetVirtualVolumeStats(data);
  for (const std::uint64_t chunk : {99U, 119U, 120U, 149U, 150U, 159U}) {
    m_backing->read(data, chunk, 8);
  }
  expectReads(data, 48, 24);
  EXPECT_EQ(runRound(data).promoted, 3U);
  EXPECT_TRUE(m_backing->isFilled(data, 160));
  EXPECT_THAT(differences(), IsEmpty());
  newEvents();

  if (m_backing->isReal()) {
    // Interrupted before anything is moved, and in the middle.
    const Ret unbegun = replaceDrive(fast, 2, 3, [](auto...) { return false; });
    EXPECT_EQ(unbegun.getReturn(), TVK_BACKING_FAILED);
    EXPECT_THAT(
        unbegun.getDetail(), testing::HasSubstr("before anything was moved: pool 2 (fast) is as before"));
    EXPECT_THAT(differences(), IsEmpty());
    EXPECT_EQ(
        replaceDrive(fast, 2, 3, [](auto moved, auto) { return moved == 0; }).getReturn(),
        TVK_BACKING_FAILED);
    EXPECT_THAT(differences(), testing::Not(IsEmpty()));
    EXPECT_EQ(voltvk::BackingAdministration(*state()).check(true).repairs.size(), 1U);
  } else {
    expectDone(replaceDrive(fast, 2, 3));
  }
  expectDone(growVolume(data, {0, 10, fast}));
  expectDone(growVolume(data, {0, 100, fast}));
  EXPECT_EQ(growVolume(data, {0, 100, fast}).getReturn(), TVK_NOT_ENOUGH_SPACE);
  EXPECT_THAT(volumeTexts(), ElementsAre("data 1 310 fast:180 slow:130", "mail 2 60 fast:20 slow:60"));
  EXPECT_THAT(
      newEvents(), ElementsAre(
                       "20E Drive [" + std::string(drives()[2]->getDeviceName()) +
                           "] of pool [fast] was replaced by [" + drives()[3]->getDeviceName() + "]",
                       "410 Volume [data] has grown from [160 MiB] to [175 MiB]",
                       "410 Volume [data] has grown from [175 MiB] to [310 MiB]"));
  EXPECT_FALSE(drives()[2]->isUsed());
  EXPECT_TRUE(m_backing->isFilled(data, 160));
  EXPECT_TRUE(m_backing->isFilled(mail, 40));
  EXPECT_THAT(differences(), IsEmpty());
}

}  // namespace
