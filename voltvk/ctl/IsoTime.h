// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_ISOTIME_H
#define VOLTVK_CTL_ISOTIME_H

#include <cstdint>
#include <string>

namespace voltvk::ctl {

/** Seconds since 1970 as "2026-01-31T12:00:00Z". */
std::string isoTime(std::uint32_t seconds);

}  // namespace voltvk::ctl

#endif
