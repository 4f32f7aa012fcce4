// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_REHEARSEDBACKING_H
#define VOLTVK_ENGINE_BACKING_REHEARSEDBACKING_H

#include "voltvk/engine/backing/Backing.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace voltvk {

/** The steps of a dry run, a sentence each. May be used from any thread. */
class Rehearsal {
public:
  void add(const std::string& step);
  std::vector<std::string> list() const;

private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_steps;
};

/**
 * A real backing in a dry run: notes the steps that it is asked for and carries none of them out. What there
 * is can be looked at as always.
 */
class RehearsedBacking final : public Backing {
public:
  RehearsedBacking(std::shared_ptr<Backing> real, std::shared_ptr<Rehearsal> rehearsal)
      : m_real(std::move(real)), m_rehearsal(std::move(rehearsal)) {}

  bool isReal() const override { return true; }
  void requireUsable() override { m_real->requireUsable(); }
  void activate() override {}
  /** Also looks whether the drives are free that would be claimed; else that is done right before. */
  void requireUnknown(const std::vector<Intent>& steps, const Configuration& configuration) override;

  void makePool(const PoolRecord& pool, const Configuration& configuration) override;
  void removePool(const PoolRecord& pool, const Configuration& configuration) override;
  void extendPool(const PoolRecord& pool, const Configuration& configuration) override;
  void releaseDrive(const PoolRecord&, std::uint16_t, const Configuration&) override {}
  void replaceDrive(
      const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration,
      const MoveProgress& progress) override;
  bool undoReplacement(const PoolRecord&, const DriveExchange&, const Configuration&) override {
    return false;
  }
  bool describePool(const PoolRecord& pool, const Configuration& configuration) override;
  void makeVolume(const VolumeRecord& volume, const Configuration& configuration) override;
  void removeVolume(std::uint32_t volumeId) override;
  bool describeVolume(const VolumeRecord& volume) override;
  void resizeVolume(const VolumeRecord& volume, const Configuration& configuration) override;
  void exchange(
      const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
      const std::vector<std::uint64_t>& promoted, const Configuration& configuration) override;
  std::vector<VolumeExtentRecord> layout(const VolumeRecord& volume, const Configuration&) override {
    return volume.extents;
  }
  std::uint64_t flush(const VolumeRecord& volume, const FlushProgress& progress) override;
  void endFlush(const VolumeRecord& volume) override;

  std::vector<std::string> differences(const Configuration& configuration) override {
    return m_real->differences(configuration);
  }
  std::vector<std::string> contradictions(const Configuration& configuration) override {
    return m_real->contradictions(configuration);
  }
  Configuration recovered(const std::vector<DriveRecord>& drives) override {
    return m_real->recovered(drives);
  }
  std::string devicePath(std::uint32_t volumeId) const override { return m_real->devicePath(volumeId); }
  bool isOpen(std::uint32_t volumeId) const override { return m_real->isOpen(volumeId); }
  KernelCounters counters(const VolumeRecord& volume) const override { return m_real->counters(volume); }
  KernelCounters takeCounters(const VolumeRecord& volume) override { return m_real->counters(volume); }

private:
  const std::shared_ptr<Backing> m_real;
  const std::shared_ptr<Rehearsal> m_rehearsal;
};

}  // namespace voltvk

#endif
