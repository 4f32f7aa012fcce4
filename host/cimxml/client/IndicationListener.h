// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_CLIENT_INDICATIONLISTENER_H
#define HOST_CIMXML_CLIENT_INDICATIONLISTENER_H

#include "host/schema/Value.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tvp::host::cimxml {

/**
 * An HTTP server for exports, which are the indications that a server sends. It knows no users: whoever
 * reaches its port can send it something, so that it belongs on an address that only the senders reach.
 */
class IndicationListener {
public:
  /** Receives an indication; called by several threads at once. What it throws is answered as a failure,
   * after which the sender tries again. */
  using Handler = std::function<void(const Instance& indication)>;

  /**
   * Listens from now on, on any path.
   * @param port 0: any free one
   * @throws std::runtime_error with what to do, when the address or the port cannot be had
   */
  IndicationListener(const std::string& address, std::uint16_t port, Handler handler);
  /** Finishes the exports that are being received. */
  ~IndicationListener();
  IndicationListener(const IndicationListener&) = delete;
  IndicationListener& operator=(const IndicationListener&) = delete;

  std::uint16_t port() const;

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

/** The address of this machine that a connection to a host leaves from. @throws std::runtime_error without
 * one */
std::string addressTowards(const std::string& host);

}  // namespace tvp::host::cimxml

#endif
