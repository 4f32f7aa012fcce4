#pragma once
#include "voltvk/engine/backing/books/BooksBacking.h"
namespace voltvk { class LvmBacking : public Backing { public: explicit LvmBacking(std::string) {} 
  bool isReal() const override { return true; }
  void requireUsable() override {}
  void activate() override {}
  void makePool(const PoolRecord&, const Configuration&) override {}
  void removePool(const PoolRecord&, const Configuration&) override {}
  void describePool(const PoolRecord&, const Configuration&) override {}
  void makeVolume(const VolumeRecord&, const Configuration&) override {}
  void removeVolume(std::uint32_t) override {}
  void describeVolume(const VolumeRecord&) override {}
  void exchange(const VolumeRecord&, const std::vector<std::uint64_t>&, const std::vector<std::uint64_t>&, const Configuration&) override {}
  std::vector<VolumeExtentRecord> layout(const VolumeRecord& volume, const Configuration&) override { return volume.extents; }
  std::uint64_t flush(const VolumeRecord&, const FlushProgress&) override { return 0; }
  void endFlush(const VolumeRecord&) override {}
  std::vector<std::string> differences(const Configuration&) override { return {}; }
  Configuration recovered(const std::vector<DriveRecord>&) override { return {}; }
  std::string devicePath(std::uint32_t) const override { return {}; }
  bool isOpen(std::uint32_t) const override { return false; }
  KernelCounters counters(const VolumeRecord&) const override { return {}; }
  KernelCounters takeCounters(const VolumeRecord&) override { return {}; }
}; }
