// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/OpenUsers.h"

#include <array>

#include <pwd.h>

namespace tvp::host::cimxml {

bool isAdministrator(const std::string& user) {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 16384> texts{};
  return ::getpwnam_r(user.c_str(), &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr &&
         found->pw_gid == 0;
}

}  // namespace tvp::host::cimxml
