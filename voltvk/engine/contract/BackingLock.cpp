// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/BackingLock.h"

#include "voltvk/engine/state/Refusal.h"

#include <cerrno>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

namespace voltvk {

BackingLock::BackingLock(const std::string& state, std::chrono::steady_clock::time_point until)
    : m_file(
          ::open((state + "-changes").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0600)),
      m_kept(m_file.get()) {
  require(static_cast<bool>(m_file), TVK_INTERNAL, [&] {
    return "the file " + state + "-changes cannot be opened (" + std::strerror(errno) +
           "); check its directory";
  });
  while (::flock(m_file.get(), LOCK_EX | LOCK_NB) != 0) {
    require(
        std::chrono::steady_clock::now() < until, TVK_BUSY,
        "another change of pools and volumes is under way; try again when it has ended");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

}  // namespace voltvk
