// SPDX-License-Identifier: Apache-2.0
#include "backend/RoutineArguments.h"

#include "oslib/KVSLog.h"

namespace tvp::cim::fwf {

bool RoutineArguments::areExactly(std::initializer_list<const char*> names) const {
  if (m_in.getArgumentCount() != names.size()) {
    KvsLogMsg(
        KVS_LOG_DEBUG, "%s FAILURE : %d input parameters required", m_routine,
        static_cast<int>(names.size()));
    return false;
  }
  return contain(names);
}

bool RoutineArguments::contain(std::initializer_list<const char*> names) const {
  for (const char* name : names) {
    if (m_in.getArgumentByName(name) == nullptr) {
      KvsLogMsg(KVS_LOG_DEBUG, "%s : No %s parameter passed in", m_routine, name);
      return false;
    }
  }
  return true;
}

}  // namespace tvp::cim::fwf
