// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_REQUESTSTREAM_H
#define HOST_CIMXML_SERVER_REQUESTSTREAM_H

#include "host/cimxml/server/Connection.h"

#include <httplib.h>

#include <string_view>

namespace tvp::host::cimxml {

/** What httplib reads a request from and writes the answer to: the head that was looked at, then the
 * connection. */
class RequestStream : public httplib::Stream {
public:
  RequestStream(Connection& connection, std::string_view head) : m_connection(connection), m_head(head) {}

  bool is_readable() const override { return true; }
  bool is_writable() const override { return true; }
  ssize_t read(char* data, std::size_t size) override {
    if (m_head.empty()) {
      return m_connection.read(data, size);
    }
    const std::size_t count = m_head.copy(data, size);
    m_head.remove_prefix(count);
    return static_cast<ssize_t>(count);
  }
  ssize_t write(const char* data, std::size_t size) override {
    return m_connection.write(data, size) ? static_cast<ssize_t>(size) : -1;
  }
  void get_remote_ip_and_port(std::string& /*address*/, int& /*port*/) const override {}
  void get_local_ip_and_port(std::string& /*address*/, int& /*port*/) const override {}
  // Only asked to find numbers that select() cannot take, and nothing here selects.
  socket_t socket() const override { return -1; }

private:
  Connection& m_connection;
  std::string_view m_head;
};

}  // namespace tvp::host::cimxml

#endif
