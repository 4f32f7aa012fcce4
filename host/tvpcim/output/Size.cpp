// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Size.h"

#include "host/tvpcim/Failure.h"

#include <cmath>

namespace tvp::host::tvpcim {

std::uint64_t parseSectors(const std::string& text) {
  try {
    return text::parseSectors(text);
  } catch (const text::SizeError& error) {
    throw UsageError(error.what());
  }
}

unsigned percentOf(std::uint64_t used, std::uint64_t whole) {
  const double share = whole == 0 ? 0 : static_cast<double>(used) / static_cast<double>(whole);
  return static_cast<unsigned>(std::lround(100 * share));
}

}  // namespace tvp::host::tvpcim
