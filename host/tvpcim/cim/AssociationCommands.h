// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_ASSOCIATIONCOMMANDS_H
#define HOST_TVPCIM_CIM_ASSOCIATIONCOMMANDS_H

#include "host/tvpcim/CommandGroup.h"

#include <string>

namespace tvp::host::tvpcim {

/** The associations of an object: an, ai, rn and ri. */
class AssociationCommands : public CommandGroup {
public:
  using CommandGroup::CommandGroup;
  void addTo(CLI::App& app) override;

private:
  void associatorNames();
  void associators();
  void referenceNames();
  void references();

  std::string m_path;
  AssociationFilter m_filter;
};

}  // namespace tvp::host::tvpcim

#endif
