// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TRUST_TRUSTFIXTURE_H
#define TESTS_TRUST_TRUSTFIXTURE_H

#include "cmpi/CmpiTest.h"
#include "engine/EngineFixture.h"
#include "support/Lines.h"
#include "support/MethodArguments.h"

#include <map>
#include <string>

namespace tvp::test {

/** The product's schema together with the association fixtures. */
inline std::shared_ptr<const host::Schema> productSchema() {
  return host::MofReader::readText(
      readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof") + ASSOCIATION_FIXTURES_MOF, "TVP.mof");
}

/**
 * The provider, linked in, on a configuration with pools and volumes of every kind, which arrange()
 * restores after a change.
 */
class TrustTest : public RunningProviderTest {
protected:
  TrustTest() : RunningProviderTest(productSchema()) {
    std::filesystem::remove(
        m_log.root().file("var/log/TVP.txt"));  // writing the log would take most of the time
    for (const TvkDeviceType type :
         {TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD, TVK_DEVICE_HDD, TVK_DEVICE_HDD}) {
      Storage::addDrive(type, 1000 * MIB);
    }
    arrange();
  }

  static constexpr std::uint8_t FREE_DRIVE = 2;

  /** Everything that a change could affect, as text. */
  static std::string state() {
    return Storage::rows(
        "SELECT 'pool ' || name, tier, (SELECT sum(chunks) FROM volume_extent WHERE pool = id)"
        " FROM pool ORDER BY name;"
        "SELECT 'volume ' || name, hdd_chunks, ssd_chunks, knob FROM volume ORDER BY name");
  }

  /** Restores the configuration if it has changed; its identifiers are different then. */
  void arrange() {
    if (!m_standard.empty() && state() == m_standard) {
      return;
    }
    const Listing<VirtualVolume> volumes(&m_adapter, "VirtualVolume");
    for (std::size_t i = 0; i < volumes.size(); ++i) {
      m_adapter.deleteVirtualVolume(volumes[i]->getVolumeId());
    }
    const Listing<VirtualPool> pools(&m_adapter, "VirtualPool");
    for (std::size_t i = 0; i < pools.size(); ++i) {
      m_adapter.deleteVirtualPool(pools[i]->getPoolId());
    }
    makePool("disks", 0, TVK_TIER_HDD);
    makePool("flash", 1, TVK_TIER_SSD);
    makePool("spare", 3, TVK_TIER_HDD);
    for (const std::uint8_t type : {TVK_VOLUME_TIERED, TVK_VOLUME_CACHED}) {
      const char* name = type == TVK_VOLUME_TIERED ? "tiered" : "cached";
      m_ids[name] = Storage::createVolume(
          volumeSpec(name, type, {{m_ids["disks"], 100 * MIB}, {m_ids["flash"], 50 * MIB}}));
    }
    VirtualPoolSpec internal = poolSpec("InternalPool4", {4}, 50 * MIB);
    VirtualPoolSpec cache = poolSpec("", {}, 10 * MIB);
    cache.poolId = m_ids["flash"];
    VirtualVolumeSpec drive = volumeSpec("drive", TVK_VOLUME_CACHED, {});
    EXPECT_EQ(m_adapter.createCachedLD(cache, internal, drive).getReturn(), TVK_OK);
    m_standard = state();
  }

  /** Arguments with which a method of the product succeeds on the arranged configuration. */
  host::Arguments goodArguments(const host::SchemaMethod& method) const {
    MethodValues values;
    values.name = "a pool or a volume";
    values.drive = FREE_DRIVE;
    values.pool = m_ids.at(method.name == "DeleteVirtualPool" ? "spare" : "disks");
    values.volume = m_ids.at("cached");
    values.diskPool = m_ids.at("disks");
    values.flashPool = m_ids.at("flash");
    return argumentsFor(method, values);
  }

  TvkAdapter m_adapter;
  std::string m_standard;
  std::map<std::string, std::uint32_t> m_ids;

private:
  void makePool(const char* name, std::uint8_t drive, std::uint8_t tier) {
    m_ids[name] = Storage::createPool(poolSpec(name, {drive}, 600 * MIB, tier));
  }
};

}  // namespace tvp::test

#endif
