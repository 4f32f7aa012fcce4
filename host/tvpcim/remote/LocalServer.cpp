// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/LocalServer.h"

#include "host/tvpcim/Failure.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

namespace fs = std::filesystem;

/** The process of this command that holds the lock of a file. The lock is not tried: a server that starts at
 * that moment would be refused. */
std::optional<pid_t> holderOf(const std::string& lockFile) {
  struct stat status {};
  if (::stat(lockFile.c_str(), &status) != 0) {
    return std::nullopt;
  }
  const std::string inode = ":" + std::to_string(status.st_ino);
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    // 4: FLOCK  ADVISORY  WRITE 1234 fd:00:5678 0 EOF
    std::istringstream words(line);
    std::string number;
    std::string kind;
    std::string mode;
    std::string access;
    pid_t process = 0;
    std::string place;
    words >> number >> kind >> mode >> access >> process >> place;
    const bool isSame = kind == "FLOCK" && place.size() > inode.size() &&
                        place.compare(place.size() - inode.size(), inode.size(), inode) == 0;
    std::string name;
    // The number of the device is not that of the file on every file system, so the name decides.
    std::ifstream("/proc/" + std::to_string(process) + "/comm") >> name;
    if (isSame && name == "tvpcim") {
      return process;
    }
  }
  return std::nullopt;
}

std::optional<std::size_t> countedIn(const std::string& file) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    return error ? std::nullopt : std::optional<std::size_t>(0);
  }
  std::ifstream stream(file);
  const auto content = nlohmann::json::parse(stream, nullptr, false);
  const auto instances = content.find("instances");
  if (content.is_discarded() || instances == content.end() || !instances->is_array()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(std::count_if(instances->begin(), instances->end(), [](const auto& each) {
    return each.is_object() && each.value("class", "") == "CIM_IndicationSubscription";
  }));
}

}  // namespace

std::string defaultSubscriptions() {
  if (::geteuid() == 0) {
    const char* testRoot = ::secure_getenv("TVP_TEST_ROOT");
    return std::string(testRoot == nullptr ? "" : testRoot) + "/var/lib/tvpcim/subscriptions.json";
  }
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  if ((state == nullptr || *state == '\0') && home == nullptr) {
    throw UsageError("there is no home directory to keep subscriptions in; name a file with --subscriptions");
  }
  const fs::path directory =
      state == nullptr || *state == '\0' ? fs::path(home) / ".local/state" : fs::path(state);
  return directory / "tvpcim" / "subscriptions.json";
}

LocalServer LocalServer::with(const std::string& subscriptionsFile) {
  return {holderOf(subscriptionsFile + ".lock"), countedIn(subscriptionsFile)};
}

}  // namespace tvp::host::tvpcim
