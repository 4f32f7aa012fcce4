// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_DRIVECOMMANDS_H
#define HOST_TVPCIM_STORAGE_DRIVECOMMANDS_H

#include "host/tvpcim/storage/StorageGroup.h"

namespace tvp::host::tvpcim {

/** The drives that pools are made of: drives. */
class DriveCommands : public StorageGroup {
public:
  using StorageGroup::StorageGroup;
  void addTo(CLI::App& app) override;

private:
  void list();
};

}  // namespace tvp::host::tvpcim

#endif
