// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_BOOKS_BOOKSBACKING_H
#define VOLTVK_ENGINE_BACKING_BOOKS_BOOKSBACKING_H

#include "voltvk/engine/backing/Backing.h"

namespace voltvk {

/** Pools and volumes that exist in the state alone: there is nothing to do, and nothing to look at. */
class BooksBacking final : public Backing {
public:
  bool isReal() const override { return false; }
  void requireUsable() override {}
  void activate() override {}
  void requireUnknown(const std::vector<Intent>&) override {}
  void makePool(const PoolRecord&, const Configuration&) override {}
  void removePool(const PoolRecord&, const Configuration&) override {}
  void describePool(const PoolRecord&, const Configuration&) override {}
  void makeVolume(const VolumeRecord&, const Configuration&) override {}
  void removeVolume(std::uint32_t) override {}
  void describeVolume(const VolumeRecord&) override {}
  void exchange(
      const VolumeRecord&, const std::vector<std::uint64_t>&, const std::vector<std::uint64_t>&,
      const Configuration&) override {}
  std::vector<VolumeExtentRecord> layout(const VolumeRecord& volume, const Configuration&) override {
    return volume.extents;
  }
  std::uint64_t flush(const VolumeRecord&, const FlushProgress&) override { return 0; }
  void endFlush(const VolumeRecord&) override {}
  std::vector<std::string> differences(const Configuration&) override { return {}; }
  Configuration recovered(const std::vector<DriveRecord>&) override { return {}; }
  std::string devicePath(std::uint32_t) const override { return {}; }
  bool isOpen(std::uint32_t) const override { return false; }
  KernelCounters counters(const VolumeRecord&) const override { return {}; }
  KernelCounters takeCounters(const VolumeRecord&) override { return {}; }
};

}  // namespace voltvk

#endif
