// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_ROUTINEARGUMENTS_H
#define BACKEND_ROUTINEARGUMENTS_H

#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/PropertyLookup.h"
#include "voltvk/Specs.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

/**
 * The input arguments of a routine: checked once, then read by name. Reading never fails: what is null, of
 * another type or without an element yields a value that the storage library refuses. Refers to the arguments
 * it was constructed from and belongs to one thread.
 */
class RoutineArguments {
public:
  /** @param routine name used in log lines @param in must outlive this object */
  RoutineArguments(const char* routine, const CIMMethodParam& in) : m_routine(routine), m_in(in) {}

  /**
   * Whether there are exactly these arguments. Logs what is wrong: the number first, then the first missing
   * name.
   */
  bool areExactly(std::initializer_list<const char*> names) const;
  /** Whether these are among the arguments. Logs the first missing name. */
  bool contain(std::initializer_list<const char*> names) const;

  /** The first element of an argument; empty or 0 if there is none. */
  std::string text(const char* name) const { return scalar<std::string>(name); }
  unsigned char uint8(const char* name) const { return scalar<unsigned char>(name); }
  unsigned int uint32(const char* name) const { return scalar<unsigned int>(name); }
  unsigned long long uint64(const char* name) const { return scalar<unsigned long long>(name); }
  /**
   * An identifier; TVK_NO_ID, which nothing has, if there is no value: 0 could be the identifier of a pool.
   */
  unsigned int identifier(const char* name) const { return scalar<unsigned int>(name, TVK_NO_ID); }

  /** Logs a value in a line "<routine>() - <label> <value>". */
  void log(const char* label, const std::string& value) const;
  void log(const char* label, unsigned long long value) const;
  /** The same for an identifier, as a signed number: TVK_NO_ID is -1. */
  void logIdentifier(const char* label, unsigned int identifier) const;

  /** All elements of an array. */
  template <typename T>
  std::vector<T> array(const char* name) const {
    return elementsOf<T>(m_in.getArgumentByName(name));
  }

private:
  template <typename T>
  T scalar(const char* name, T missing = T()) const {
    return firstElementOf<T>(m_in.getArgumentByName(name), std::move(missing));
  }

  const char* m_routine;
  const CIMMethodParam& m_in;
};

}  // namespace tvp::cim::fwf

#endif
