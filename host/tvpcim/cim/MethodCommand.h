// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_METHODCOMMAND_H
#define HOST_TVPCIM_CIM_METHODCOMMAND_H

#include "host/tvpcim/CommandGroup.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** The call of a method: im. */
class MethodCommand : public CommandGroup {
public:
  using CommandGroup::CommandGroup;
  void addTo(CLI::App& app) override;

private:
  void invokeMethod();

  std::string m_object;
  std::string m_method;
  std::vector<std::string> m_arguments;
};

}  // namespace tvp::host::tvpcim

#endif
