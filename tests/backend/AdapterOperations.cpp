// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "backend/TarvexProVirtualVolume.h"

namespace tvp::test {
namespace {

using namespace cim::fwf;

using AdapterOperations = StorageTest;

TEST_F(AdapterOperations, PoolsOfAVolumeAreOrderedAndTheirCapacitiesAdded) {
  const unsigned int hdd = makePool("Slow", TVK_DEVICE_HDD);
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  constexpr unsigned long long LARGEST = ~0ULL;
  const struct {
    VirtualPoolEntry pools[2];
    unsigned int count;
    unsigned char kind;
    unsigned long long capacity;
    bool exchanged;
  } cases[] = {
      {{{ssd, GIB}, {hdd, 2 * GIB}}, 2, 1, 3 * GIB, true},
      {{{hdd, 2 * GIB}, {ssd, GIB}}, 2, 1, 3 * GIB, false},
      {{{ssd, GIB}, {hdd, 2 * GIB}}, 2, 2, 2 * GIB, true},
      {{{ssd, GIB}, {TVK_NO_ID, 0}}, 1, 1, GIB, true},
      {{{999, GIB}, {hdd, GIB}}, 2, 2, GIB, false},
      {{{hdd, LARGEST}, {ssd, 2}}, 255, 1, LARGEST, false},
  };
  int number = 0;
  for (const auto& sample : cases) {
    SCOPED_TRACE(number);
    VirtualVolumeSpec spec;
    tvkSetText(spec.name, TVK_NAME_SIZE, ("Volume " + std::to_string(number++)).c_str());
    spec.numValidPools = sample.count;
    spec.featureType1 = sample.kind;
    std::copy_n(sample.pools, 2, spec.pools);
    log.clear();
    Ret ret;
    TarvexProVirtualVolume::CreateVirtualVolume(spec, ret);
    for (int entry = 0; entry < 2; ++entry) {
      const VirtualPoolEntry& expected = sample.pools[sample.exchanged ? 1 - entry : entry];
      EXPECT_EQ(spec.pools[entry].poolId, expected.poolId);
      EXPECT_EQ(spec.pools[entry].capacityInSectors, expected.capacityInSectors);
    }
    EXPECT_EQ(spec.capacityInSectors, sample.capacity);
    EXPECT_EQ(log.has(LogCapture::trace("Changed the pool sequence order")), sample.exchanged);
    EXPECT_TRUE(log.has(LogCapture::message(
        4, "Processing to sort Virtual Pool IDs in the order of HDD and then SSD "
           "pool \t\t\t\t\t\t\t\t for total pools: " +
               std::to_string(sample.count))));
  }
  EXPECT_TRUE(log.has(LogCapture::message(
      4, "The pool sequence order as: HDD " + std::to_string(hdd) + "  and SSD " + std::to_string(ssd))));
}

TEST_F(AdapterOperations, PoolsAreOrderedBeforeTheLibraryIsCalled) {
  VirtualVolumeSpec spec;
  spec.numValidPools = 2;
  spec.pools[0] = {makePool("Fast", TVK_DEVICE_SSD), GIB};
  spec.pools[1] = {makePool("Slow", TVK_DEVICE_HDD), GIB};
  const std::string sequence = "The pool sequence order as: HDD " + std::to_string(spec.pools[1].poolId) +
                               "  and SSD " + std::to_string(spec.pools[0].poolId);
  log.clear();
  Ret ret;
  TarvexProVirtualVolume::CreateVirtualVolume(spec, ret);
  std::vector<std::string> lines = log.lines();
  ASSERT_LE(8U, lines.size());
  lines.resize(8);  // the reason of the refusal follows
  EXPECT_EQ(
      lines,
      (std::vector<std::string>{
          LogCapture::trace("Entering TarvexProVirtualVolume::CreateVirtualVolume()"),
          LogCapture::message(
              4, "Processing to sort Virtual Pool IDs in the order of HDD and then SSD pool "
                 "\t\t\t\t\t\t\t\t for total pools: 2"),
          LogCapture::trace("Changed the pool sequence order"), LogCapture::message(4, sequence),
          LogCapture::message(4, "The requested Volume capacity in sectors: " + std::to_string(GIB)),
          LogCapture::trace("Calling TvkAdapter::createVirtualVolume()"),
          LogCapture::trace("Returned from TvkAdapter::createVirtualVolume()"),
          LogCapture::message(4, "Exiting TarvexProVirtualPool::CreateVirtualVolume() with Return: 3")}));
}

TEST_F(AdapterOperations, NamesOfCachedVolumesAreCutBetweenCharacters) {
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  VirtualPoolSpec internal;
  tvkSetText(internal.name, TVK_NAME_SIZE, "InternalPool7");
  internal.numLogicalDevices = internal.numDeviceNumbers = 1;
  internal.deviceNumbers[0] = addDrive(TVK_DEVICE_HDD);
  internal.capacityInSectors = 4 * GIB;
  internal.chunkSizeInSectors = MIB;
  internal.tierLevel = TVK_TIER_HDD;
  internal.poolFlag = TVK_POOL_INTERNAL;
  Ret ret;
  const std::string thirty(30, 'n');
  EXPECT_EQ(
      TarvexProVirtualVolume::CreateDataCacheVirtualVolume(
          thirty + "\u00e4 and more", std::string(62, 'd') + "\u20ac", TVK_VOLUME_CACHED, ssd, GIB, 2,
          internal, ret),
      0U);
  ASSERT_EQ(ret.getReturn(), 0U) << ret.getText();
  EXPECT_EQ(volumes(), std::vector<std::string>{thirty});
}

}  // namespace
}  // namespace tvp::test
