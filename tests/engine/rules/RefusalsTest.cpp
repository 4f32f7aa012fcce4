// SPDX-License-Identifier: Apache-2.0
// Every refusal has a status of its own, says what was wrong, and changes nothing.
#include "engine/EngineFixture.h"
#include "voltvk/engine/state/Refusal.h"

#include <cstring>
#include <functional>
#include <numeric>
#include <set>

using namespace tvp::test;

namespace {

constexpr std::uint64_t LARGE = ~std::uint64_t{0};
const std::string LONGEST_NAME(TVK_LONGEST_NAME, 'n');
const std::string NAME_RULE = "; a name has 1 to " + std::to_string(TVK_LONGEST_NAME) + " bytes";
const std::string DESCRIPTION_RULE =
    "; a description has at most " + std::to_string(TVK_LONGEST_DESCRIPTION) + " bytes";

/** A request with the change that makes it unacceptable. */
template <typename Spec>
struct Spoiled {
  TvkStatus status;
  std::string detail;
  Spec spec;
  std::function<void(Spec&)> spoil = nullptr;
};

class RefusalsTest : public EngineTest {
protected:
  RefusalsTest() {
    for (int i = 0; i < 4; ++i) {
      addDrive(TVK_DEVICE_HDD, 100 * MIB + 7);  // 0 to 3
    }
    for (int i = 0; i < 3; ++i) {
      addDrive(TVK_DEVICE_SSD, 64 * MIB);  // 4 to 6
    }
    m_hddPool = createPool(poolSpec("hdd", {0, 1}, 200 * MIB));
    m_ssdPool = createPool(poolSpec("ssd", {4}, 64 * MIB, TVK_TIER_SSD));
    m_otherSsd = createPool(poolSpec("other", {5}, 64 * MIB, TVK_TIER_SSD));
    m_tiered = createVolume(volumeSpec("tiered", TVK_VOLUME_TIERED, {{m_hddPool, 10 * MIB}}));
    auto ssd = VirtualPoolSpec();
    ssd.poolId = m_ssdPool;
    ssd.capacityInSectors = 8 * MIB;
    auto hdd = poolSpec("internal", {2}, 50 * MIB);
    auto volume = volumeSpec("cached", TVK_VOLUME_CACHED, {});
    EXPECT_EQ(adapter().createCachedLD(ssd, hdd, volume).getReturn(), TVK_OK);
    m_internal = hdd.poolId;
    m_cached = volume.volumeId;
    newEvents();
  }

  /** Everything in the state except the events. */
  std::string contents() const {
    std::string text;
    for (const char* table : {"drive", "pool", "pool_member", "volume", "volume_extent", "chunk"}) {
      text += Storage::rows(std::string("SELECT * FROM ") + table);
    }
    return text;
  }

  static void expectRefused(const Ret& ret, TvkStatus status, const std::string& detail) {
    EXPECT_EQ(ret.getReturn(), status);
    EXPECT_NE(std::string(ret.getDetail()).find(detail), std::string::npos)
        << ret.getDetail() << "\ndoes not say\n"
        << detail;
  }

  /** Each request is refused with one event, and none changes anything. */
  template <typename Spec, typename Call>
  void expectAllRefused(const std::vector<Spoiled<Spec>>& cases, const std::string& event, Call call) {
    const std::string before = contents();
    for (const Spoiled<Spec>& one : cases) {
      SCOPED_TRACE(one.detail);
      Spec spec = one.spec;
      if (one.spoil) {
        one.spoil(spec);
      }
      expectRefused(call(spec), one.status, one.detail);
      const std::vector<std::string> events = newEvents();
      ASSERT_EQ(events.size(), 1U);
      EXPECT_EQ(events[0].rfind(event, 0), 0U) << events[0];
    }
    EXPECT_EQ(contents(), before);
  }

  VirtualPoolSpec pool(
      const char* name = "new", const std::vector<std::uint8_t>& numbers = {3},
      std::uint64_t sectors = 50 * MIB) const {
    return poolSpec(name, numbers, sectors);
  }
  VirtualVolumeSpec
  volume(const std::vector<VirtualPoolEntry>& pools, std::uint8_t type = TVK_VOLUME_TIERED) const {
    return volumeSpec("new", type, pools);
  }

