// SPDX-License-Identifier: Apache-2.0
// Every refusal has a status of its own and changes nothing.
#include "engine/EngineFixture.h"
#include "voltvk/engine/rules/Refusal.h"

#include <sqlite3.h>

#include <functional>
#include <numeric>
#include <set>

using namespace tvp::test;

namespace {

constexpr std::uint64_t LARGE = ~std::uint64_t{0};
const std::string LONGEST_NAME(31, 'n');

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

  /** Everything in the state but the events. */
  std::string contents() const {
    std::string text;
    state()->read([&](voltvk::Connection& connection) {
      for (const char* table : {"drive", "pool", "pool_member", "volume", "volume_extent", "chunk"}) {
        const std::string query = std::string("SELECT * FROM ") + table;
        sqlite3_exec(
            connection.handle(), query.c_str(),
            [](void* out, int count, char** values, char**) {
              for (int i = 0; i < count; ++i) {
                *static_cast<std::string*>(out) += std::string(values[i] == nullptr ? "-" : values[i]) + "|";
              }
              return 0;
            },
            &text, nullptr);
      }
    });
    return text;
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

/** A change of an acceptable request that makes it unacceptable. */
template <typename Spec>
struct Spoiled {
  TvkStatus status;
  Spec spec;
  std::function<void(Spec&)> spoil = nullptr;
};

TEST_F(RefusalsTest, PoolsThatCannotBeMade) {
  const auto named = [&](const std::string& name) { return pool(name.c_str()); };
  std::vector<std::uint8_t> many(65);
  std::iota(many.begin(), many.end(), std::uint8_t{0});
  const std::vector<Spoiled<VirtualPoolSpec>> cases = {
      {TVK_INVALID_NAME, named("")},
      {TVK_INVALID_NAME, named(LONGEST_NAME + "n")},
      {TVK_INVALID_NAME, named("line\nbreak")},
      {TVK_INVALID_NAME, named("\xC2\x85")},
      {TVK_INVALID_NAME, named("half \xC3")},
      {TVK_INVALID_NAME, named("overlong \xC0\xAF")},
      {TVK_INVALID_NAME, named("surrogate \xED\xA0\x80")},
      {TVK_INVALID_NAME, pool(), [](auto& spec) { std::fill_n(spec.name, sizeof spec.name, 'x'); }},
      {TVK_INVALID_DESCRIPTION, pool(), [](auto& spec) { spec.descriptionTooLong = true; }},
      {TVK_INVALID_DESCRIPTION, pool(), [](auto& spec) { spec.description[0] = '\xFF'; }},
      {TVK_NAME_IN_USE, named("ssd")},
      {TVK_NAME_IN_USE, named("internal")},
      {TVK_INVALID_CHUNK_SIZE, pool(), [](auto& spec) { spec.chunkSizeInSectors = 0; }},
      {TVK_INVALID_CHUNK_SIZE, pool(), [](auto& spec) { spec.chunkSizeInSectors = 4096; }},
      {TVK_DEVICE_COUNT_MISMATCH, pool("new", {})},
      {TVK_DEVICE_COUNT_MISMATCH, pool(), [](auto& spec) { spec.numLogicalDevices = 2; }},
      {TVK_TOO_MANY_DEVICES, pool("new", many)},
      {TVK_TOO_MANY_DEVICES, pool(),
       [](auto& spec) { spec.numLogicalDevices = spec.numDeviceNumbers = 0xFFFFFFFF; }},
      {TVK_DEVICE_DUPLICATE, pool("new", {3, 3})},
      {TVK_NO_SUCH_DEVICE, pool("new", {99})},
      {TVK_DEVICE_IN_USE, pool("new", {0})},
      {TVK_DEVICE_IN_USE, pool("new", {2})},
      {TVK_DEVICE_KINDS_MIXED, pool("new", {3, 6})},
      {TVK_INVALID_TIER_LEVEL, pool(), [](auto& spec) { spec.tierLevel = 0; }},
      {TVK_INVALID_TIER_LEVEL, pool(), [](auto& spec) { spec.tierLevel = 2; }},
      {TVK_INVALID_TIER_LEVEL, pool(), [](auto& spec) { spec.tierLevel = TVK_TIER_SSD; }},
      {TVK_INVALID_CAPACITY, pool("new", {3}, 0)},
      {TVK_INVALID_CAPACITY, pool("new", {3}, MIB - 1)},
      {TVK_NOT_ENOUGH_SPACE, pool("new", {3}, 100 * MIB + 1)},
      {TVK_NOT_ENOUGH_SPACE, pool("new", {3}, LARGE)},
      {TVK_INVALID_ARGUMENT, pool(), [](auto& spec) { spec.poolFlag = 5; }},
  };
  const std::string before = contents();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    VirtualPoolSpec spec = cases[i].spec;
    if (cases[i].spoil) {
      cases[i].spoil(spec);
    }
    EXPECT_EQ(adapter().createVirtualPool(spec).getReturn(), cases[i].status) << "case " << i;
    EXPECT_EQ(spec.poolId, TVK_NO_ID) << "case " << i;
    const std::vector<std::string> events = newEvents();
    ASSERT_EQ(events.size(), 1U) << "case " << i;
    EXPECT_EQ(events[0].rfind("203 Pool [", 0), 0U) << events[0];
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, VolumesThatCannotBeMade) {
  const VirtualPoolEntry hdd{m_hddPool, 10 * MIB};
  const VirtualPoolEntry ssd{m_ssdPool, 10 * MIB};
  const auto capacity = [&](std::uint64_t sectors) { return volume({{m_hddPool, sectors}}); };
  const std::vector<Spoiled<VirtualVolumeSpec>> cases = {
      {TVK_INVALID_NAME, volume({hdd}), [](auto& spec) { spec.name[0] = '\0'; }},
      {TVK_INVALID_NAME, volume({hdd}), [](auto& spec) { spec.nameTooLong = true; }},
      {TVK_INVALID_DESCRIPTION, volume({hdd}), [](auto& spec) { spec.descriptionTooLong = true; }},
      {TVK_NAME_IN_USE, volumeSpec("cached", TVK_VOLUME_TIERED, {hdd})},
      {TVK_INVALID_VOLUME_TYPE, volume({hdd}, 0)},
      {TVK_INVALID_VOLUME_TYPE, volume({hdd}, 3)},
      {TVK_INVALID_KNOB, volume({hdd}), [](auto& spec) { spec.knobSetting = 4; }},
      {TVK_INVALID_KNOB, volume({hdd}), [](auto& spec) { spec.knobSetting = 257; }},
      {TVK_POOL_COUNT_MISMATCH, volume({})},
      {TVK_POOL_COUNT_MISMATCH, volume({hdd, ssd, ssd})},
      {TVK_POOL_COUNT_MISMATCH, volume({hdd}), [](auto& spec) { spec.numValidPools = 2; }},
      {TVK_POOL_COUNT_MISMATCH, volume({hdd}), [](auto& spec) { spec.numPoolSizes = 2; }},
      {TVK_POOL_COUNT_MISMATCH, volume({hdd}, TVK_VOLUME_CACHED)},
      {TVK_POOL_DUPLICATE, volume({hdd, hdd})},
      {TVK_NO_SUCH_POOL, volume({{77, MIB}})},
      {TVK_NO_SUCH_POOL, volume({hdd, {77, MIB}})},
      {TVK_POOL_IS_INTERNAL, volume({{m_internal, MIB}})},
      {TVK_POOL_KINDS_CONFLICT, volume({ssd, {m_otherSsd, MIB}})},
      {TVK_INVALID_CAPACITY, capacity(0)},
      {TVK_INVALID_CAPACITY, capacity(MIB - 1)},
      {TVK_INVALID_CAPACITY, capacity(LARGE)},
      {TVK_INVALID_CAPACITY, volume({hdd, {m_ssdPool, 0}})},
      {TVK_INVALID_CAPACITY, volume({hdd, {m_ssdPool, LARGE}})},
      {TVK_INVALID_CAPACITY, volume({hdd}), [](auto& spec) { spec.capacityInSectors = 11 * MIB; }},
      {TVK_NOT_ENOUGH_SPACE, capacity(191 * MIB)},
      {TVK_NOT_ENOUGH_SPACE, volume({hdd, {m_ssdPool, 57 * MIB}}, TVK_VOLUME_CACHED)},
  };
  const std::string before = contents();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    VirtualVolumeSpec spec = cases[i].spec;
    if (cases[i].spoil) {
      cases[i].spoil(spec);
    }
    EXPECT_EQ(adapter().createVirtualVolume(spec).getReturn(), cases[i].status) << "case " << i;
    const std::vector<std::string> events = newEvents();
    ASSERT_EQ(events.size(), 1U) << "case " << i;
    EXPECT_EQ(events[0].rfind("403 Volume [", 0), 0U) << events[0];
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, CachedDrivesThatCannotBeMadeLeaveNoHalf) {
  struct Case {
    TvkStatus status;
    std::uint8_t drive;
    std::uint32_t ssdPool;
    std::uint64_t cache;
    std::uint8_t tier;
    std::uint8_t type;
    const char* name;
  };
  const std::vector<Case> cases = {
      {TVK_NAME_IN_USE, 3, m_ssdPool, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "tiered"},
      {TVK_INVALID_VOLUME_TYPE, 3, m_ssdPool, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_TIERED, "new"},
      {TVK_DEVICE_IN_USE, 2, m_ssdPool, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
      {TVK_INVALID_TIER_LEVEL, 6, m_ssdPool, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
      {TVK_POOL_KINDS_CONFLICT, 6, m_ssdPool, 8 * MIB, TVK_TIER_SSD, TVK_VOLUME_CACHED, "new"},
      {TVK_NO_SUCH_POOL, 3, 77, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
      {TVK_POOL_KINDS_CONFLICT, 3, m_hddPool, 8 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
      {TVK_INVALID_CAPACITY, 3, m_ssdPool, 0, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
      {TVK_NOT_ENOUGH_SPACE, 3, m_ssdPool, 57 * MIB, TVK_TIER_HDD, TVK_VOLUME_CACHED, "new"},
  };
  const std::string before = contents();
  for (const Case& one : cases) {
    VirtualPoolSpec ssd;
    ssd.poolId = one.ssdPool;
    ssd.capacityInSectors = one.cache;
    VirtualPoolSpec hdd = poolSpec("half", {one.drive}, 50 * MIB, one.tier);
    VirtualVolumeSpec spec = volumeSpec(one.name, one.type, {});
    EXPECT_EQ(TvkAdapter().createCachedLD(ssd, hdd, spec).getReturn(), one.status);
    EXPECT_EQ(hdd.poolId, TVK_NO_ID);
    EXPECT_EQ(newEvents().size(), 2U);
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, OperationsOnWhatIsThereAlready) {
  const auto renamed = [](const char* name) { return poolSpec(name, {}, 0, 0); };
  auto levelled = renamed("");
  levelled.tierLevel = TVK_TIER_SSD;
  auto knob = volumeSpec("", 0, {});
  knob.knobSetting = 4;
  auto taken = volumeSpec("cached", 0, {});
  auto fine = volumeSpec("fine", 0, {});
  d_ioctl_user_stat statistics{};
  const std::vector<std::pair<TvkStatus, std::function<Ret()>>> cases = {
      {TVK_NO_SUCH_POOL, [&] { return adapter().modifyVirtualPool(77, renamed("fine")); }},
      {TVK_NAME_IN_USE, [&] { return adapter().modifyVirtualPool(m_hddPool, renamed("ssd")); }},
      {TVK_INVALID_NAME, [&] { return adapter().modifyVirtualPool(m_hddPool, renamed("a\tb")); }},
      {TVK_INVALID_TIER_LEVEL, [&] { return adapter().modifyVirtualPool(m_hddPool, levelled); }},
      {TVK_POOL_IS_INTERNAL, [&] { return adapter().modifyVirtualPool(m_internal, renamed("fine")); }},
      {TVK_NO_SUCH_POOL, [&] { return adapter().deleteVirtualPool(TVK_NO_ID); }},
      {TVK_POOL_IN_USE, [&] { return adapter().deleteVirtualPool(m_hddPool); }},
      {TVK_POOL_IN_USE, [&] { return adapter().deleteVirtualPool(m_ssdPool); }},
      {TVK_POOL_IS_INTERNAL, [&] { return adapter().deleteVirtualPool(m_internal); }},
      {TVK_NO_SUCH_VOLUME, [&] { return adapter().modifyVirtualVolume(77, fine); }},
      {TVK_NAME_IN_USE, [&] { return adapter().modifyVirtualVolume(m_tiered, taken); }},
      {TVK_INVALID_KNOB, [&] { return adapter().modifyVirtualVolume(m_tiered, knob); }},
      {TVK_NO_SUCH_VOLUME, [&] { return adapter().deleteVirtualVolume(77); }},
      {TVK_NO_SUCH_VOLUME, [&] { return adapter().flushVirtualVolume(77); }},
      {TVK_NOT_CACHED, [&] { return adapter().flushVirtualVolume(m_tiered); }},
      {TVK_NO_SUCH_VOLUME, [&] { return adapter().resetVirtualVolumeStats(77); }},
      {TVK_NO_SUCH_VOLUME, [&] { return adapter().getVirtualVolumeStats(&statistics, 77); }},
      {TVK_INVALID_ARGUMENT, [&] { return adapter().getVirtualVolumeStats(nullptr, m_tiered); }},
  };
  const std::string before = contents();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(cases[i].second().getReturn(), cases[i].first) << "case " << i;
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(RefusalsTest, LimitsAreThoseOfTheIdentity) {
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
  EXPECT_EQ(adapter().createVirtualPool(tooMany).getReturn(), TVK_TOO_MANY_POOLS);
  for (std::size_t i = 2; i < identity.maxVolumes; ++i) {
    createVolume(volumeSpec(("volume" + std::to_string(i)).c_str(), TVK_VOLUME_TIERED, {{m_hddPool, MIB}}));
  }
  auto oneMore = volume({{m_hddPool, MIB}});
  EXPECT_EQ(adapter().createVirtualVolume(oneMore).getReturn(), TVK_TOO_MANY_VOLUMES);
}

TEST(StatusTexts, EveryCodeHasATextOfItsOwn) {
  std::set<std::string> texts;
  int known = 0;
  for (std::uint32_t status = 0; status <= 60; ++status) {
    const std::string text = Ret(status).getText();
    known += text == Ret(61).getText() ? 0 : 1;
    texts.insert(text);
  }
  EXPECT_EQ(known, 32);
  EXPECT_EQ(texts.size(), 33U);  // and the one for unknown codes
}

}  // namespace
