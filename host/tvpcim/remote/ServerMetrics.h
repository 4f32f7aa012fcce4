// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_SERVERMETRICS_H
#define HOST_TVPCIM_REMOTE_SERVERMETRICS_H

#include "host/cimxml/server/RequestCounters.h"
#include "host/tvpcim/storage/MetricsText.h"

namespace tvp::host::tvpcim {

/** The metrics of a server. */
void addServerMetrics(const cimxml::ServerCounts& counts, MetricsText& metrics);

}  // namespace tvp::host::tvpcim

#endif
