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

void RoutineArguments::log(const char* label, const std::string& value) const {
  KvsLogMsg(KVS_LOG_DEBUG, "%s() - %s %s", m_routine, label, value.c_str());
}

void RoutineArguments::log(const char* label, unsigned long long value) const {
  KvsLogMsg(KVS_LOG_DEBUG, "%s() - %s %llu", m_routine, label, value);
}

void RoutineArguments::logIdentifier(const char* label, unsigned int identifier) const {
  KvsLogMsg(KVS_LOG_DEBUG, "%s() - %s %d", m_routine, label, static_cast<int>(identifier));
}

}  // namespace tvp::cim::fwf
