// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_STORAGEMETRICS_H
#define HOST_TVPCIM_STORAGE_STORAGEMETRICS_H

#include "host/tvpcim/storage/HealthReport.h"
#include "host/tvpcim/storage/MetricsText.h"
#include "host/tvpcim/storage/Overview.h"

namespace tvp::host::tvpcim {

/** The metrics of drives, pools and volumes, and tvp_up 1. */
void addStorageMetrics(const Overview& overview, MetricsText& metrics);
/** How many findings there are, by severity. */
void addFindingMetrics(const HealthReport& report, MetricsText& metrics);
/** What can be said when the storage cannot be read: tvp_up 0, which is a finding. */
void addStorageFailure(MetricsText& metrics);

}  // namespace tvp::host::tvpcim

#endif
