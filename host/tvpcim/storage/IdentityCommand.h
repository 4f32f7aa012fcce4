// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_IDENTITYCOMMAND_H
#define HOST_TVPCIM_STORAGE_IDENTITYCOMMAND_H

#include "host/tvpcim/storage/StorageGroup.h"

namespace tvp::host::tvpcim {

/** The product, its revisions, features and limits: identity. */
class IdentityCommand : public StorageGroup {
public:
  using StorageGroup::StorageGroup;
  void addTo(CLI::App& app) override;

private:
  void show();
};

}  // namespace tvp::host::tvpcim

#endif
