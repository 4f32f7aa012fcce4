// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_CREDENTIALS_H
#define HOST_CIMXML_SERVER_CREDENTIALS_H

#include <optional>
#include <string>

namespace tvp::host::cimxml {

struct Credentials {
  std::string user;
  std::string password;
};

/** Reads the header Authorization. @return nothing unless it is of the scheme Basic and well-formed */
std::optional<Credentials> readBasic(const std::string& authorization);

}  // namespace tvp::host::cimxml

#endif
