// SPDX-License-Identifier: Apache-2.0
// Who gets which page, by which methods and addresses; and what the server counts.
#include "HttpFixture.h"

namespace tvp::test {
namespace {

using host::cimxml::Asked;
using host::cimxml::PageReaders;
using host::cimxml::ServerCounts;

/** Knows one user, whose password is "secret". */
class OneUser : public Users {
public:
  std::optional<std::string> anonymous() const override { return std::nullopt; }
  bool accepts(const std::string& user, const std::string& password) override {
    return user == "anna" && password == "secret";
  }
};

class HttpPagesTest : public HttpTest {
protected:
  void startPages() {
    server = std::make_unique<HttpServer>(options, users);
    server->onCall([this](const HttpCall& call) { return handler(call); });
    const auto add = [&](const char* path, PageReaders readers) {
      server->onPage(
          path,
          [](const HttpCall& call) {
            HttpReply reply;
            reply.body = "[" + call.user + "|" + call.query + "]";
            reply.operation = "page";
            reply.routine = true;
            return reply;
          },
          readers);
    };
    add("/", PageReaders::Users);
    add("/own", PageReaders::SameMachine);
    add("/all", PageReaders::Everyone);
    server->start();
  }

  struct Case {
    std::string request;
    std::string begins;
    std::string has;
  };
  void check(const std::vector<Case>& cases) const {
    for (const Case& each : cases) {
      SCOPED_TRACE(each.request);
      const std::string answer = answerTo(each.request + "\r\n");
      EXPECT_THAT(answer, StartsWith("HTTP/1.1 " + each.begins));
      EXPECT_THAT(answer, HasSubstr(each.has));
    }
  }
};

TEST_F(HttpPagesTest, ReadersDecideWhoIsAskedForAPassword) {
  users = std::make_shared<OneUser>();
  startPages();
  const std::string anna = "Authorization: Basic YW5uYTpzZWNyZXQ=\r\n";
  check(
      {{"GET / HTTP/1.1\r\n", "401 ", "WWW-Authenticate: Basic"},
       {"GET / HTTP/1.1\r\nHost: store1.example\r\n" + anna, "200 ", "[anna|]"},
       {"GET /?a=1&b HTTP/1.1\r\n" + anna, "200 ", "[anna|a=1&b]"},
       {"GET /own HTTP/1.1\r\nHost: localhost:5988\r\n", "200 ", "[|]"},
       {"GET /own HTTP/1.1\r\nHost: [::1]\r\n", "200 ", "[|]"},
       {"GET /own HTTP/1.1\r\nHost: attacker.example\r\n", "401 ", ""},  // whose name leads here
       {"GET /own HTTP/1.1\r\nHost: attacker.example\r\n" + anna, "200 ", "[anna|]"},
       {"GET /all?x HTTP/1.1\r\nHost: store1.example\r\n", "200 ", "[|x]"},
       {"GET /other HTTP/1.1\r\n", "401 ", ""},
       {"GET /other HTTP/1.1\r\n" + anna, "404 ", ""}});
}

TEST_F(HttpPagesTest, OnlyWholePathsAndReadingMethodsReachAPage) {
  startPages();
  check(
      {{"GET / HTTP/1.1\r\n", "200 ", "[carol|]"},
       {"GET /own HTTP/1.1\r\nHost: attacker.example\r\n", "403 ", "localhost"},
       {"GET /../own HTTP/1.1\r\n", "404 ", ""},
       {"GET /%2e%2e/%2e%2e/etc/passwd HTTP/1.1\r\n", "404 ", ""},
       {"GET /own/ HTTP/1.1\r\n", "404 ", ""},
       {"GET //own HTTP/1.1\r\n", "404 ", ""},
       {"PUT /own HTTP/1.1\r\nContent-Length: 0\r\n", "405 ", "Allow: POST, GET, HEAD\r\n"},
       {"POST /own HTTP/1.1\r\nContent-Length: 0\r\n", "405 ", "Allow: GET, HEAD\r\n"},
       {"POST / HTTP/1.1\r\nContent-Length: 0\r\n", "200 ", "CIMOperation: MethodResponse"}});
  RawClient head(server->port());
  head.send("HEAD / HTTP/1.1\r\nConnection: close\r\n\r\n");
  const std::string answer = head.rest();
  EXPECT_THAT(answer, HasSubstr("\r\nContent-Length: 8\r\n"));
  EXPECT_THAT(answer, testing::EndsWith("\r\n\r\n"));
}

TEST_F(HttpPagesTest, RoutineIsCountedButNotLogged) {
  handler = [](const HttpCall&) {
    HttpReply reply;
    reply.code = CMPI_RC_ERR_FAILED;
    reply.body = "failed";
    return reply;
  };
  startPages();
  check(
      {{"GET /own HTTP/1.1\r\n", "200 ", ""},
       {"POST /cimom HTTP/1.1\r\nContent-Length: 0\r\n", "200 ", ""},
       {"GET /none HTTP/1.1\r\n", "404 ", ""},
       {"BREW / HTTP/1.1\r\n", "501 ", ""}});
  ASSERT_TRUE(logged(" 501 "));
  // Each is counted once its answer was sent.
  ASSERT_TRUE(waitFor([&] { return server->counts().requests.size() == 4; }));
  EXPECT_THAT(lines(), testing::Not(testing::Contains(HasSubstr(" page "))));
  const ServerCounts counts = server->counts();
  EXPECT_EQ(counts.requests.at({Asked::Page, 200}).count, 1U);
  EXPECT_EQ(counts.requests.at({Asked::Operation, 200}).count, 1U);
  EXPECT_EQ(counts.requests.at({Asked::Nothing, 404}).count, 1U);
  EXPECT_EQ(counts.requests.at({Asked::Nothing, 501}).count, 1U);
  EXPECT_EQ(counts.failedOperations, 1U);
}

}  // namespace
}  // namespace tvp::test
