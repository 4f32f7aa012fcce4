// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_SERVEDPAGES_H
#define HOST_TVPCIM_REMOTE_SERVEDPAGES_H

#include "host/cimxml/server/HttpServer.h"
#include "host/tvpcim/remote/Kept.h"
#include "host/tvpcim/remote/PageData.h"
#include "host/tvpcim/remote/VolumeHeat.h"

#include <memory>
#include <optional>
#include <string>

namespace tvp::host::tvpcim {

/**
 * The pages of the server: the one to look at, "/", what it shows, "/page.json" and "/heat.json", and the
 * metrics. Nothing can be changed through them. The storage is read at most once a second, whoever asks how
 * often.
 */
class ServedPages {
public:
  /** @param tool its session is used by the threads of the server, one at a time, and outlives them */
  ServedPages(Tool& tool, const RecentEvents& events);

  /** Offers the pages, before the server starts; it has to stop before this object goes away.
   * @param metrics who gets those; nobody without a value */
  void offer(cimxml::HttpServer& server, std::optional<cimxml::PageReaders> metrics);

private:
  cimxml::HttpReply answerData(const cimxml::HttpCall& call);
  cimxml::HttpReply answerHeat(const cimxml::HttpCall& call);
  cimxml::HttpReply answerMetrics(const cimxml::ServerCounts& counts);

  PageData m_data;
  Kept<PageTexts> m_texts;
  VolumeHeat m_heat;
};

}  // namespace tvp::host::tvpcim

#endif
