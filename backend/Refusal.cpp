// SPDX-License-Identifier: Apache-2.0
#include "backend/Refusal.h"

#include "CIM/Framework/RefusalReason.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::fwf {

void reportRefusal(const char* operation, const char* reason) {
  if (*reason != '\0') {
    KvsLogMsg(KVS_LOG_ERROR, "%s() was refused: %s", operation, reason);
    RefusalReason::set(reason);
  }
}

}  // namespace tvp::cim::fwf
