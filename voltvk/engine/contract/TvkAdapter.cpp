// SPDX-License-Identifier: Apache-2.0
#include "voltvk/TvkAdapter.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/changes/VolumeChanges.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/LibraryObjects.h"
#include "voltvk/engine/contract/Operation.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"
#include "voltvk/engine/rules/Limits.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace operations = voltvk::operations;

using voltvk::Connection;
using voltvk::Operation;
using voltvk::PoolChanges;
using voltvk::State;
using voltvk::VolumeChanges;
using voltvk::VolumeUpkeep;

namespace {

Ret run(const TvkAdapter& adapter, const Operation& operation) {
  std::shared_ptr<State> state;
  try {
    state = voltvk::stateOf(adapter);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    return Ret(TVK_INTERNAL, exception.what());
  }
  return operation.run(*state);
}

using Work = std::function<void(Connection&)>;

/** A change of the configuration. @param reportFailure as in Operation */
Ret change(const TvkAdapter& adapter, const char* name, const Work& work, const Work& reportFailure = {}) {
  return run(
      adapter,
      {name, true, [&](State& state) { voltvk::StorageChange(state).run(work, false); }, reportFailure});
}

/** The same for changes that use drives, which are decided by what the machine has now. */
Ret changeWithDrives(
    const TvkAdapter& adapter, const char* name, const Work& work, const Work& reportFailure) {
  return run(
      adapter,
      {name, true, [&](State& state) { voltvk::StorageChange(state).run(work, true); }, reportFailure});
}

std::string lostText(std::int64_t lost) {
  return voltvk::counted(static_cast<std::uint64_t>(lost), "event") +
         " were lost, since more happened between two fetches than the " +
         std::to_string(voltvk::EventJournal::CAPACITY) + " that are kept";
}

void countObjects(const voltvk::Snapshot& snapshot, TvkAdapterIdentity& identity) {
  for (RaidObject* object : snapshot.objects()) {
    const char* type = object->getTypeName();
    if (std::strcmp(type, "LogicalDevice") == 0) {
      ++identity.logicalDevicesCount;
    } else if (std::strcmp(type, "VirtualVolume") == 0) {
      ++identity.virtualVolumeCount;
    } else if (!static_cast<const VirtualPool*>(object)->isInternal()) {
      ++identity.virtualPoolCount;  // internal pools are not shown to clients, so they do not count
    }
  }
}

}  // namespace

TvkAdapter::TvkAdapter() = default;

TvkAdapter::~TvkAdapter() = default;

const char* TvkAdapter::getTypeName() const {
  return "Adapter";
}

Ret TvkAdapter::createVirtualPool(VirtualPoolSpec& spec) {
  std::uint32_t id = TVK_NO_ID;
  const Ret ret = changeWithDrives(
      *this, operations::createVirtualPool,
      [&](Connection& connection) { id = PoolChanges(connection).create(spec); },
      [&](Connection& connection) { PoolChanges(connection).reportCreationFailed(spec); });
  if (ret.getReturn() == TVK_OK) {
    spec.poolId = id;
  }
  return ret;
}

Ret TvkAdapter::modifyVirtualPool(std::uint32_t poolId, const VirtualPoolSpec& spec) {
  return change(*this, operations::modifyVirtualPool, [&](Connection& connection) {
    PoolChanges(connection).modify(poolId, spec);
  });
}

Ret TvkAdapter::deleteVirtualPool(std::uint32_t poolId) {
  return change(
      *this, operations::deleteVirtualPool,
      [&](Connection& connection) { PoolChanges(connection).remove(poolId); },
      [&](Connection& connection) { PoolChanges(connection).reportDeletionFailed(poolId); });
}

Ret TvkAdapter::createVirtualVolume(VirtualVolumeSpec& spec) {
  std::uint32_t id = TVK_NO_ID;
  const Ret ret = changeWithDrives(
      *this, operations::createVirtualVolume,
      [&](Connection& connection) { id = VolumeChanges(connection).create(spec); },
      [&](Connection& connection) { VolumeChanges(connection).reportCreationFailed(spec); });
  if (ret.getReturn() == TVK_OK) {
    spec.volumeId = id;
  }
  return ret;
}

Ret TvkAdapter::createCachedLD(
    VirtualPoolSpec& ssdPool, VirtualPoolSpec& hddPool, VirtualVolumeSpec& volume) {
  VirtualPoolSpec made = hddPool;
  std::uint32_t id = TVK_NO_ID;
  const Ret ret = changeWithDrives(
      *this, operations::createCachedLD,
      [&](Connection& connection) {
        id = VolumeChanges(connection).createCachedDrive(ssdPool, made, volume);
      },
      [&](Connection& connection) {
        made.poolFlag = TVK_POOL_INTERNAL;
        PoolChanges(connection).reportCreationFailed(made);
        VolumeChanges(connection).reportCreationFailed(volume);
      });
  if (ret.getReturn() == TVK_OK) {
    hddPool.poolId = made.poolId;
    volume.volumeId = id;
  }
  return ret;
}

Ret TvkAdapter::modifyVirtualVolume(std::uint32_t volumeId, VirtualVolumeSpec& spec) {
  return change(*this, operations::modifyVirtualVolume, [&](Connection& connection) {
    VolumeChanges(connection).modify(volumeId, spec);
  });
}

Ret TvkAdapter::deleteVirtualVolume(std::uint32_t volumeId) {
  return change(
      *this, operations::deleteVirtualVolume,
      [&](Connection& connection) { VolumeChanges(connection).remove(volumeId); },
      [&](Connection& connection) { VolumeChanges(connection).reportDeletionFailed(volumeId); });
}

Ret TvkAdapter::flushVirtualVolume(std::uint32_t volumeId) {
  return run(*this, {operations::flushVirtualVolume, true, [=](State& state) {
                       VolumeUpkeep(state).flush(volumeId);
                     }});
}

Ret TvkAdapter::resetVirtualVolumeStats(std::uint32_t volumeId) {
  return run(*this, {operations::resetVirtualVolumeStats, true, [=](State& state) {
                       VolumeUpkeep(state).resetStatistics(volumeId);
                     }});
}

Ret TvkAdapter::getVirtualVolumeStats(d_ioctl_user_stat* stats, std::uint32_t volumeId) {
  return run(*this, {operations::getVirtualVolumeStats, true, [=](State& state) {
                       voltvk::require(
                           stats != nullptr, TVK_INVALID_ARGUMENT,
                           "the record that the statistics go to is missing: the pointer is null");
                       *stats = VolumeUpkeep(state).statistics(volumeId);
                     }});
}

Ret TvkAdapter::getEvents(VolEventCollection& events) {
  std::int64_t lost = 0;
  const Ret ret =
      run(*this, {operations::getEvents, true, [&](State& state) { lost = state.takeEvents(events); }});
  return lost == 0 ? ret : Ret(TVK_OK, lostText(lost).c_str());
}

Ret TvkAdapter::getIdentity(TvkAdapterIdentity& identity) {
  return run(*this, {operations::getIdentity, true, [&](State& state) {
                       const auto snapshot = state.snapshot();
                       TvkAdapterIdentity filled =
                           voltvk::identityOfProduct(voltvk::limitsOf(snapshot->configuration().backing));
                       countObjects(*snapshot, filled);
                       identity = filled;
                     }});
}
