// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/DriveContents.h"

#include "voltvk/engine/drives/ContentProbe.h"
#include "voltvk/engine/drives/SystemText.h"

#include <sstream>

namespace voltvk {

namespace {

/** Differs whenever another drive has the device node, or something has been written or discarded. */
std::string versionOf(const DriveRecord& drive, const std::string& directory) {
  constexpr int WRITES = 5;
  constexpr int DISCARDS = 12;
  std::string version = drive.identity + ' ' + std::to_string(drive.sectors);
  version += ' ' + readSystemText(directory + "/diskseq");
  std::istringstream counters(readSystemText(directory + "/stat"));
  counters.exceptions(std::ios::badbit);
  std::string counter;
  for (int number = 1; counters >> counter; ++number) {
    if (number == WRITES || number == DISCARDS) {
      version += ' ' + counter;
    }
  }
  return version;
}

}  // namespace

std::string DriveContents::of(const DriveRecord& drive, const std::string& directory, Clock::time_point now) {
  // Read before the drive is, so that what is written in between makes the next call look again.
  Sight sight = {versionOf(drive, directory), now, {}};
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto last = m_last.find(drive.name);
    if (last != m_last.end() && last->second.version == sight.version && now - last->second.time < LONGEST) {
      return last->second.content;
    }
  }
  sight.content = contentOf(m_root + drive.name);  // without the lock: a failing drive answers slowly
  std::lock_guard<std::mutex> lock(m_mutex);
  return (m_last[drive.name] = sight).content;
}

}  // namespace voltvk
