// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_EVENTTIME_H
#define HOST_TVPCIM_CIM_EVENTTIME_H

#include <string>

namespace tvp::host::tvpcim {

/** "2026-01-31T23:59:59+01:00" for the provider's local time "01/31/2026 23:59:59", with the offset that
 *  applied then; any other text stays as it is. */
std::string isoTime(const std::string& text);

}  // namespace tvp::host::tvpcim

#endif
