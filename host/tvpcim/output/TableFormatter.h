// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_TABLEFORMATTER_H
#define HOST_TVPCIM_OUTPUT_TABLEFORMATTER_H

#include "host/tvpcim/output/Formatter.h"

namespace tvp::host::tvpcim {

/**
 * Tables for people. On a terminal rows are never wider than it, unless everything was asked for; elsewhere
 * nothing is cut. Control characters and bytes that are no UTF-8 are shown as \xHH.
 */
class TableFormatter : public Formatter {
public:
  /** @param wide show every column, whatever the terminal's width */
  TableFormatter(const Terminal& terminal, bool wide);

  std::string listing(const Listing& listing) const override;
  std::string record(const Instance& instance) const override;
  std::string nothing() const override;
  std::string paths(const std::string& noun, const std::vector<ObjectPath>& paths) const override;
  std::string event(const Instance& instance) const override;
  std::string tree(const std::vector<Instance>& roots) const override;

private:
  std::string table(const std::vector<Instance>& instances, const std::vector<Column>& columns) const;
  std::string fitted(const std::string& line) const;
  void addBranch(
      std::string& result, const Instance& node, const std::string& lead, const std::string& below) const;

  Terminal m_terminal;
  bool m_wide;
};

}  // namespace tvp::host::tvpcim

#endif
