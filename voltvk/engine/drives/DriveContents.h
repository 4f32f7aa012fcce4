// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DRIVECONTENTS_H
#define VOLTVK_ENGINE_DRIVES_DRIVECONTENTS_H

#include "voltvk/engine/state/Records.h"

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace voltvk {

/**
 * What is stored on the drives of the machine. Opens a drive only if it is new, if something has been written
 * to it, or if it was last opened LONGEST ago. Functions may be called from any thread.
 */
class DriveContents {
public:
  using Clock = std::chrono::steady_clock;

  /** How long a content is believed; another machine may write to the drive as well. */
  static constexpr std::chrono::seconds LONGEST{30};

  /** @param root what precedes "/dev" in the paths of the device nodes */
  explicit DriveContents(std::string root) : m_root(std::move(root)) {}

  /** @param directory the drive's directory in sysfs @return as contentOf in ContentProbe.h */
  std::string
  of(const DriveRecord& drive, const std::string& directory, Clock::time_point now = Clock::now());

private:
  struct Sight {
    std::string version;
    Clock::time_point time;
    std::string content;
  };

  std::string m_root;
  std::mutex m_mutex;
  std::map<std::string, Sight> m_last;  ///< by device node
};

}  // namespace voltvk

#endif
