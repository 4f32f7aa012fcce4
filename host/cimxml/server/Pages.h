// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_PAGES_H
#define HOST_CIMXML_SERVER_PAGES_H

#include "host/cimxml/server/Exchange.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace tvp::host::cimxml {

/** Who gets a page. */
enum class PageReaders {
  Users,        ///< the server's users, like everything else
  SameMachine,  ///< programs of this machine without a password, besides the users
  Everyone      ///< whoever reaches the server, without a password
};

struct Page {
  CallHandler handler;
  PageReaders readers = PageReaders::Users;
};

/** The pages of a server, by the path of their address, which is compared as it is: nothing is decoded. */
class Pages {
public:
  void add(const std::string& path, Page page) { m_pages[path] = std::move(page); }
  /** @param target of a request, with its query @return null when there is no such page */
  const Page* find(std::string_view target) const;

private:
  std::map<std::string, Page, std::less<>> m_pages;
};

/** The part of a target before its query. */
std::string_view pathOf(std::string_view target);

/**
 * Whether a header Host is one that leads to this machine wherever it is used: localhost, an address of the
 * loopback interface, or none. A browser sends the name that its user or a web page gave, and anybody can
 * make a name lead to an address of the loopback interface.
 */
bool namesThisMachine(const std::string& host);

/** Whether a client, "ADDRESS:PORT", is a program of this machine. */
bool isOnThisMachine(const std::string& client);

}  // namespace tvp::host::cimxml

#endif
