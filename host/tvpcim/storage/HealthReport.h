// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_HEALTHREPORT_H
#define HOST_TVPCIM_STORAGE_HEALTHREPORT_H

#include "host/tvpcim/Tool.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** Something that an administrator should look after; texts are on one line each. */
struct Finding {
  std::string object;   ///< "pool 2 (fast)"
  std::string kind;     ///< pool, volume, policy, driver ...
  bool failed = false;  ///< nothing can be asked or changed; else something is degraded
  std::string cause;
  std::string remedy;

  /** "degraded" or "failed" */
  const char* severity() const { return failed ? "failed" : "degraded"; }
};

/** Whether all is well, and what is not. A plain value. */
class HealthReport {
public:
  /** The exit statuses of 'tvpcim status' for what is not well. */
  static constexpr int DEGRADED = 3;
  static constexpr int FAILED = 4;

  /**
   * Of this machine, as its storage library sees it; of a server, and where the library's command cannot be
   * asked, as far as the CIM classes say it.
   * @throws OperationError when something cannot be asked
   */
  static HealthReport of(Tool& tool);

  const std::vector<Finding>& findings() const { return m_findings; }
  /** "well", "degraded" or "failed": as bad as the worst finding */
  const char* health() const;
  /** 0, DEGRADED or FAILED */
  int exitStatus() const;

private:
  explicit HealthReport(std::vector<Finding> findings) : m_findings(std::move(findings)) {}

  std::vector<Finding> m_findings;
};

}  // namespace tvp::host::tvpcim

#endif
