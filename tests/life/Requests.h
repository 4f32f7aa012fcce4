// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_REQUESTS_H
#define TESTS_LIFE_REQUESTS_H

#include "life/Life.h"
#include "support/MethodArguments.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvp::test {

inline constexpr std::uint64_t MIB = 2048;  ///< sectors

/** A filter for the indications of the provider. */
inline host::IndicationFilter tieringFilter() {
  host::IndicationFilter filter;
  filter.className = "TVP_CIMIndication";
  filter.query = "SELECT * FROM TVP_CIMIndication";
  return filter;
}

MethodCall createPool(const std::string& name, const std::vector<std::uint8_t>& drives, std::uint8_t tier);
MethodCall createVolume(const std::string& name, std::uint8_t type, const std::vector<std::uint32_t>& pools);
MethodCall createCachedDrive(const std::string& name, std::uint32_t pool, std::uint8_t drive);
MethodCall modifyPool(std::uint32_t pool, const std::string& name, std::uint8_t tier);
MethodCall modifyVolume(std::uint32_t volume, const std::string& name, std::uint32_t knob);
/** A method whose one argument is the identifier of a volume, or of a pool. */
MethodCall ofVolume(const std::string& method, std::uint32_t volume);
MethodCall ofPool(const std::string& method, std::uint32_t pool);

/** Every operation of the instance and association interfaces on a class. */
void askEverything(Life& life, const std::string& className);

/** The association operations with filters. */
void askNamedAssociations(Life& life, const std::string& className);

// Unusual requests.

/** The functions of the four interfaces without their arguments. */
void askWithoutArguments(Life& life);

/** Keys, properties and arguments of every type. */
void askWithEveryType(Life& life);

/** Requests of every kind while one function of the object manager after the other fails. */
void askWhileCallsFail(Life& life);

}  // namespace tvp::test

#endif