  std::uint32_t m_hddPool = 0;
  std::uint32_t m_ssdPool = 0;
  std::uint32_t m_otherSsd = 0;
  std::uint32_t m_internal = 0;
  std::uint32_t m_tiered = 0;
  std::uint32_t m_cached = 0;
};

TEST_F(RefusalsTest, UnfitPoolsAreRefusedWithTheRightStatus) {
  const auto named = [&](const std::string& name) { return pool(name.c_str()); };
  std::vector<std::uint8_t> many(65);
  std::iota(many.begin(), many.end(), std::uint8_t{0});
  addDrive(TVK_DEVICE_HDD, 16 * MIB);  // 7
  newEvents();
  const std::vector<Spoiled<VirtualPoolSpec>> cases = {
      {TVK_INVALID_NAME, "the name has " + std::to_string(LONGEST_NAME.size() + 1) + " bytes" + NAME_RULE,
       named(LONGEST_NAME + "n")},
      {TVK_INVALID_NAME, "the name 'line\\x0Abreak' has control characters in it; choose one without them",
       named("line\nbreak")},
      {TVK_INVALID_NAME, "the name '\\xC2\\x85' has control characters in it", named("\xC2\x85")},
      {TVK_INVALID_NAME, "the name 'half \\xC3' is not UTF-8", named("half \xC3")},
      {TVK_INVALID_NAME, "the name '  \xC2\xA0' has only blanks; choose one that can be seen",
       named("  \xC2\xA0")},
      {TVK_INVALID_NAME, "the name has the invisible character U+200B in it", named("poo\xE2\x80\x8Bl")},
      {TVK_INVALID_NAME, "the name has the invisible character U+202E in it", named("\xE2\x80\xAEloop")},
      {TVK_INVALID_NAME, "the name has no end" + NAME_RULE, pool(),
       [](auto& spec) { std::fill_n(spec.name, sizeof spec.name, 'x'); }},
      {TVK_INVALID_DESCRIPTION, "the description has too many bytes" + DESCRIPTION_RULE, pool(),
       [](auto& spec) { spec.descriptionTooLong = true; }},
      {TVK_INVALID_DESCRIPTION, "the description '\\xFF' is not UTF-8", pool(),
       [](auto& spec) { spec.description[0] = '\xFF'; }},
      {TVK_NAME_IN_USE, "the name 'internal' is used by pool 4, which is internal; choose another",
       named("internal")},
      {TVK_INVALID_CHUNK_SIZE,
       "chunks of 0 B are not supported; supported are 4 KiB, 64 KiB, 128 KiB, 256 KiB, 512 KiB, 1 MiB, 4 "
       "MiB, 16 MiB and 32 MiB",
       pool(), [](auto& spec) { spec.chunkSizeInSectors = 0; }},
      {TVK_INVALID_CHUNK_SIZE, "chunks of 2 MiB are not supported", pool(),
       [](auto& spec) { spec.chunkSizeInSectors = 4096; }},
      {TVK_TOO_MANY_DEVICES, "65 drives listed; a pool has at most 64", pool("new", many)},
      {TVK_TOO_MANY_DEVICES, "4294967295 drives listed; a pool has at most 64", pool(),
       [](auto& spec) { spec.numLogicalDevices = spec.numDeviceNumbers = 0xFFFFFFFF; }},
      {TVK_DEVICE_KINDS_MIXED,
       "drive 3 (/dev/tvk3) is a hard disk, drive 6 (/dev/tvk6) is an SSD; a pool has hard disks or SSDs "
       "only",
       pool("new", {3, 6})},
      {TVK_INVALID_CAPACITY, "1023.5 KiB asked for; a pool has at least 1 MiB", pool("new", {3}, MIB - 1)},
      {TVK_NOT_ENOUGH_SPACE,
       "drive 3 (/dev/tvk3) holds 100 MiB in whole chunks of 1 MiB, less than the 100 MiB (204801 sectors) "
       "asked for",
       pool("new", {3}, 100 * MIB + 1)},
      {TVK_INVALID_CAPACITY, "1 MiB asked for: drive 7 (/dev/tvk7) would get no chunk of 1 MiB; leave it out",
       pool("new", {7, 3}, MIB)},
      {TVK_NOT_ENOUGH_SPACE, "drive 7 (/dev/tvk7) has 16 MiB, less than a chunk of 32 MiB; leave it out",
       pool("new", {3, 7}, 96 * MIB), [](auto& spec) { spec.chunkSizeInSectors = 65536; }},
      {TVK_NOT_ENOUGH_SPACE, "less than the 8192 EiB (18446744073709551615 sectors) asked for",
       pool("new", {3}, LARGE)},
      {TVK_INVALID_ARGUMENT, "the pool type 5 is unknown; use 0 or 16", pool(),
       [](auto& spec) { spec.poolFlag = 5; }},
  };
  expectAllRefused(cases, "203 Pool [", [&](VirtualPoolSpec& spec) {
    const Ret ret = adapter().createVirtualPool(spec);
    EXPECT_EQ(spec.poolId, TVK_NO_ID);
    return ret;
  });
}

TEST_F(RefusalsTest, UnfitVolumesAreRefusedWithTheRightStatus) {
  const VirtualPoolEntry hdd{m_hddPool, 10 * MIB};
  const VirtualPoolEntry ssd{m_ssdPool, 10 * MIB};
  const auto capacity = [&](std::uint64_t sectors) { return volume({{m_hddPool, sectors}}); };
  const std::vector<Spoiled<VirtualVolumeSpec>> cases = {
      {TVK_INVALID_NAME, "the name has too many bytes" + NAME_RULE, volume({hdd}),
       [](auto& spec) { spec.nameTooLong = true; }},
      {TVK_INVALID_VOLUME_TYPE, "the volume type 0 is unknown; use 1 (tiered) or 2 (cached)",
       volume({hdd}, 0)},
      {TVK_INVALID_VOLUME_TYPE, "the volume type 3 is unknown", volume({hdd}, 3)},
      {TVK_INVALID_KNOB, "the knob setting 4 is unknown; use 1 (aggressive), 2 (normal) or 3 (passive)",
       volume({hdd}), [](auto& spec) { spec.knobSetting = 4; }},
      {TVK_INVALID_KNOB, "the knob setting 257 is unknown", volume({hdd}),
       [](auto& spec) { spec.knobSetting = 257; }},
      {TVK_POOL_COUNT_MISMATCH, "3 pools listed; a volume takes one or two pools", volume({hdd, ssd, ssd})},
      {TVK_POOL_COUNT_MISMATCH, "1 pool announced, but 1 identifier and 2 sizes listed", volume({hdd}),
       [](auto& spec) { spec.numPoolSizes = 2; }},
      {TVK_NO_SUCH_POOL, "no pool has the number 77", volume({hdd, {77, MIB}})},
      {TVK_POOL_IS_INTERNAL,
       "pool 4 (internal) is internal: it belongs to a cached volume; choose another pool",
       volume({{m_internal, MIB}})},
      {TVK_POOL_KINDS_CONFLICT,
       "pool 2 (ssd) and pool 3 (other) are both pools of SSDs; a volume takes one of hard disks and one of "
       "SSDs",
       volume({ssd, {m_otherSsd, MIB}})},
      {TVK_INVALID_CAPACITY, "1023.5 KiB asked of pool 1 (hdd)", capacity(MIB - 1)},
      {TVK_INVALID_CAPACITY,
       "a volume with chunks of 1 MiB has at most 4 PiB; a larger one needs larger chunks", capacity(LARGE)},
      {TVK_INVALID_CAPACITY, "0 B asked of pool 2 (ssd)", volume({hdd, {m_ssdPool, 0}})},
      {TVK_INVALID_CAPACITY, "are more together than any volume has", volume({hdd, {m_ssdPool, LARGE}})},
      {TVK_INVALID_CAPACITY,
       "11 MiB asked for, but 10 MiB taken from the pools; make both the same, or leave the first out",
       volume({hdd}), [](auto& spec) { spec.capacityInSectors = 11 * MIB; }},
      {TVK_NOT_ENOUGH_SPACE, "pool 1 (hdd) has 190 MiB free, less than the 191 MiB asked for",
       capacity(191 * MIB)},
      {TVK_NOT_ENOUGH_SPACE, "pool 2 (ssd) has 56 MiB free, less than the 57 MiB asked for",
       volume({hdd, {m_ssdPool, 57 * MIB}}, TVK_VOLUME_CACHED)},
  };
  expectAllRefused(
      cases, "403 Volume [", [&](VirtualVolumeSpec& spec) { return adapter().createVirtualVolume(spec); });
}

TEST_F(RefusalsTest, RefusedCachedDrivesLeaveNothingBehind) {
  struct Case {
    TvkStatus status;
    const char* detail;
    std::uint32_t ssdPool;
    std::uint64_t cache = 8 * MIB;
    const char* name = "new";
    std::uint8_t type = TVK_VOLUME_CACHED;
    std::uint8_t drive = 3;
    std::uint8_t tier = TVK_TIER_HDD;
  };
  const std::vector<Case> cases = {
      {TVK_NAME_IN_USE, "the name 'tiered' is used by volume 1", m_ssdPool, 8 * MIB, "tiered"},
      {TVK_INVALID_VOLUME_TYPE,
       "the volume type is 1 (tiered); a drive with a cache is a volume of the type 2 (cached)", m_ssdPool,
       8 * MIB, "new", TVK_VOLUME_TIERED},
      {TVK_POOL_KINDS_CONFLICT, "drive 6 is an SSD; what is cached is a hard disk", m_ssdPool, 8 * MIB, "new",
       TVK_VOLUME_CACHED, 6, TVK_TIER_SSD},
      {TVK_NO_SUCH_POOL, "no pool has the number 77", 77},
      {TVK_POOL_KINDS_CONFLICT, "pool 1 (hdd) is a pool of hard disks; a cache is taken from a pool of SSDs",
       m_hddPool},
      {TVK_INVALID_CAPACITY, "0 B asked of pool 2 (ssd); a volume takes at least 1 MiB", m_ssdPool, 0},
      {TVK_NOT_ENOUGH_SPACE, "pool 2 (ssd) has 56 MiB free, less than the 57 MiB asked for", m_ssdPool,
       57 * MIB},
  };
  const std::string before = contents();
  for (const Case& one : cases) {
    VirtualPoolSpec ssd;
    ssd.poolId = one.ssdPool;
    ssd.capacityInSectors = one.cache;
    VirtualPoolSpec hdd = poolSpec("half", {one.drive}, 50 * MIB, one.tier);
    VirtualVolumeSpec spec = volumeSpec(one.name, one.type, {});
    expectRefused(TvkAdapter().createCachedLD(ssd, hdd, spec), one.status, one.detail);
    EXPECT_EQ(hdd.poolId, TVK_NO_ID);
    EXPECT_EQ(newEvents().size(), 2U);
  }
  VirtualPoolSpec ssd;
  ssd.poolId = m_ssdPool;
  ssd.capacityInSectors = 8 * MIB;
  VirtualPoolSpec hdd = poolSpec("half", {3}, 50 * MIB);
  VirtualVolumeSpec spec = volumeSpec("new", TVK_VOLUME_CACHED, {});
  EXPECT_NE(TvkAdapter().createCachedLD(hdd, ssd, spec).getReturn(), TVK_OK) << "the sides are exchanged";
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, UnfitChangesOfPoolsAndVolumesAreRefused) {
  const auto renamed = [](const char* name) { return poolSpec(name, {}, 0, 0); };
  struct Case {
    TvkStatus status;
    const char* detail;
    std::function<Ret()> call;
  };
  const std::vector<Case> cases = {
      {TVK_INVALID_NAME, "the name 'a\\x09b' has control characters",
       [&] { return adapter().modifyVirtualPool(m_hddPool, renamed("a\tb")); }},
      {TVK_POOL_IS_INTERNAL,
       "pool 4 (internal) belongs to a cached volume and cannot be changed; change the volume",
       [&] { return adapter().modifyVirtualPool(m_internal, renamed("fine")); }},
      {TVK_NO_SUCH_POOL, "the request names no pool", [&] { return adapter().deleteVirtualPool(TVK_NO_ID); }},
      {TVK_POOL_IS_INTERNAL,
       "pool 4 (internal) is the internal pool of volume 2 (cached) and is deleted together with it",
       [&] { return adapter().deleteVirtualPool(m_internal); }},
      {TVK_INVALID_ARGUMENT, "the record that the statistics go to is missing: the pointer is null",
       [&] { return adapter().getVirtualVolumeStats(nullptr, m_tiered); }},
  };
  const std::string before = contents();
  for (const Case& one : cases) {
    expectRefused(one.call(), one.status, one.detail);
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, LimitsAreThoseThatTheIdentityPublishes) {
  TvkAdapterIdentity identity{};
  ASSERT_EQ(adapter().getIdentity(identity).getReturn(), TVK_OK);
  EXPECT_EQ(identity.logicalDevicesCount, 7);
  EXPECT_EQ(identity.virtualPoolCount, 3);  // the internal one is not shown
  EXPECT_EQ(identity.virtualVolumeCount, 2);
  std::vector<std::uint8_t> numbers;
  while (numbers.size() < 255U - 7U) {
    numbers.push_back(addDrive(TVK_DEVICE_HDD, 2 * MIB));
  }
  EXPECT_THROW(addDrive(TVK_DEVICE_HDD, MIB), voltvk::Refusal);
  for (std::size_t i = 4; i < identity.maxTiers; ++i) {
    createPool(pool(("pool" + std::to_string(i)).c_str(), {numbers[i]}, MIB));
  }
  auto tooMany = pool("too many", {numbers[0]}, MIB);
  expectRefused(
      adapter().createVirtualPool(tooMany), TVK_TOO_MANY_POOLS,
      "there are 128 pools already, those of cached");
  for (std::size_t i = 2; i < identity.maxVolumes; ++i) {
    createVolume(volumeSpec(("volume" + std::to_string(i)).c_str(), TVK_VOLUME_TIERED, {{m_hddPool, MIB}}));
  }
  auto oneMore = volume({{m_hddPool, MIB}});
  expectRefused(
      adapter().createVirtualVolume(oneMore), TVK_TOO_MANY_VOLUMES,
      "there are 128 volumes already, which is the limit; delete one first");
  expectRefused(
      adapter().deleteVirtualPool(m_hddPool), TVK_POOL_IN_USE,
      "volume 3 (volume2), volume 4 (volume3) and others; delete what uses it first");
}

TEST_F(RefusalsTest, DrivesOfTheMachineSayWhyTheyAreUnfit) {
  insertDrives("VALUES(101, 'b', 1, 1, '/dev/cut', '', '', '', '', 409600, 1, 1, 0, 0, 1, 1),"
               "(102, 'c', 1, 1, '/dev/used', '', '', '', '', 409600, 1, 1, 0, 0, 0, 1),"
               "(103, 'd', 1, 0, '/dev/gone', '', '', '', '', 409600, 1, 1, 0, 0, 0, 0);"
               "UPDATE drive SET present = 0 WHERE number = 0");  // a member of the pool "hdd"
  const std::vector<Spoiled<VirtualPoolSpec>> cases = {
      {TVK_DEVICE_NOT_ELIGIBLE, "drive 101 (/dev/cut) has partitions and cannot join a pool",
       pool("new", {101})},
      {TVK_DEVICE_NOT_ELIGIBLE, "drive 102 (/dev/used) is mounted, used for swap or held",
       pool("new", {102})},
      {TVK_NO_SUCH_DEVICE, "drive 103 (/dev/gone) is unplugged; plug it in, or choose", pool("new", {103})},
      {TVK_DEVICE_IN_USE, "drive 0 (/dev/tvk0) belongs to pool 1 (hdd)", pool("new", {0})},
  };
  expectAllRefused(
      cases, "203 Pool [", [&](VirtualPoolSpec& spec) { return adapter().createVirtualPool(spec); });
}

TEST_F(RefusalsTest, ADetailIsOneLineOfWholeCharacters) {
  EXPECT_STREQ(Ret().getDetail(), "");
  EXPECT_STREQ(Ret(TVK_BUSY).getDetail(), "");
  const std::string fitting(TVK_DETAIL_SIZE - 1, 'x');
  EXPECT_EQ(Ret(TVK_BUSY, fitting.c_str()).getDetail(), fitting);
  const Ret cut(TVK_BUSY, (fitting.substr(1) + "\xE2\x82\xAC").c_str());
  EXPECT_EQ(Ret(cut).getDetail(), fitting.substr(1))
      << "the character that did not fit is left out as a whole";
  std::uint32_t first = 0;
  std::memcpy(&first, static_cast<const void*>(&cut), sizeof first);
  EXPECT_EQ(first, TVK_BUSY) << "who knows the status alone finds it first";
}

TEST(StatusList, EveryStatusHasANumberANameAndATextOfItsOwn) {
  std::vector<std::uint32_t> numbers;
  std::set<std::string> names;
  std::set<std::string> texts = {Ret(UINT32_MAX).getText()};  // the one for unknown codes
#define TVK_STATUS(name, number, clientName, text)                                                           \
  numbers.push_back(name);                                                                                   \
  names.insert(clientName);                                                                                  \
  texts.insert(Ret(name).getText());
#include "voltvk/Status.def"
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end(), std::less_equal<>()));
  EXPECT_EQ(names.size(), numbers.size());
  EXPECT_EQ(texts.size(), numbers.size() + 1);
}

}  // namespace
