// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_TREECOMMAND_H
#define HOST_TVPCIM_STORAGE_TREECOMMAND_H

#include "host/tvpcim/storage/StorageGroup.h"

namespace tvp::host::tvpcim {

/** Which drives and pools stand under what, and how full they are: tree. */
class TreeCommand : public StorageGroup {
public:
  using StorageGroup::StorageGroup;
  void addTo(CLI::App& app) override;

private:
  void show();
};

}  // namespace tvp::host::tvpcim

#endif
