// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_INDICATIONS_TESTLISTENER_H
#define TESTS_CIMXML_INDICATIONS_TESTLISTENER_H

#include "tests/support/Certificate.h"
#include "tests/support/Threads.h"

#include <httplib.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tvp::host::cimxml::testing {

/** A listener that keeps the exports it gets, and answers them as it is told. */
class TestListener {
public:
  using Answer = std::function<void(const httplib::Request&, httplib::Response&)>;

  /** @param answer by default status 200 */
  explicit TestListener(Answer answer = [](const httplib::Request&, httplib::Response&) {})
      : TestListener("http", std::make_unique<httplib::Server>(), std::move(answer)) {}
  /** One with TLS. */
  explicit TestListener(const tvp::test::CertificateFiles& files)
      : TestListener(
            "https", std::make_unique<httplib::SSLServer>(files.certificate.c_str(), files.key.c_str()),
            [](const httplib::Request&, httplib::Response&) {}) {}
  ~TestListener() {
    tvp::test::waitFor([this] { return m_server->is_running(); });
    m_server->stop();
    m_thread.join();
  }
  TestListener(const TestListener&) = delete;
  TestListener& operator=(const TestListener&) = delete;

  std::string url() const { return m_scheme + "://127.0.0.1:" + std::to_string(m_port) + "/sink"; }

  std::vector<httplib::Request> exports() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_exports;
  }

  bool waitForExports(std::size_t count) const {
    return tvp::test::waitFor([&] { return exports().size() >= count; });
  }

private:
  TestListener(std::string scheme, std::unique_ptr<httplib::Server> server, Answer answer)
      : m_scheme(std::move(scheme)), m_answer(std::move(answer)), m_server(std::move(server)) {
    m_server->Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
      {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_exports.push_back(request);
      }
      m_answer(request, response);
    });
    m_port = m_server->bind_to_any_port("127.0.0.1");
    m_thread = std::thread([this] { m_server->listen_after_bind(); });
  }

  const std::string m_scheme;
  const Answer m_answer;
  mutable std::mutex m_mutex;
  std::vector<httplib::Request> m_exports;
  const std::unique_ptr<httplib::Server> m_server;
  int m_port = 0;
  std::thread m_thread;
};

/** Holds up whoever passes until it is opened. */
class Gate {
public:
  ~Gate() { open(); }

  void pass() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_open; });
  }

  void open() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_open = true;
    }
    m_changed.notify_all();
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_open = false;
};

}  // namespace tvp::host::cimxml::testing

#endif
