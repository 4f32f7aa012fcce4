// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/changes/LayoutAdoption.h"
#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/changes/VolumeChanges.h"
#include "voltvk/engine/contract/StorageChange.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <algorithm>

namespace voltvk {

namespace {

/** Settles the steps of one change that was cut off. */
class Settlement {
public:
  Settlement(State& state, Backing& backing, Configuration configuration)
      : m_state(state), m_backing(backing), m_configuration(std::move(configuration)) {}

  void settle(const Intent& intent) {
    switch (intent.step) {
    case Step::MakePool:
      unmakePool(intent);
      break;
    case Step::RemovePool:
      completeRemoval(pool(intent.object));
      break;
    case Step::DescribePool:
      describe(pool(intent.object));
      break;
    case Step::MakeVolume:
      m_backing.removeVolume(intent.object);
      note("volume " + std::to_string(intent.object) + ", which was being made, was removed again");
      break;
    case Step::RemoveVolume:
      completeRemoval(volume(intent.object));
      break;
    case Step::DescribeVolume:
      describe(volume(intent.object));
      break;
    case Step::ExtendPool:
      unextend(intent);
      break;
    case Step::ReplaceDrive:
      settleReplacement(intent);
      break;
    case Step::GrowVolume:
      ungrow(volume(intent.object));
      break;
    case Step::MoveChunks:
      adoptLayout(volume(intent.object));
      break;
    case Step::Flush:
      endFlush(volume(intent.object));
      break;
    }
  }

  const std::vector<std::string>& notes() const { return m_notes; }

private:
  void note(const std::string& sentence) { m_notes.push_back(sentence); }

  const PoolRecord* pool(std::uint32_t id) const { return findById(m_configuration.pools, id); }
  const VolumeRecord* volume(std::uint32_t id) const { return findById(m_configuration.volumes, id); }

  void unmakePool(const Intent& intent) {
    PoolRecord made;
    made.id = intent.object;
    for (const std::uint16_t drive : intent.drives) {
      made.members.push_back({drive, 0});
    }
    m_backing.removePool(made, m_configuration);
    note("pool " + std::to_string(intent.object) + ", which was being made, was removed again");
  }

  void unextend(const Intent& intent) {
    if (const PoolRecord* extended = pool(intent.object)) {
      m_backing.releaseDrive(*extended, intent.drives.at(0), m_configuration);
      note(nameOf(*extended) + ", to which a drive was being added, is as before");
    }
  }

  /** What has been moved is not moved back: the rest follows. */
  void settleReplacement(const Intent& intent) {
    const PoolRecord* changed = pool(intent.object);
    if (changed == nullptr) {
      return;
    }
    const DriveExchange drives = exchangeOf(intent);
    if (std::none_of(changed->members.begin(), changed->members.end(), [&](const PoolMemberRecord& member) {
          return member.drive == drives.from;
        })) {
      return;  // recorded, by a settlement that was cut off before it forgot the intent
    }
    m_backing.activate();
    if (m_backing.undoReplacement(*changed, drives, m_configuration)) {
      note(nameOf(*changed) + ", of which a drive was being replaced, is as before");
      return;
    }
    m_backing.replaceDrive(*changed, drives, m_configuration, {});
    m_state.change([&](Connection& connection) {
      DriveRegistry(connection).forgetContents(intent.drives);
      PoolChanges(connection).replaceDrive(changed->id, drives.from, drives.to, Contents::Moved);
    });
    note("a drive of " + nameOf(*changed) + ", which was being replaced, is replaced now");
  }

  void ungrow(const VolumeRecord* grown) {
    if (grown == nullptr) {
      return;
    }
    m_backing.activate();
    if (!m_backing.layout(*grown, m_configuration).empty()) {  // else somebody has removed it meanwhile
      m_backing.resizeVolume(*grown, m_configuration);
      note(nameOf(*grown) + ", which was being made larger, is as before");
    }
  }

