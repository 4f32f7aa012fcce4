// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSMethodTrace.h"

#include "oslib/KVSLog.h"

#include <array>
#include <string_view>

namespace tvp::cim::fwf {

void traceParts(std::initializer_list<std::string_view> parts) noexcept {
  std::array<char, TRACE_SIZE> text{};
  std::size_t length = 0;
  for (const std::string_view part : parts) {
    length += part.copy(text.data() + length, text.size() - 1 - length);
  }
  KvsTrace(text.data());
}

tvpMethodTrace::tvpMethodTrace(const char* method) noexcept {
  std::string_view(method == nullptr ? "" : method).copy(m_method.data(), m_method.size() - 1);
  traceParts({"ENTER : ", m_method.data()});
}

tvpMethodTrace::~tvpMethodTrace() {
  // COMPAT: two blanks after EXIT align the colons of a pair of lines; logs are searched for them.
  traceParts({"EXIT  : ", m_method.data()});
}

}  // namespace tvp::cim::fwf
