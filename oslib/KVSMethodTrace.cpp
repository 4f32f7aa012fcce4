// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSMethodTrace.h"

#include "oslib/KVSLog.h"

namespace tvp::cim::fwf {

void traceParts(std::initializer_list<std::string_view> parts) noexcept {
  KvsTraceParts(parts);
}

tvpMethodTrace::tvpMethodTrace(const char* method) noexcept : m_method(method == nullptr ? "" : method) {
  traceParts({"ENTER : ", m_method});
}

tvpMethodTrace::~tvpMethodTrace() {
  // COMPAT: two blanks after EXIT align the colons of a pair of lines; logs are searched for them.
  traceParts({"EXIT  : ", m_method});
}

}  // namespace tvp::cim::fwf
