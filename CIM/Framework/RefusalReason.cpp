// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/RefusalReason.h"

#include <cstdio>

namespace tvp::cim::fwf {

namespace {

// An array: a thread's object with a destructor would keep the provider from being unloaded.
thread_local char reason[512];

}  // namespace

void RefusalReason::clear() {
  reason[0] = '\0';
}

void RefusalReason::set(const char* text) {
  std::snprintf(reason, sizeof reason, "%s", text);
}

const char* RefusalReason::get() {
  return reason;
}

}  // namespace tvp::cim::fwf
