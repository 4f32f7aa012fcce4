// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_ENDTOEND_SERVEFIXTURE_H
#define TESTS_CIMXML_ENDTOEND_SERVEFIXTURE_H

#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <csignal>
#include <optional>
#include <string>

namespace tvp::test {

/** A running `tvpcim serve` with a state of the test's own, on a port of its own. */
class ServeTest : public TvpcimTest {
protected:
  /** Starts the server, again at the same port if it ran before. */
  void serve(const Words& options = {}) {
    Words words = {
        "serve",
        "--auth",
        "none",
        "--listen",
        "127.0.0.1:" + std::to_string(m_port),
        "--subscriptions",
        directory().file("subscriptions.json")};
    words.insert(words.end(), options.begin(), options.end());
    m_server.emplace(command("tvpcim", words).with("TVP_TEST_ROOT", directory().path()).start());
    const std::string beginning = "Listening on http://127.0.0.1:";
    ASSERT_TRUE(m_server->waitFor(beginning)) << m_server->soFar().err;
    const std::string& out = m_server->soFar().out;
    m_port = static_cast<std::uint16_t>(std::stoul(out.substr(out.find(beginning) + beginning.size())));
  }

  /** Ends the server as systemd does; it must have broken no rule. @return its log */
  std::string stop() {
    m_server->signal(SIGTERM);
    const CommandResult result = m_server->finish();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.err;
  }

  void signal(int number) const { m_server->signal(number); }

  std::uint16_t port() const { return m_port; }
  std::string url(const std::string& path, const std::string& nameSpace = "root/kvs/tvp/smi_15") const {
    return "http://127.0.0.1:" + std::to_string(m_port) + "/" + nameSpace + (path.empty() ? "" : ":" + path);
  }

private:
  std::uint16_t m_port = 0;
  std::optional<RunningCommand> m_server;
};

}  // namespace tvp::test

#endif
