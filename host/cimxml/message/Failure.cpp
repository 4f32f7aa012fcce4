// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/Failure.h"

#include <string_view>

namespace tvp::host::cimxml {

int BadMessage::httpStatus() const {
  constexpr int BAD_REQUEST = 400;
  constexpr int NOT_IMPLEMENTED = 501;
  const std::string_view unsupported = "unsupported-";
  return m_cimError == "multiple-requests-unsupported" ||
                 m_cimError.compare(0, unsupported.size(), unsupported) == 0
             ? NOT_IMPLEMENTED
             : BAD_REQUEST;
}

}  // namespace tvp::host::cimxml
