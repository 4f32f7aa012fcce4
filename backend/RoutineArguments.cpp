// SPDX-License-Identifier: Apache-2.0
#include "backend/RoutineArguments.h"

#include "oslib/KVSLog.h"
#include "voltvk/Specs.h"

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

template <typename T>
std::vector<T> RoutineArguments::array(const char* name) const {
  const CIMProperty* argument = m_in.getArgumentByName(name);
  if (argument == nullptr || argument->slot<T>().m_isNull) {
    return {};
  }
  return argument->slot<T>().m_values;
}

template std::vector<unsigned char> RoutineArguments::array(const char*) const;
template std::vector<unsigned int> RoutineArguments::array(const char*) const;
template std::vector<unsigned long long> RoutineArguments::array(const char*) const;
template std::vector<std::string> RoutineArguments::array(const char*) const;

template <typename T>
T RoutineArguments::scalar(const char* name, T missing) const {
  const std::vector<T> elements = array<T>(name);
  return elements.empty() ? missing : elements.front();
}

template unsigned char RoutineArguments::scalar(const char*, unsigned char) const;
template unsigned int RoutineArguments::scalar(const char*, unsigned int) const;
template unsigned long long RoutineArguments::scalar(const char*, unsigned long long) const;

std::string RoutineArguments::text(const char* name) const {
  return scalar<std::string>(name, {});
}

unsigned int RoutineArguments::identifier(const char* name) const {
  return scalar<unsigned int>(name, TVK_NO_ID);
}

}  // namespace tvp::cim::fwf
