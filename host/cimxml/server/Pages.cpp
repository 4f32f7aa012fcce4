// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/Pages.h"

#include "host/cimxml/server/HttpServer.h"
#include "host/schema/Names.h"

#include <stdexcept>

namespace tvp::host::cimxml {
namespace {

/** The address or name of "NAME", "NAME:PORT" and "[ADDRESS]:PORT". */
std::string withoutPort(const std::string& endpoint) {
  if (!endpoint.empty() && endpoint.front() == '[') {
    return endpoint.substr(1, endpoint.find(']') - 1);
  }
  return endpoint.substr(0, endpoint.rfind(':'));
}

/** Whether it is an address, and not a name, of the loopback interface. */
bool isLoopbackAddress(const std::string& text) {
  try {
    return isLoopback(text);
  } catch (const std::runtime_error&) {
    return false;
  }
}

}  // namespace

const Page* Pages::find(std::string_view target) const {
  const auto found = m_pages.find(pathOf(target));
  return found == m_pages.end() ? nullptr : &found->second;
}

std::string_view pathOf(std::string_view target) {
  return target.substr(0, target.find('?'));
}

bool namesThisMachine(const std::string& host) {
  const std::string name = withoutPort(host);
  return name.empty() || equalNames(name, "localhost") || isLoopbackAddress(name);
}

bool isOnThisMachine(const std::string& client) {
  return isLoopbackAddress(withoutPort(client));
}

}  // namespace tvp::host::cimxml