  void completeRemoval(const PoolRecord* removed) {
    if (removed == nullptr || removed->internal) {
      return;  // an internal pool goes or stays with its volume
    }
    m_backing.removePool(*removed, m_configuration);
    m_state.change([&](Connection& connection) { PoolChanges(connection).remove(removed->id); });
    note(nameOf(*removed) + ", which was being deleted, is deleted now");
  }

  void completeRemoval(const VolumeRecord* removed) {
    if (removed == nullptr) {
      return;
    }
    if (m_backing.isOpen(removed->id)) {
      note(nameOf(*removed) + ", which was being deleted, is in use and stays");
      return;
    }
    m_backing.removeVolume(removed->id);
    for (const VolumeExtentRecord& part : removed->extents) {
      const PoolRecord* from = pool(part.pool);
      if (from != nullptr && from->internal) {
        m_backing.removePool(*from, m_configuration);
      }
    }
    m_state.change([&](Connection& connection) { VolumeChanges(connection).remove(removed->id); });
    note(nameOf(*removed) + ", which was being deleted, is deleted now");
  }

  void describe(const PoolRecord* described) {
    if (described != nullptr) {
      m_backing.describePool(*described, m_configuration);
    }
  }

  void describe(const VolumeRecord* described) {
    if (described != nullptr) {
      m_backing.describeVolume(*described);
    }
  }

  void adoptLayout(const VolumeRecord* moved) {
    if (moved == nullptr) {
      return;
    }
    m_backing.activate();
    const std::vector<VolumeExtentRecord> layout = m_backing.layout(*moved, m_configuration);
    m_state.change([&](Connection& connection) { voltvk::adoptLayout(connection, *moved, layout); });
    note("recorded where the chunks of " + nameOf(*moved) + " are after moves that were cut off");
  }

  void endFlush(const VolumeRecord* flushed) {
    if (flushed != nullptr) {
      m_backing.endFlush(*flushed);
      note("the cache of " + nameOf(*flushed) + ", whose flush was cut off, works as usual again");
    }
  }

  State& m_state;
  Backing& m_backing;
  const Configuration m_configuration;
  std::vector<std::string> m_notes;
};

}  // namespace

DriveExchange exchangeOf(const Intent& intent) {
  return {intent.drives.at(0), intent.drives.at(1)};
}

void recordIntents(State& state, Connection& connection, const std::vector<Intent>& intents) {
  if (state.isDryRun()) {
    return;  // nothing is carried out that could be cut off
  }
  ChangeNote(state.path()).write(intents);
  Intents(connection).record(intents);
}

void eraseNote(State& state) {
  if (!state.isDryRun()) {
    ChangeNote(state.path()).erase();
  }
}

std::vector<std::string> settleIntents(State& state, Backing& backing) {
  std::vector<Intent> intents;
  Configuration configuration;
  state.read([&](Connection& connection) {
    intents = Intents(connection).list();
    configuration = SnapshotReader(connection).configuration();
  });
  if (intents.empty()) {
    return {};
  }
  const auto forget = [&] { state.change([](Connection& connection) { Intents(connection).clear(); }); };
  const ChangeNote underWay(state.path());
  if (!underWay.isOf(intents)) {
    forget();
    return {"what an older copy of the state had under way was not carried out"};
  }
  Settlement settlement(state, backing, std::move(configuration));
  // What was made last is removed first, and the pool of a cached drive goes with its volume.
  std::stable_sort(intents.begin(), intents.end(), [](const Intent& a, const Intent& b) {
    const auto isOfVolume = [](const Intent& intent) {
      return intent.step != Step::MakePool && intent.step != Step::RemovePool;
    };
    return isOfVolume(a) && !isOfVolume(b);
  });
  for (const Intent& intent : intents) {
    settlement.settle(intent);
  }
  forget();
  eraseNote(state);
  return settlement.notes();
}

}  // namespace voltvk
