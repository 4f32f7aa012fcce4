// SPDX-License-Identifier: Apache-2.0
#include "voltvk/Ret.h"

#include "voltvk/Limits.h"
#include "voltvk/Specs.h"

#include <map>
#include <string>

namespace {

const std::map<std::uint32_t, std::string>& statusTexts() {
  // Not destroyed at exit, so that the texts stay valid.
  static const auto& texts = *new std::map<std::uint32_t, std::string>{
#define TVK_STATUS(name, number, clientName, text) {name, text},
#include "voltvk/Status.def"
  };
  return texts;
}

}  // namespace

Ret::Ret() : Ret(TVK_OK) {}
Ret::Ret(std::uint32_t status, const char* detail) : m_status(status), m_detail{} {
  tvkSetText(m_detail, sizeof m_detail, detail);
}
Ret::Ret(const Ret& other) = default;
Ret& Ret::operator=(const Ret& other) = default;

const char* Ret::getText() const {
  return tvkStatusText(m_status);
}

const char* tvkStatusText(std::uint32_t status) {
  const auto entry = statusTexts().find(status);
  return entry == statusTexts().end() ? "The storage library answered an unknown status"
                                      : entry->second.c_str();
}
