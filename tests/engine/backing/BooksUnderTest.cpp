// SPDX-License-Identifier: Apache-2.0
#include "engine/backing/TestedBacking.h"
#include "support/Storage.h"
#include "voltvk/engine/activity/TouchRecorder.h"
#include "voltvk/engine/state/SnapshotReader.h"

namespace tvp::test {

namespace {

class BooksUnderTest : public TestedBacking {
public:
  bool isReal() const override { return false; }
  void prepare() override {
    for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_SSD}) {
      Storage::addDrive(type, 2 * GIB);
    }
  }
  void read(std::uint32_t id, std::uint64_t chunk, std::uint64_t times) override {
    Storage::state()->change([&](voltvk::Connection& connection) {
      for (const voltvk::VolumeRecord& volume : voltvk::SnapshotReader(connection).volumes()) {
        if (volume.id == id) {
          voltvk::VolumeTouches touches;
          touches.chunks.push_back({chunk, {times, 0}});
          voltvk::TouchRecorder(volume, false, touches).recordNext(connection);
        }
      }
    });
  }
  void fill(std::uint32_t, std::uint64_t) override {}
  bool isFilled(std::uint32_t, std::uint64_t) override { return true; }
  std::string onDrives() override { return {}; }
};

}  // namespace

std::unique_ptr<TestedBacking> TestedBacking::make() {
  return std::make_unique<BooksUnderTest>();
}

}  // namespace tvp::test
