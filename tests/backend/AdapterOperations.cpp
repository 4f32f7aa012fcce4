// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/RefusalReason.h"
#include "backend/StorageFixture.h"
#include "backend/TarvexProVirtualPool.h"
#include "backend/TarvexProVirtualVolume.h"

namespace tvp::test {
namespace {

using namespace cim::fwf;

struct OperationCase {
  std::string method;
  std::string exit;
  std::string calling;
  std::string returned;
  std::string throwing;
  std::string libraryOperation;
  std::function<unsigned int(Ret&)> run;
};

const std::string POOL = "TarvexProVirtualPool::";
const std::string VOLUME = "TarvexProVirtualVolume::";

OperationCase
regular(const std::string& method, const std::string& operation, std::function<unsigned int(Ret&)> run) {
  return {method, method, operation, operation, operation, operation, std::move(run)};
}

std::vector<OperationCase> allOperations() {
  static VirtualPoolSpec pool;
  static VirtualVolumeSpec volume;
  static d_ioctl_user_stat statistics;
  std::vector<OperationCase> cases = {
      regular(
          POOL + "CreateVirtualPool", "createVirtualPool",
          [](Ret& ret) { return TarvexProVirtualPool::CreateVirtualPool(pool, ret); }),
      regular(
          POOL + "ModifyVirtualPool", "modifyVirtualPool",
          [](Ret& ret) { return TarvexProVirtualPool::ModifyVirtualPool(7, pool, ret); }),
      regular(
          POOL + "DeleteVirtualPool", "deleteVirtualPool",
          [](Ret& ret) { return TarvexProVirtualPool::DeleteVirtualPool(7, ret); }),
      regular(
          VOLUME + "CreateVirtualVolume", "createVirtualVolume",
          [](Ret& ret) { return TarvexProVirtualVolume::CreateVirtualVolume(volume, ret); }),
      regular(
          VOLUME + "ModifyVirtualVolume", "modifyVirtualVolume",
          [](Ret& ret) { return TarvexProVirtualVolume::ModifyVirtualVolume(7, volume, ret); }),
      regular(
          VOLUME + "FlushVirtualVolume", "flushVirtualVolume",
          [](Ret& ret) { return TarvexProVirtualVolume::FlushVirtualVolume(7, ret); }),
      regular(
          VOLUME + "DeleteVirtualVolume", "deleteVirtualVolume",
          [](Ret& ret) { return TarvexProVirtualVolume::DeleteVirtualVolume(7, ret); }),
      regular(
          VOLUME + "ResetVolumeStats", "resetVirtualVolumeStats",
          [](Ret& ret) { return TarvexProVirtualVolume::ResetVolumeStats(7, ret); }),
      regular(
          VOLUME + "GetVolumeStats", "getVirtualVolumeStats",
          [](Ret& ret) { return TarvexProVirtualVolume::GetVolumeStats(7, &statistics, ret); }),
      {VOLUME + "CreateDataCacheVirtualVolume", VOLUME + "CreateDataCacheVolume", "createDataCacheVolume",
       "CreateDataCacheVolume", "CreateDataCacheVolume", "createCachedLD",
       [](Ret& ret) {
         return TarvexProVirtualVolume::CreateDataCacheVirtualVolume("v", "d", 2, 1, GIB, 2, pool, ret);
       }},
  };
  cases[1].throwing = "ModifyVirtualPool";
  cases[3].exit = POOL + "CreateVirtualVolume";
  return cases;
}

/** The log lines of an operation between its entry and its exit. */
std::vector<std::string> course(const LogCapture& log) {
  std::vector<std::string> kept;
  for (const std::string& line : log.lines()) {
    for (const char* word : {"Entering ", "Calling ", "Returned ", "!!ERROR!!", "Exception ", "Exiting "}) {
      if (line.find(word) != std::string::npos) {
        kept.push_back(line);
      }
    }
  }
  return kept;
}

class AdapterOperations : public StorageTest {
protected:
  /** Runs an operation and checks its result and what it logs between entry and exit. */
  void expectCourse(
      const OperationCase& operation, unsigned int result, unsigned int status,
      const std::vector<std::string>& between) {
    SCOPED_TRACE(operation.method);
    log.clear();
    Ret ret;
    EXPECT_EQ(operation.run(ret), result);
    EXPECT_EQ(ret.getReturn(), status);
    std::vector<std::string> expected = between;
    expected.insert(
        expected.begin(),
        operation.libraryOperation == "createCachedLD"
            ? LogCapture::message(4, "Entering TarvexProVirtualVolume::CreateDataCacheVolume :")
            : LogCapture::trace("Entering " + operation.method + "()"));
    expected.push_back(
        LogCapture::message(4, "Exiting " + operation.exit + "() with Return: " + std::to_string(result)));
    EXPECT_EQ(course(log), expected);
  }
};

TEST_F(AdapterOperations, RefusalsAreFailuresAndExceptionsAreReportedAsSuccess) {
  for (const OperationCase& operation : allOperations()) {
    const std::string calling = LogCapture::trace("Calling TvkAdapter::" + operation.calling + "()");
    voltvk::Faults().fail(operation.libraryOperation, 77);
    expectCourse(
        operation, 3, 77,
        {calling, LogCapture::trace("Returned from TvkAdapter::" + operation.returned + "()")});
    voltvk::Faults().throwFrom(operation.libraryOperation);
    expectCourse(
        operation, 0, 0,
        {calling,
         LogCapture::trace("Exception caught in Tvk Lib method: TvkAdapter::" + operation.throwing + "() ")});
  }
}

TEST_F(AdapterOperations, TheReasonFollowsTheLinesThatAreThereAnyway) {
  for (const OperationCase& operation : allOperations()) {
    SCOPED_TRACE(operation.method);
    const auto expectReason = [&](unsigned int result, const std::string& reason) {
      log.clear();
      const RefusalReason requestReason;
      Ret ret;
      EXPECT_EQ(operation.run(ret), result);
      const std::vector<std::string> lines = log.lines();
      ASSERT_GE(lines.size(), 2U);
      EXPECT_EQ(
          lines[lines.size() - 2],
          LogCapture::message(4, "Exiting " + operation.exit + "() with Return: " + std::to_string(result)));
      EXPECT_EQ(lines.back(), LogCapture::message(2, operation.method + "() was refused: " + reason));
      EXPECT_EQ(requestReason.text(), reason);
    };
    voltvk::Faults().fail(operation.libraryOperation, 77);
    expectReason(
        3, "an injected fault has refused this call: fail " + operation.libraryOperation + " with status 77");
    voltvk::Faults().throwFrom(operation.libraryOperation);
    expectReason(0, "injected fault in " + operation.libraryOperation);
  }
}

TEST_F(AdapterOperations, WithoutAnAdapterNothingIsCalled) {
  voltvk::Faults().adapterAbsent();
  refreshTarvexProObjects();
  for (const OperationCase& operation : allOperations()) {
    expectCourse(
        operation, 3, 0,
        {LogCapture::message(4, operation.method + "() - !!ERROR!! - TvkAdapter object is NULL")});
    EXPECT_EQ(log.lines().back().rfind(":LOG_DEBUG::Exiting ", 0), 0U) << "no reason of the library's";
  }
  log.clear();
  std::vector<CIMInstance> members;
  EXPECT_EQ(TarvexProVirtualPool::GetPoolMembers(1, members), 3U);
  EXPECT_EQ(TarvexProVirtualVolume::GetVolumeMembers(1, members), 3U);
  EXPECT_TRUE(members.empty());
  EXPECT_TRUE(log.has(LogCapture::message(
      4, "TarvexProVirtualPool::GetPoolMembers() - !!ERROR!! - TvkAdapter object is NULL")));
  EXPECT_TRUE(log.has(LogCapture::trace("Exiting TarvexProVirtualVolume::GetVolumeMembers ")));
}

TEST_F(AdapterOperations, DeletingADataCacheVolumeReturnsTheStatusItIsGiven) {
  Ret fresh;
  EXPECT_EQ(TarvexProVirtualVolume::DeleteDataCacheVolume(5, 6, fresh), 0U);
  EXPECT_TRUE(log.has(LogCapture::message(
      4, "Entering TarvexProVirtualVolume::DeleteDataCacheVolume :- "
         "VirtualVolumeId : 5.\t\tVirtualPoolID = 6")));
  Ret refused(TVK_NO_SUCH_VOLUME);
  EXPECT_EQ(TarvexProVirtualVolume::DeleteDataCacheVolume(5, 6, refused), 3U);
  EXPECT_EQ(refused.getReturn(), static_cast<unsigned int>(TVK_NO_SUCH_VOLUME));
}

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
