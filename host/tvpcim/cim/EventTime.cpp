// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/EventTime.h"

#include <array>
#include <ctime>

namespace tvp::host::tvpcim {

std::string isoTime(const std::string& text) {
  std::tm time{};
  const char* rest = ::strptime(text.c_str(), "%m/%d/%Y %H:%M:%S", &time);
  if (rest == nullptr || *rest != '\0') {
    return text;
  }
  time.tm_isdst = -1;
  if (std::mktime(&time) == -1) {
    return text;
  }
  std::array<char, 64> formatted{};
  const std::size_t length = std::strftime(formatted.data(), formatted.size(), "%Y-%m-%dT%H:%M:%S%z", &time);
  std::string result(formatted.data(), length);
  return result.insert(result.size() - 2, ":");
}

}  // namespace tvp::host::tvpcim
