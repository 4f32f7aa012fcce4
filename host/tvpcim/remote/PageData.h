// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_PAGEDATA_H
#define HOST_TVPCIM_REMOTE_PAGEDATA_H

#include "host/tvpcim/Tool.h"
#include "host/tvpcim/remote/RecentEvents.h"
#include "host/tvpcim/storage/MetricsText.h"
#include "host/tvpcim/storage/Overview.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <set>
#include <string>

namespace tvp::host::tvpcim {

/** What the pages of the server show of the storage, at one time; texts that are sent as they are. */
struct PageTexts {
  std::string forAdministrators;  ///< JSON
  std::string forOthers;          ///< without what methods answer, which are for administrators
  MetricsText metrics;
  std::set<std::uint32_t> volumes;  ///< the identifiers of those that there are
  bool isReadable = true;           ///< false: the storage could not be read, and the texts say why
};

/**
 * Reads the storage for the pages of the server, in the name of the user of the tool. One thread at a time;
 * all must outlive it.
 */
class PageData {
public:
  /** @param tool its session and inventory are used, and nobody else uses them meanwhile */
  PageData(Tool& tool, const RecentEvents& events);

  /** Reads the present state; a failure is part of the answer. */
  PageTexts read();

private:
  using Json = nlohmann::ordered_json;

  Json header() const;
  /** @throws OperationError */
  void addStorage(Json& page, PageTexts& texts);
  Json namesOfCodes(const Overview& overview);
  void addFindings(Json& page, PageTexts& texts);

  Tool& m_tool;
  const RecentEvents& m_events;
  const std::string m_started;
  const bool m_complete;  ///< whether the user is an administrator, whom methods answer
};

/** The present time of this machine, in ISO 8601 with its offset from UTC. */
std::string isoNow();

}  // namespace tvp::host::tvpcim

#endif
