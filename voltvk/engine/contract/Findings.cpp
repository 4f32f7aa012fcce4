// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/Findings.h"

#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/Operation.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/rules/PoolRules.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Intents.h"
#include "voltvk/engine/state/PolicyLimits.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace voltvk {

namespace {

/** A command as it stands in a sentence. */
std::string quotedCommand(const std::string& command) {
  return "`" + command + "`";
}

/** A driver that does not work. @param sentence what is wrong and, after a semicolon, what to do */
Finding withoutDriver(const std::string& sentence) {
  const std::size_t end = sentence.rfind("; ");
  return {
      "storage driver", "driver", Finding::Severity::Failed, sentence.substr(0, end),
      end == std::string::npos ? "look at the reason, and try again" : sentence.substr(end + 2)};
}

/** Puts the findings of a configuration together. */
class Collector {
public:
  explicit Collector(const Configuration& configuration)
      : m_configuration(configuration),
        m_health(configuration.drives, configuration.pools, configuration.volumes) {}

  void lookAtPools() {
    for (const PoolRecord& pool : m_configuration.pools) {
      const std::string& reason = m_health.ofPool(pool.id);
      if (!reason.empty()) {
        const std::string volumes = degradedVolumesOn(pool);
        std::string cause = reason;
        if (!volumes.empty()) {
          cause.append(", which degrades ").append(volumes);
        }
        add(nameOf(pool), "pool", std::move(cause), remedyFor(pool));
      }
    }
  }

  void lookAtDrives() {
    const std::size_t count = m_configuration.drivesLeftOut;
    if (count > 0) {
      add("drives", "drive", counted(count, "drive") + " of the machine left out, since there are too many",
          "remove virtual drives that nobody needs, each with " +
              quotedCommand("voltvkctl drive remove NUMBER"));
    }
  }

  /** A tier is full when the policy engine has nothing left to exchange for what is hot. */
  void lookAtTiers(Connection& connection) {
    for (const VolumeRecord& volume : m_configuration.volumes) {
      if (volume.isCached() || volume.hddChunks == 0 || volume.ssdChunks == 0) {
        continue;
      }
      const std::uint64_t threshold = policyLimits(volume.knob).moveThreshold;
      const std::uint64_t hot = hotChunks(connection, volume, threshold);
      if (hot > volume.ssdChunks) {
        add(nameOf(volume), "tier",
            "its SSD tier is full: " + counted(hot, "chunk") + " used at least " + std::to_string(threshold) +
                " times lately, and room for " + std::to_string(volume.ssdChunks),
            remedyForTier(connection, volume, hot));
      }
    }
  }

  void lookAtPolicy() {
    if (!m_configuration.policyRunning) {
      add("policy engine", "policy", "it is stopped, so hot chunks stay on hard disks",
          "start it with " + quotedCommand("voltvkctl policy start"));
    }
  }

  void lookAtFaults() {
    std::vector<std::string> faults;
    for (const Fault& fault : m_configuration.faults) {
      if (fault.kind != FaultKind::DriverAbsent && fault.kind != FaultKind::AdapterAbsent) {
        faults.push_back(describeFault(fault));
      }
    }
    if (!faults.empty()) {
      add("faults", "faults", counted(faults.size(), "injected fault") + " set: " + enumerated(faults),
          "clear them with " + quotedCommand("voltvkctl fault clear"));
    }
  }

  void addUnsettledChange() {
    add("last change", "changes", "it was cut off before it was complete",
        "complete or undo it with " + quotedCommand("voltvkctl check --repair"));
  }

  std::vector<Finding> take() { return std::move(m_findings); }

private:
  void add(std::string object, const char* kind, std::string cause, std::string remedy) {
    m_findings.push_back(
        {std::move(object), kind, Finding::Severity::Degraded, std::move(cause), std::move(remedy)});
  }

  std::string degradedVolumesOn(const PoolRecord& pool) const {
    std::vector<std::string> names;
    for (const VolumeRecord& volume : m_configuration.volumes) {
      if (std::any_of(volume.extents.begin(), volume.extents.end(), [&](const VolumeExtentRecord& part) {
            return part.pool == pool.id;
          })) {
        names.push_back(nameOf(volume));
      }
    }
    return enumerated(names);
  }

  const DriveRecord* driveOf(const PoolMemberRecord& member) const {
    return driveNumbered(m_configuration.drives, member.drive);
  }

  /** The first drive of a degraded pool that is in trouble. */
  const PoolMemberRecord& troubledMember(const PoolRecord& pool) const {
    return *std::find_if(pool.members.begin(), std::prev(pool.members.end()), [&](const auto& member) {
      return !m_health.ofDrive(member.drive).empty();
    });
  }

  /** A free drive that could take the place of one of a pool; null if there is none. */
  const DriveRecord* replacementFor(const PoolRecord& pool, const PoolMemberRecord& member) const {
    std::set<std::uint16_t> used;
    for (const PoolRecord& each : m_configuration.pools) {
      for (const PoolMemberRecord& part : each.members) {
        used.insert(part.drive);
      }
    }
    const BackingLimits limits = limitsOf(m_configuration.backing);
    const DriveRecord* old = driveOf(member);
    const auto found = std::find_if(
        m_configuration.drives.begin(), m_configuration.drives.end(), [&](const DriveRecord& drive) {
          return old != nullptr && used.count(drive.number) == 0 && drive.type == old->type &&
                 obstacleOf(drive, nullptr, limits.needsRealDrives).status == TVK_OK &&
                 drive.sectors >= member.chunks * pool.chunkSectors + limits.driveOverheadSectors;
        });
    return found == m_configuration.drives.end() ? nullptr : &*found;
  }

