// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/IsoTime.h"

#include <array>
#include <ctime>

namespace voltvk::ctl {

std::string isoTime(std::uint32_t seconds) {
  const std::time_t time = seconds;
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

}  // namespace voltvk::ctl
