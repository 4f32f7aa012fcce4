// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_POOLCOMMANDS_H
#define HOST_TVPCIM_STORAGE_POOLCOMMANDS_H

#include "host/tvpcim/storage/StorageGroup.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** Pools: pools, and pool create, modify, delete and members. */
class PoolCommands : public StorageGroup {
public:
  using StorageGroup::StorageGroup;
  void addTo(CLI::App& app) override;

private:
  void addCreation(CLI::App& family);
  void addModification(CLI::App& family);
  void list();
  void create();
  void modify();
  void remove();
  void members();
  /** The tier that fits the first of the drives. */
  std::uint8_t tierOf(const std::vector<std::uint32_t>& drives);

  std::string m_pool;
  std::string m_name;
  std::string m_description;
  std::string m_drives;
  std::string m_tier;
  std::string m_size;
  std::string m_chunk = "1MiB";
};

}  // namespace tvp::host::tvpcim

#endif
