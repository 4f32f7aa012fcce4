// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_SERVEDPROVIDER_H
#define TESTS_SUPPORT_SERVEDPROVIDER_H

#include "host/cimxml/client/CimClient.h"
#include "host/cimxml/server/CimService.h"
#include "host/cimxml/server/HttpServer.h"
#include "host/cimxml/server/OpenUsers.h"
#include "host/schema/MofReader.h"

#include <memory>
#include <string>

namespace tvp::test {

/**
 * A server of this process for a provider of this process, on a free port of the loopback interface, without
 * passwords and without a file of subscriptions. deliver() is for the broker's handler of indications, which
 * is set before there is a provider.
 */
class ServedProvider {
public:
  /** @param directory of the files of classes, TVP.mof and Interop.mof */
  explicit ServedProvider(const std::string& directory)
      : m_schema(host::MofReader::readFile(directory + "/TVP.mof")),
        m_interop(host::MofReader::readFile(directory + "/Interop.mof")),
        m_subscriptions(m_interop, {"", NAMESPACE, {}, [](const std::string&) {}}) {}
  ~ServedProvider() { stop(); }
  ServedProvider(const ServedProvider&) = delete;
  ServedProvider& operator=(const ServedProvider&) = delete;

  static constexpr const char* NAMESPACE = "root/kvs/tvp/smi_15";

  const std::shared_ptr<const host::Schema>& schema() const { return m_schema; }
  void deliver(const std::string& nameSpace, const host::Instance& indication) {
    m_subscriptions.deliver(nameSpace, indication);
  }

  /** Begins to answer. The provider must live until stop(). */
  void start(host::Provider& provider) {
    m_subscriptions.attach(provider);
    m_service = std::make_unique<host::cimxml::CimService>(
        provider, m_schema, m_interop, m_subscriptions, host::cimxml::CimServiceOptions{NAMESPACE});
    host::cimxml::HttpServerOptions options;
    options.port = 0;
    m_http = std::make_unique<host::cimxml::HttpServer>(
        std::move(options), std::make_shared<host::cimxml::OpenUsers>("root"));
    m_http->onCall([this](const host::cimxml::HttpCall& call) { return m_service->answer(call); });
    m_http->start();
  }
  void stop() {
    m_http.reset();
    m_subscriptions.stop();
  }

  std::uint16_t port() const { return m_http->port(); }
  /** A client with a connection of its own. */
  std::unique_ptr<host::Operations> client() const {
    host::cimxml::CimClientOptions options;
    options.url.host = "127.0.0.1";
    options.url.port = port();
    return std::make_unique<host::cimxml::CimClient>(std::move(options), m_schema);
  }

private:
  const std::shared_ptr<const host::Schema> m_schema;
  const std::shared_ptr<const host::Schema> m_interop;
  host::cimxml::Subscriptions m_subscriptions;
  std::unique_ptr<host::cimxml::CimService> m_service;
  std::unique_ptr<host::cimxml::HttpServer> m_http;
};

}  // namespace tvp::test

#endif
