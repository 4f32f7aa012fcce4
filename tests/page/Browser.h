// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PAGE_BROWSER_H
#define TESTS_PAGE_BROWSER_H

#include "support/Command.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace tvp::test {

/**
 * A Chromium without a window, driven by chromedriver with the WebDriver protocol. All that it writes lies in
 * the given directory; on destruction both end.
 */
class Browser {
public:
  using Json = nlohmann::ordered_json;

  /** @throws std::runtime_error when it does not start */
  explicit Browser(const TemporaryDirectory& directory) {
    const std::string own = directory.file("browser");
    std::filesystem::create_directories(own);
    m_driver.emplace(Command({"/usr/bin/chromedriver", "--port=0"})
                         .with("HOME", own)
                         .with("TMPDIR", own)
                         .limit(std::chrono::minutes(4))
                         .start());
    const std::string beginning = "started successfully on port ";
    if (!m_driver->waitFor(beginning)) {
      throw std::runtime_error("chromedriver does not start: " + m_driver->soFar().err);
    }
    const std::string& out = m_driver->soFar().out;
    m_http = std::make_unique<httplib::Client>(
        "127.0.0.1", std::stoi(out.substr(out.find(beginning) + beginning.size())));
    m_http->set_read_timeout(std::chrono::minutes(2));
    const Json options = {
        {"binary", "/usr/bin/chromium"},
        {"args",
         {"--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
          "--disable-background-networking", "--user-data-dir=" + own + "/profile"}}};
    m_session =
        ask("POST", "/session",
            {{"capabilities", {{"alwaysMatch", {{"goog:chromeOptions", options}}}}}})["sessionId"];
  }
  ~Browser() {
    if (!m_session.empty()) {
      m_http->Delete("/session/" + m_session);
    }
    m_driver->signal(SIGTERM);
    m_driver->finish();
  }
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  void open(const std::string& url) { command("/url", {{"url", url}}); }
  /** @param script the body of a function @return what it returns */
  Json run(const std::string& script, const Json& arguments = Json::array()) {
    return command("/execute/sync", {{"script", script}, {"args", arguments}});
  }
  /** Waits until an expression is true, for a minute at most, which it is asked for again and again. */
  bool waitFor(const std::string& expression) {
    return run("const end = Date.now() + 60000; return new Promise((resolve) => { const look = () => { let "
               "done = false; try { done = Boolean(" +
               expression +
               "); } catch {} if (done || Date.now() > end) resolve(done); else setTimeout(look, "
               "50); }; look(); });") == true;
  }
  std::string text(const std::string& selector) {
    return run("return document.querySelector(arguments[0]).innerText;", {selector});
  }
  /** Presses keys where the focus is. @param key a character, or one of WebDriver's numbers for keys */
  void press(const std::string& key) {
    command(
        "/actions",
        {{"actions",
          {{{"type", "key"},
            {"id", "keyboard"},
            {"actions", {{{"type", "keyDown"}, {"value", key}}, {{"type", "keyUp"}, {"value", key}}}}}}}});
  }
  /** A command of the browser's own protocol. */
  Json control(const std::string& name, const Json& parameters) {
    return command("/goog/cdp/execute", {{"cmd", name}, {"params", parameters}});
  }
  /** What a screen reader says of an element: its role and its name. */
  std::string spoken(const std::string& selector) {
    const Json found = command("/element", {{"using", "css selector"}, {"value", selector}});
    const std::string element =
        "/session/" + m_session + "/element/" + found.begin().value().get<std::string>();
    return ask("GET", element + "/computedrole", nullptr).get<std::string>() + ": " +
           ask("GET", element + "/computedlabel", nullptr).get<std::string>();
  }

private:
  Json command(const std::string& path, const Json& body) {
    return ask("POST", "/session/" + m_session + path, body);
  }
  Json ask(const std::string& method, const std::string& path, const Json& body) {
    const httplib::Result result =
        method == "GET" ? m_http->Get(path) : m_http->Post(path, body.dump(), "application/json");
    Json answer = result ? Json::parse(result->body, nullptr, false) : Json();
    if (!result || answer.is_discarded() || result->status != 200) {
      throw std::runtime_error(path + ": " + (result ? result->body : "chromedriver does not answer"));
    }
    return answer.at("value");
  }

  std::optional<RunningCommand> m_driver;
  std::unique_ptr<httplib::Client> m_http;
  std::string m_session;
};

}  // namespace tvp::test

#endif
