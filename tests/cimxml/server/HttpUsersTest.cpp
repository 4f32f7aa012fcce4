// SPDX-License-Identifier: Apache-2.0
// Who may ask: passwords, the pause after a wrong one, administrators, and PAM.
#include "HttpFixture.h"
#include "host/cimxml/server/PamUsers.h"
#include "support/TemporaryDirectory.h"

#include <sys/stat.h>

// PAM's own library loses 96 bytes when there is no such service. The name is that of the sanitizer.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libpam.so";
}

namespace tvp::test {
using host::cimxml::PamUsers;

namespace {

/** Two users with the same password, of whom one may not use the server. */
class TwoUsers : public Users {
public:
  std::optional<std::string> anonymous() const override { return std::nullopt; }
  bool accepts(const std::string& user, const std::string& password) override {
    ++asked;
    return (user == "alice" || user == "bob") && password == "pass:word";
  }
  bool permits(const std::string& user) const override { return user == "alice"; }

  std::atomic<int> asked{0};
};

// "alice:pass:word", "bob:pass:word", "alice:wrong", "nobody:wrong", "alice" and "alice:\0" in base64.
const char* const ALICE = "Basic YWxpY2U6cGFzczp3b3Jk";
const char* const BOB = "basic Ym9iOnBhc3M6d29yZA==";
const char* const WRONG = "Basic YWxpY2U6d3Jvbmc=";
const char* const UNKNOWN = "Basic bm9ib2R5Ondyb25n";

class HttpUsersTest : public HttpTest {
protected:
  static std::string postAs(const std::string& authorization, const std::string& body = "b") {
    return post(body, "Authorization: " + authorization + "\r\n");
  }
};

TEST_F(HttpUsersTest, OnlyWhoKnowsThePasswordIsAnsweredAndOnceAccepted) {
  const auto two = std::make_shared<TwoUsers>();
  users = two;
  start();
  RawClient client(server->port());
  EXPECT_THAT(client.send(postAs(ALICE)).answer(), HasSubstr("|alice|b"));
  EXPECT_THAT(client.send(postAs(ALICE)).answer(), HasSubstr("|alice|b"));
  EXPECT_EQ(two->asked, 1) << "the password is not checked again for every request of a connection";
  const std::string wrong = client.send(postAs(WRONG)).answer();
  EXPECT_THAT(wrong, StartsWith("HTTP/1.1 401 "));
  EXPECT_THAT(wrong, HasSubstr("WWW-Authenticate: Basic realm="));
  EXPECT_EQ(client.send(postAs(UNKNOWN)).answer(), wrong);
  EXPECT_EQ(two->asked, 3);
  for (const char* header :
       {"Basic", "Basic !!!!", "Basic YWxpY2U=", "Basic YWxpY2U6AA==", "Bearer YWxpY2U6", ""}) {
    EXPECT_EQ(client.send(postAs(header)).answer(), wrong) << header;
  }
  EXPECT_EQ(client.send(post("")).answer(), wrong);
  EXPECT_THAT(client.send("GET /page HTTP/1.1\r\n\r\n").answer(), StartsWith("HTTP/1.1 401 "));
  EXPECT_EQ(two->asked, 3);
  EXPECT_THAT(client.send(postAs(BOB)).answer(), StartsWith("HTTP/1.1 403 "));
  EXPECT_TRUE(logged(" alice - - 401 "));
  EXPECT_TRUE(logged(" bob - - 403 "));
}

TEST_F(HttpUsersTest, AWrongPasswordTakesItsTimeAndHoldsUpNobodyElse) {
  users = std::make_shared<TwoUsers>();
  options.wrongPassword = std::chrono::milliseconds(700);
  start();
  for (const char* refused : {WRONG, UNKNOWN}) {
    const auto began = std::chrono::steady_clock::now();
    RawClient wrong(server->port());
    wrong.send(postAs(refused));
    EXPECT_THAT(answerTo(postAs(ALICE)), HasSubstr("|alice|b"));
    char byte = 0;
    EXPECT_LT(::recv(wrong.socket(), &byte, 1, MSG_PEEK | MSG_DONTWAIT), 0);
    EXPECT_THAT(wrong.answer(), StartsWith("HTTP/1.1 401 "));
    EXPECT_GE(std::chrono::steady_clock::now() - began, options.wrongPassword);
  }
}

TEST_F(HttpUsersTest, AdministratorsAreThoseOfTheGroupOfRoot) {
  const AdministratorsOnly administrators(std::make_shared<OpenUsers>("root"));
  EXPECT_EQ(administrators.anonymous(), "root");
  EXPECT_TRUE(administrators.permits("root"));
  EXPECT_FALSE(administrators.permits("daemon"));
  EXPECT_FALSE(administrators.permits("no such user"));
}

TEST(PamUsersTest, PamDecidesAboutPasswordsAndAccounts) {
  const TemporaryDirectory directory;
  const std::string script = directory.write(
      "check", "#!/bin/sh\n[ \"$PAM_USER\" = alice ] || [ \"$PAM_USER\" = closed ] || exit 1\n"
               "[ \"$(tr -d '\\000')\" = 'pass:w\xC3\xB6rd' ]\n");
  const std::string account = directory.write("account", "#!/bin/sh\n[ \"$PAM_USER\" = alice ]\n");
  ::chmod(script.c_str(), 0700);
  ::chmod(account.c_str(), 0700);
  directory.write(
      "sample", "auth required pam_exec.so expose_authtok quiet " + script +
                    "\naccount required pam_exec.so quiet " + account + "\n");
  PamUsers users("sample", directory.path());
  EXPECT_FALSE(users.anonymous());
  EXPECT_TRUE(users.accepts("alice", "pass:w\xC3\xB6rd"));
  EXPECT_FALSE(users.accepts("alice", "wrong"));
  EXPECT_FALSE(users.accepts("alice", ""));
  EXPECT_FALSE(users.accepts("nobody", "pass:w\xC3\xB6rd"));
  EXPECT_FALSE(users.accepts("closed", "pass:w\xC3\xB6rd"))
      << "PAM accepts the password, but not the account";
  EXPECT_FALSE(PamUsers("missing", directory.path()).accepts("alice", "pass:w\xC3\xB6rd"));
}

}  // namespace
}  // namespace tvp::test
