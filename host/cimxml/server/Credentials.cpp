// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/Credentials.h"

#include "host/schema/Names.h"

#include <openssl/evp.h>

#include <algorithm>

namespace tvp::host::cimxml {

std::optional<Credentials> readBasic(const std::string& authorization) {
  const std::string scheme = "Basic ";
  const std::size_t begin = authorization.find_first_not_of(' ', scheme.size() - 1);
  if (!equalNames(authorization.substr(0, scheme.size()), scheme) || begin == std::string::npos) {
    return std::nullopt;
  }
  const std::string encoded = authorization.substr(begin);
  std::string decoded(encoded.size(), '\0');
  const int size = EVP_DecodeBlock(
      reinterpret_cast<unsigned char*>(decoded.data()),
      reinterpret_cast<const unsigned char*>(encoded.data()), static_cast<int>(encoded.size()));
  if (size < 0) {
    return std::nullopt;
  }
  // The decoder counts the bytes that '=' stands for.
  const std::size_t padding = encoded.size() - 1 - encoded.find_last_not_of('=');
  decoded.resize(static_cast<std::size_t>(size) - std::min<std::size_t>(padding, 2));
  const std::size_t colon = decoded.find(':');
  // PAM takes texts that end at a zero.
  if (colon == std::string::npos || colon == 0 || decoded.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  return Credentials{decoded.substr(0, colon), decoded.substr(colon + 1)};
}

}  // namespace tvp::host::cimxml