  /** What ends the trouble of a drive itself. */
  std::string repairOf(const PoolMemberRecord& member) const {
    const std::string name = "drive " + std::to_string(member.drive);
    const DriveRecord* drive = driveOf(member);
    if (drive == nullptr || !drive->present) {
      return "plug " + name + " in again";
    }
    const bool isUsed = drive->bootable || drive->partitioned || drive->mounted || drive->readOnly;
    return isUsed ? "end the other use of " + name : "give " + name + " its size back";
  }

  std::string remedyFor(const PoolRecord& pool) const {
    const PoolMemberRecord& member = troubledMember(pool);
    const std::string first = repairOf(member);
    const PoolRules rules(m_configuration.drives, m_configuration.pools, m_configuration.volumes);
    if (m_configuration.backing.isReal() && !rules.usersOf(pool, member.drive).empty()) {
      // What is missing cannot be copied: there is no redundancy.
      return first + " and run " + quotedCommand("voltvkctl check --repair") +
             "; if its data is lost, delete its volumes and the pool and restore them from a backup";
    }
    if (pool.internal) {
      return first + ", or delete the volume, which frees it";
    }
    const DriveRecord* free = replacementFor(pool, member);
    return first + ", or put another in its place with " +
           quotedCommand(
               "voltvkctl pool replace-drive " + std::to_string(pool.id) + " " +
               std::to_string(member.drive) + " " +
               (free == nullptr ? "DRIVE" : std::to_string(free->number)));
  }

  static std::uint64_t
  hotChunks(Connection& connection, const VolumeRecord& volume, std::uint64_t threshold) {
    Statement row(
        connection, "SELECT count(*) FROM chunk WHERE volume = ? AND heat >= ?", volume.id, threshold);
    row.step();
    return row.unsignedInteger(0);
  }

  /** The pool of SSDs that a tiered volume uses. */
  const PoolRecord* ssdPoolOf(const VolumeRecord& volume) const {
    for (const VolumeExtentRecord& part : volume.extents) {
      const PoolRecord* pool = findById(m_configuration.pools, part.pool);
      if (pool != nullptr && pool->tierLevel == TVK_TIER_SSD) {
        return pool;
      }
    }
    return nullptr;
  }

  std::uint64_t freeSectors(const PoolRecord& pool) const {
    std::uint64_t used = 0;
    for (const VolumeRecord& volume : m_configuration.volumes) {
      for (const VolumeExtentRecord& part : volume.extents) {
        used += part.pool == pool.id ? part.extent.chunks : 0;
      }
    }
    return (pool.chunks - std::min(pool.chunks, used)) * pool.chunkSectors;
  }

  /** @param hot chunks, more than there is room for */
  std::string remedyForTier(Connection& connection, const VolumeRecord& volume, std::uint64_t hot) const {
    const std::string number = std::to_string(volume.id);
    const PoolRecord* pool = ssdPoolOf(volume);
    const std::string poolNumber = pool == nullptr ? "POOL" : std::to_string(pool->id);
    const auto growth = [&](const std::string& size) {
      return "give it more room with " +
             quotedCommand("voltvkctl volume grow " + number + " " + size + " --pool " + poolNumber);
    };
    if (pool != nullptr && freeSectors(*pool) / volume.chunkSectors >= hot - volume.ssdChunks) {
      return growth(std::to_string((volume.hddChunks + hot) * volume.chunkSectors) + "s");
    }
    constexpr std::pair<std::uint8_t, const char*> LESS_EAGER[] = {
        {TVK_KNOB_NORMAL, "normal"}, {TVK_KNOB_PASSIVE, "passive"}};
    for (const auto& [knob, name] : LESS_EAGER) {
      if (knob > volume.knob &&
          hotChunks(connection, volume, policyLimits(knob).moveThreshold) <= volume.ssdChunks) {
        return "let fewer chunks count as hot with " +
               quotedCommand("tvpcim volume modify " + number + " --knob " + name) + ", or add an SSD with " +
               quotedCommand("voltvkctl pool add-drive " + poolNumber + " DRIVE") + " and " + growth("max");
      }
    }
    return "add an SSD with " + quotedCommand("voltvkctl pool add-drive " + poolNumber + " DRIVE") + " and " +
           growth("max");
  }

  const Configuration& m_configuration;
  const Health m_health;
  std::vector<Finding> m_findings;
};

bool hasIntents(State& state) {
  bool found = false;
  state.read([&](Connection& connection) { found = !Intents(connection).list().empty(); });
  return found;
}

/** Whether a change was cut off, which is not one that is under way. */
bool isUnsettled(State& state) {
  if (!hasIntents(state)) {
    return false;
  }
  try {
    const BackingLock lock(state.path(), State::Clock::now());
    return hasIntents(state);
  } catch (const Refusal& refusal) {
    return refusal.status() != TVK_BUSY;
  }
}

}  // namespace

std::vector<Finding> findingsOf(State& state) {
  const std::string error = state.openError();
  if (!error.empty()) {
    return {withoutDriver(error)};
  }
  std::vector<Finding> findings;
  try {
    requirePresence(state, true);
  } catch (const Refusal& refusal) {
    findings.push_back(withoutDriver(refusal.what()));
  }
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  Collector collector(snapshot->configuration());
  collector.lookAtPools();
  collector.lookAtDrives();
  state.read([&](Connection& connection) { collector.lookAtTiers(connection); });
  collector.lookAtPolicy();
  if (isUnsettled(state)) {
    collector.addUnsettledChange();
  }
  collector.lookAtFaults();
  std::vector<Finding> degraded = collector.take();
  findings.insert(
      findings.end(), std::make_move_iterator(degraded.begin()), std::make_move_iterator(degraded.end()));
  return findings;
}

}  // namespace voltvk
