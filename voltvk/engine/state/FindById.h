// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FINDBYID_H
#define VOLTVK_ENGINE_STATE_FINDBYID_H

#include "voltvk/engine/state/Records.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace voltvk {

/** The pool or volume of a number; null if there is none. Points into the records. */
template <typename Record>
const Record* findById(const std::vector<Record>& records, std::uint32_t id) {
  const auto found =
      std::find_if(records.begin(), records.end(), [&](const Record& record) { return record.id == id; });
  return found == records.end() ? nullptr : &*found;
}

/** The drive of a number; null if there is none. Points into the drives. */
inline const DriveRecord* driveNumbered(const std::vector<DriveRecord>& drives, std::uint16_t number) {
  const auto found = std::find_if(
      drives.begin(), drives.end(), [&](const DriveRecord& drive) { return drive.number == number; });
  return found == drives.end() ? nullptr : &*found;
}

}  // namespace voltvk

#endif
