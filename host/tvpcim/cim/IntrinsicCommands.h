// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_INTRINSICCOMMANDS_H
#define HOST_TVPCIM_CIM_INTRINSICCOMMANDS_H

#include "host/tvpcim/CommandGroup.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** The operations on instances: ei, ein, gi, mi, ci and di. */
class IntrinsicCommands : public CommandGroup {
public:
  using CommandGroup::CommandGroup;
  void addTo(CLI::App& app) override;

private:
  void enumerateInstances();
  void enumerateNames();
  void getInstance();
  void modifyInstance();
  void createInstance();
  void deleteInstance();
  /** Says so when a class is empty because the storage driver is not there. */
  void explainEmptiness(const std::string& className);
  /** The answer of an operation that returns nothing of its own. */
  void printChange(const std::string& operation, const ObjectPath& path);

  std::string m_object;
  std::vector<std::string> m_values;
  std::vector<std::string> m_properties;
};

}  // namespace tvp::host::tvpcim

#endif
