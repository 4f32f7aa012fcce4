// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_FAILURE_H
#define TESTS_SUPPORT_FAILURE_H

#include "CIM/Framework/CIMException.h"

#include <string>

namespace tvp::test {

/** Runs something. @return code and message of the CIMException it throws, "none" when it throws none */
template <typename Work>
std::string failureOf(Work work) {
  try {
    static_cast<void>(work());
  } catch (const cim::fwf::CIMException& failure) {
    return std::to_string(failure.getErrCode()) + " " + failure.getErrMessage();
  }
  return "none";
}

}  // namespace tvp::test

#endif
