// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_BOOKS_BOOKSBACKING_H
#define VOLTVK_ENGINE_BACKING_BOOKS_BOOKSBACKING_H

#include "voltvk/engine/backing/Backing.h"

namespace voltvk {

/** Pools and volumes that exist in the state alone: there is nothing to do, and nothing to look at. */
class BooksBacking : public Backing {
public:
  bool isReal() const override { return false; }
  void requireUsable() override {}
  void activate() override {}
  void requireUnknown(const std::vector<Intent>&, const Configuration&) override {}
  void makePool(const PoolRecord&, const Configuration&) override {}
  void removePool(const PoolRecord&, const Configuration&) override {}
  void extendPool(const PoolRecord&, const Configuration&) override {}
  void releaseDrive(const PoolRecord&, std::uint16_t, const Configuration&) override {}
  void
  replaceDrive(const PoolRecord&, const DriveExchange&, const Configuration&, const MoveProgress&) override {}
  bool undoReplacement(const PoolRecord&, const DriveExchange&, const Configuration&) override {
    return true;
  }
  bool describePool(const PoolRecord&, const Configuration&) override { return false; }
  void makeVolume(const VolumeRecord&, const Configuration&) override {}
  void removeVolume(std::uint32_t) override {}
  bool describeVolume(const VolumeRecord&) override { return false; }
  void resizeVolume(const VolumeRecord&, const Configuration&) override {}
  void exchange(
      const VolumeRecord&, const std::vector<std::uint64_t>&, const std::vector<std::uint64_t>&,
      const Configuration&) override {}
  std::vector<VolumeExtentRecord> layout(const VolumeRecord& volume, const Configuration&) override {
    return volume.extents;
  }
  std::uint64_t flush(const VolumeRecord&, const FlushProgress&) override { return 0; }
  void endFlush(const VolumeRecord&) override {}
  std::vector<std::string> differences(const Configuration&) override { return {}; }
  std::vector<std::string> contradictions(const Configuration&) override { return {}; }
  Configuration recovered(const std::vector<DriveRecord>&) override { return {}; }
  std::string devicePath(std::uint32_t) const override { return {}; }
  bool isOpen(std::uint32_t) const override { return false; }
  KernelCounters counters(const VolumeRecord&) const override { return {}; }
  KernelCounters takeCounters(const VolumeRecord&) override { return {}; }
};

}  // namespace voltvk

#endif
