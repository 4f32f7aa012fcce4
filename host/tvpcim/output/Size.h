// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_SIZE_H
#define HOST_TVPCIM_OUTPUT_SIZE_H

#include "text/Size.h"

#include <cstdint>
#include <string>

namespace tvp::host::tvpcim {

using text::formatSectors;

/** A size of the command line in sectors, as text::parseSectors reads it. @throws UsageError when it is not
 * one */
std::uint64_t parseSectors(const std::string& text);

/** How much of a whole is used, in percent and rounded; 0 of a whole of 0. */
unsigned percentOf(std::uint64_t used, std::uint64_t whole);

}  // namespace tvp::host::tvpcim

#endif
