// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FAULT_H
#define VOLTVK_ENGINE_STATE_FAULT_H

#include "voltvk/Ret.h"

#include <cstdint>
#include <string>

namespace voltvk {

/** The failures that can be injected. The numbers are stored in the state. */
enum class FaultKind : std::uint8_t {
  DriverAbsent = 1,   ///< the controller count is 0 and collections return null, until cleared
  AdapterAbsent = 2,  ///< getObject(0) of the root is null and adapters refuse, until cleared
  Fail = 3,           ///< the next call of an operation is refused with a status
  Throw = 4,          ///< the next call of an operation throws std::runtime_error
  Slow = 5            ///< every call of an operation takes longer, until cleared
};

/** One injected fault. */
struct Fault {
  FaultKind kind = FaultKind::DriverAbsent;
  std::string operation;                // empty for the two absences
  std::uint32_t status = TVK_INTERNAL;  // for Fail
  std::uint32_t milliseconds = 0;       // for Slow
};

}  // namespace voltvk

#endif
