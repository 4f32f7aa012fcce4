// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/HealthReport.h"

#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/StorageTool.h"
#include "host/tvpcim/storage/StorageVerbs.h"

#include <algorithm>
#include <mutex>
#include <optional>

namespace tvp::host::tvpcim {
namespace {

const char* const SEE_MACHINE = "'tvpcim status -x' on the machine itself says what to do";

/** Why a pool is degraded: "drive 3 (/dev/sdb) is missing". */
std::string causeOf(Inventory& inventory, const Pool& pool) {
  if (!inventory.mayCallMethods()) {
    return "it is degraded; which drives it has is shown to administrators only";
  }
  std::vector<std::string> causes;
  for (const DriveExtent& extent : inventory.membersOf<DriveExtent>(Pool::KIND, pool.number)) {
    const std::optional<Drive> drive = inventory.find<Drive>(extent.drive);
    if (!drive || drive->status != IN_ORDER) {
      causes.push_back("drive " + std::to_string(extent.drive) + " (" + extent.driveName + ") is missing");
    }
  }
  return causes.empty() ? "one of its drives is too small or is used by something else" : join(causes, "; ");
}

/** The findings that the instances of the CIM classes admit. */
std::vector<Finding> seenByClients(Tool& tool) {
  Inventory& inventory = tool.inventory();
  const Instance* identity = inventory.identity();
  if (identity == nullptr) {
    return {{"storage driver", "driver", true, NO_DRIVER, SEE_STATUS}};
  }
  std::vector<Finding> findings;
  for (const Pool& pool : inventory.all<Pool>()) {
    if (pool.status != IN_ORDER) {
      findings.push_back(
          {titleOf(tool, Pool::KIND, pool.number), "pool", false, causeOf(inventory, pool), SEE_MACHINE});
    }
  }
  for (const Volume& volume : inventory.all<Volume>()) {
    if (volume.status != IN_ORDER) {
      findings.push_back(
          {titleOf(tool, Volume::KIND, volume.number), "volume", false, "one of its pools is degraded",
           SEE_MACHINE});
    }
  }
  if (numberOf(*identity, "PolicyEngineStatus") == 0) {
    findings.push_back(
        {"policy engine", "policy", false, "it is stopped, so hot chunks stay on hard disks",
         "start it with `voltvkctl policy start`"});
  }
  return findings;
}

/** The findings in what voltvkctl says. @throws StorageTool::Json::exception when it is of another version */
std::vector<Finding> findingsIn(const StorageTool::Json& status) {
  std::vector<Finding> findings;
  for (const auto& finding : status.at("findings").get_ref<const StorageTool::Json::array_t&>()) {
    const auto text = [&finding](const char* member) { return finding.at(member).get<std::string>(); };
    findings.push_back(
        {text("object"), text("kind"), text("severity") == "failed", text("cause"), text("remedy")});
  }
  return findings;
}

/** The findings of the storage library itself; nothing when it cannot be asked. */
std::optional<std::vector<Finding>> seenByLibrary() {
  StorageTool library;
  std::string reason;
  if (const std::optional<StorageTool::Json> status = library.ask({"status"})) {
    try {
      return findingsIn(*status);
    } catch (const StorageTool::Json::exception&) {
      reason = "this voltvkctl is of another version";
    }
  } else {
    reason = library.reason();
  }
  static std::once_flag said;  // a server asks again and again
  std::call_once(said, [&reason] {
    Tool::complain("note: the storage library cannot be asked, so reasons may be missing: " + reason);
  });
  return std::nullopt;
}

bool hasFailure(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) { return finding.failed; });
}

}  // namespace

HealthReport HealthReport::of(Tool& tool) {
  std::optional<std::vector<Finding>> findings;
  if (!tool.session().isRemote()) {
    findings = seenByLibrary();
  }
  // Clients may fare worse than the library: the provider may use another one.
  if (!findings || (tool.inventory().identity() == nullptr && !hasFailure(*findings))) {
    findings = seenByClients(tool);
  }
  return HealthReport(std::move(*findings));
}

const char* HealthReport::health() const {
  return m_findings.empty() ? "well" : hasFailure(m_findings) ? "failed" : "degraded";
}

int HealthReport::exitStatus() const {
  return m_findings.empty() ? 0 : hasFailure(m_findings) ? FAILED : DEGRADED;
}

}  // namespace tvp::host::tvpcim
