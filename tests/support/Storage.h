// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_STORAGE_H
#define TESTS_SUPPORT_STORAGE_H

#include "support/TemporaryDirectory.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/voltvk.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tvp::test {

constexpr std::uint64_t MIB = 2048;  ///< in sectors
constexpr std::uint64_t GIB = 1024 * MIB;
constexpr std::uint64_t CHUNK = MIB;

inline VirtualPoolSpec poolSpec(
    const char* name, const std::vector<std::uint8_t>& drives, std::uint64_t sectors,
    std::uint8_t tier = TVK_TIER_HDD, std::uint64_t chunk = CHUNK) {
  VirtualPoolSpec spec;
  spec.nameTooLong = !tvkSetText(spec.name, sizeof spec.name, name);
  spec.nameBytes = static_cast<std::uint32_t>(std::strlen(name));
  spec.numLogicalDevices = static_cast<std::uint32_t>(drives.size());
  spec.numDeviceNumbers = spec.numLogicalDevices;
  std::copy_n(drives.begin(), std::min<std::size_t>(drives.size(), TVK_SPEC_DEVICES), spec.deviceNumbers);
  spec.capacityInSectors = sectors;
  spec.chunkSizeInSectors = chunk;
  spec.tierLevel = tier;
  return spec;
}

inline VirtualVolumeSpec
volumeSpec(const char* name, std::uint8_t type, const std::vector<VirtualPoolEntry>& pools) {
  VirtualVolumeSpec spec;
  spec.nameTooLong = !tvkSetText(spec.name, sizeof spec.name, name);
  spec.featureType1 = type;
  spec.numValidPools = static_cast<std::uint32_t>(pools.size());
  spec.numPoolIds = spec.numValidPools;
  spec.numPoolSizes = spec.numValidPools;
  std::copy_n(pools.begin(), std::min<std::size_t>(pools.size(), TVK_SPEC_POOLS), spec.pools);
  return spec;
}

/**
 * The storage of a test: a state of its own on a machine without drives, so that the first virtual drive has
 * the number 0. Drives, pools and volumes are made with the storage library itself, past the provider. There
 * is one at a time, as the environment names the state; it is made before anything looks for the state.
 */
class Storage {
public:
  /** @param directory where the state lies; it has to outlive this object */
  explicit Storage(const TemporaryDirectory& directory) {
    ::setenv("VOLTVK_STATE", directory.file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", directory.file("host").c_str(), 1);
  }
  ~Storage() {
    ::unsetenv("VOLTVK_STATE");
    ::unsetenv("VOLTVK_HOST_ROOT");
  }
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  static std::shared_ptr<voltvk::State> state() { return voltvk::State::forProcess(); }

  /** Runs statements on the state, past the library's rules. */
  static void execute(const std::string& sql) {
    state()->change([&](voltvk::Connection& connection) { connection.execute(sql.c_str()); });
  }
  /** The rows that a query finds, their values separated by "|", each on a line. */
  static std::string rows(const std::string& query) {
    std::string text;
    const auto add = [](void* out, int count, char** values, char**) {
      for (int i = 0; i < count; ++i) {
        *static_cast<std::string*>(out) += std::string(values[i] == nullptr ? "-" : values[i]) + "|";
      }
      *static_cast<std::string*>(out) += "\n";
      return 0;
    };
    state()->read([&](voltvk::Connection& connection) {
      sqlite3_exec(connection.handle(), query.c_str(), add, &text, nullptr);
    });
    return text;
  }

  /** Adds a virtual drive. @return its number @throws what the library throws when it refuses */
  static std::uint8_t addDrive(TvkDeviceType type, std::uint64_t sectors) {
    std::uint16_t number = 0;
    state()->change([&](voltvk::Connection& connection) {
      number = voltvk::DriveRegistry(connection).addVirtual({type, sectors, {}, {}});
    });
    return static_cast<std::uint8_t>(number);
  }
  /** @return the pool's identifier @throws std::runtime_error when the library refuses */
  static std::uint32_t createPool(VirtualPoolSpec spec) {
    require(TvkAdapter().createVirtualPool(spec), spec.name);
    return spec.poolId;
  }
  /** @return the volume's identifier @throws std::runtime_error when the library refuses */
  static std::uint32_t createVolume(VirtualVolumeSpec spec) {
    require(TvkAdapter().createVirtualVolume(spec), spec.name);
    return spec.volumeId;
  }

private:
  static void require(const Ret& answer, const std::string& name) {
    if (answer.getReturn() != TVK_OK) {
      throw std::runtime_error("'" + name + "' was refused: " + answer.getText());
    }
  }
};

}  // namespace tvp::test

#endif
