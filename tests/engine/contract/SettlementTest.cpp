// SPDX-License-Identifier: Apache-2.0
// What becomes of a change of real pools and volumes that a process left behind.
#include "engine/EngineFixture.h"
#include "voltvk/engine/backing/books/BooksBacking.h"
#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/state/Refusal.h"

#include <gmock/gmock.h>

using namespace tvp::test;
using testing::HasSubstr;
using testing::IsEmpty;
using voltvk::Step;

namespace {

/** Drives to which something has been moved, and that have no volume any more. */
class Drives : public voltvk::BooksBacking {
public:
  bool undoReplacement(
      const voltvk::PoolRecord&, const voltvk::DriveExchange&, const voltvk::Configuration&) override {
    return false;
  }
  std::vector<voltvk::VolumeExtentRecord>
  layout(const voltvk::VolumeRecord&, const voltvk::Configuration&) override {
    return {};
  }
  void resizeVolume(const voltvk::VolumeRecord&, const voltvk::Configuration&) override {
    throw voltvk::Refusal(TVK_BACKING_FAILED, "there is no such volume");
  }
};

class Settlement : public EngineTest {
protected:
  /** Records a step as a process does that ends before it has carried it out. */
  static void leaveBehind(const voltvk::Intent& intent) {
    const voltvk::BackingLock lock(state()->path(), voltvk::State::Clock::now());
    state()->change(
        [&](voltvk::Connection& connection) { voltvk::recordIntents(*state(), connection, {intent}); });
  }

  Drives m_drives;
};

TEST_F(Settlement, OfAReplacementNeedsNoOldDriveAndMayBeRepeated) {
  addDrive(TVK_DEVICE_HDD, 100 * MIB);
  addDrive(TVK_DEVICE_HDD, 100 * MIB);
  createPool(poolSpec("slow", {0}, 50 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 20 * MIB}}));
  execute("UPDATE backing SET kind = 2; UPDATE drive SET virtual = 0, present = number");
  state()->read([](voltvk::Connection& connection) {
    try {
      voltvk::PoolChanges(connection).replaceDrive(1, 0, 1);
      ADD_FAILURE() << "what has not been moved yet cannot be moved any more";
    } catch (const voltvk::Refusal& refusal) {
      EXPECT_EQ(refusal.status(), TVK_POOL_DEGRADED);
      EXPECT_THAT(refusal.what(), HasSubstr("missing, so what volume 1 (data) has on it cannot be moved"));
    }
  });
  // The second time it was cut off when all was recorded, before the step was forgotten.
  for (const std::size_t notes : {1U, 0U}) {
    leaveBehind({Step::ReplaceDrive, 1, {0, 1}});
    EXPECT_EQ(voltvk::settleIntents(*state(), m_drives).size(), notes);
    EXPECT_EQ(Storage::rows("SELECT drive FROM pool_member"), "1|\n");
    EXPECT_EQ(Storage::rows("SELECT * FROM intent"), "");
  }
}

TEST_F(Settlement, OfAGrowthEndsWithItsVolume) {
  createPool(poolSpec("slow", {addDrive(TVK_DEVICE_HDD, 100 * MIB)}, 50 * MIB));
  createVolume(volumeSpec("data", TVK_VOLUME_TIERED, {{1, 20 * MIB}}));
  leaveBehind({Step::GrowVolume, 1, {}});
  EXPECT_THAT(voltvk::settleIntents(*state(), m_drives), IsEmpty());
  EXPECT_EQ(Storage::rows("SELECT * FROM intent"), "");
}

}  // namespace
