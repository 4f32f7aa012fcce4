// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_VOLUMECOMMANDS_H
#define HOST_TVPCIM_STORAGE_VOLUMECOMMANDS_H

#include "host/tvpcim/storage/StorageGroup.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** A pool and what a volume takes from it, in sectors. */
struct PoolShare {
  std::uint32_t pool = 0;
  std::uint64_t size = 0;
};

/** Volumes: volumes, and volume create, cache, modify, delete, flush, stats, reset-stats and members. */
class VolumeCommands : public StorageGroup {
public:
  using StorageGroup::StorageGroup;
  void addTo(CLI::App& app) override;

private:
  void addCreation(CLI::App& family);
  void addCaching(CLI::App& family);
  void addModification(CLI::App& family);
  void addTexts(CLI::App& verb);
  void
  addVolumeVerb(CLI::App& family, const char* name, const char* summary, void (VolumeCommands::*action)());
  void list();
  void create();
  void cache();
  void modify();
  void remove();
  void flush();
  void statistics();
  void resetStatistics();
  void members();
  PoolShare shareOf(const std::string& text);
  /** Prints the answer of a creation with what the new volume is called. */
  void printCreated(Instance answer);
  /** A method that takes the volume's identifier alone. */
  Instance callOnVolume(const std::string& method);

  std::string m_volume;
  std::string m_name;
  std::string m_description;
  std::vector<std::string> m_pools;
  std::string m_type = "tiered";
  std::string m_knob;
  std::string m_drive;
  std::string m_size;
  std::string m_ssdPool;
  std::string m_ssdSize;
  std::string m_chunk = "1MiB";
};

}  // namespace tvp::host::tvpcim

#endif
