// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_SCHEMACOMMANDS_H
#define HOST_TVPCIM_CIM_SCHEMACOMMANDS_H

#include "host/tvpcim/CommandGroup.h"

#include <string>

namespace tvp::host::tvpcim {

/** What is known about the classes: classes and mof. The provider is not needed. */
class SchemaCommands : public CommandGroup {
public:
  using CommandGroup::CommandGroup;
  void addTo(CLI::App& app) override;

private:
  void listClasses();
  void showClass();

  std::string m_className;
};

}  // namespace tvp::host::tvpcim

#endif
