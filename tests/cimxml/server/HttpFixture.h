// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_SERVER_HTTPFIXTURE_H
#define TESTS_CIMXML_SERVER_HTTPFIXTURE_H

#include "host/cimxml/server/HttpServer.h"
#include "host/cimxml/server/OpenUsers.h"
#include "support/RawClient.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tvp::test {

using host::cimxml::AdministratorsOnly;
using host::cimxml::CallHandler;
using host::cimxml::HttpCall;
using host::cimxml::HttpReply;
using host::cimxml::HttpServer;
using host::cimxml::HttpServerOptions;
using host::cimxml::OpenUsers;
using host::cimxml::Users;
using testing::HasSubstr;
using testing::StartsWith;

/** A server whose answer repeats what it was called with. */
class HttpTest : public testing::Test {
protected:
  HttpTest() {
    options.port = 0;
    options.wrongPassword = std::chrono::milliseconds(0);
    options.log = [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_lines.push_back(line);
    };
  }

  void start() {
    server = std::make_unique<HttpServer>(options, users);
    server->onCall([this](const HttpCall& call) { return handler(call); });
    server->onPage("/page", [](const HttpCall& call) {
      HttpReply reply;
      reply.body = "a page for " + call.user;
      return reply;
    });
    server->start();
  }

  static HttpReply echo(const HttpCall& call) {
    HttpReply reply;
    reply.operation = call.method;
    reply.className = "TST_Class";
    reply.headers["CIMOperation"] = "MethodResponse";
    reply.body = call.operation + "|" + call.exportOperation + "|" + call.method + "|" + call.object + "|" +
                 call.contentType + "|" + call.user + "|" + call.body;
    return reply;
  }

  /** What the server answers to bytes on a connection of their own. */
  std::string answerTo(std::string_view bytes) const {
    return RawClient(server->port()).send(bytes).answer();
  }

  /** Waits until the log has a line with the text. */
  bool logged(const std::string& text) {
    return waitFor([&] {
      const std::lock_guard<std::mutex> lock(m_mutex);
      return std::any_of(m_lines.begin(), m_lines.end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
      });
    });
  }

  /** The log so far. */
  std::vector<std::string> lines() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }

  HttpServerOptions options;
  std::shared_ptr<Users> users = std::make_shared<OpenUsers>("carol");
  CallHandler handler = echo;

private:
  std::mutex m_mutex;
  std::vector<std::string> m_lines;

protected:
  std::unique_ptr<HttpServer> server;  ///< stops before anything that its threads use goes away
};

}  // namespace tvp::test

#endif
