// SPDX-License-Identifier: Apache-2.0
// A URL names a server and a user, and never carries a password.
#include "host/cimxml/client/ServerUrl.h"

#include <gmock/gmock.h>

namespace tvp::host::cimxml {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ServerUrl, ReadsWhatItsPartsSay) {
  struct Case {
    const char* text;
    const char* meaning;  ///< user, its authority, path; with "!" for loopback
  };
  for (const auto& [text, meaning] : {
           Case{"http://localhost", "- http://localhost:5988 /cimom !"},
           {"HTTPS://store.example", "- https://store.example:5989 /cimom"},
           {"https://anna@10.0.0.1:15989/", "anna https://10.0.0.1:15989 /cimom"},
           {"http://DOMAIN%5cjo%40x@[::1]:1/wbem", "DOMAIN\\jo@x http://[::1]:1 /wbem !"},
           {"http://a@b@127.9.9.9", "a@b http://127.9.9.9:5988 /cimom !"},
           {"http://127.example.org:65535", "- http://127.example.org:65535 /cimom"},
       }) {
    const ServerUrl url = ServerUrl::parse(text);
    EXPECT_EQ(
        (url.user.empty() ? "-" : url.user) + " " + url.text() + " " + url.path +
            (url.isLoopback() ? " !" : ""),
        meaning);
  }
}

TEST(ServerUrl, SaysWhatIsWrongAndNeverRepeatsAPassword) {
  for (const char* text :
       {"", "localhost", "ftp://h", "http://", "http://@h", "http://:5988", "http://h:", "http://h:0",
        "http://h:65536", "http://h:5988x", "http://::1", "http://[::1", "http://[::1]5988", "http://h?x",
        "http://h/p#x", "http://a b", "http://h\n", "http://u%4@h", "http://u%zz@h"}) {
    try {
      ServerUrl::parse(text);
      ADD_FAILURE() << text;
    } catch (const std::invalid_argument& error) {
      EXPECT_THAT(error.what(), HasSubstr("write http://USER@HOST:PORT")) << text;
    }
  }
  for (const char* text :
       {"http://anna:secret@h", "anna:secret@h", "http://anna%3Asecret@h", "ftp://anna:secret@h/?"}) {
    try {
      ServerUrl::parse(text);
      ADD_FAILURE() << text;
    } catch (const std::invalid_argument& error) {
      EXPECT_THAT(error.what(), Not(HasSubstr("secret")));
      EXPECT_THAT(error.what(), HasSubstr("has a password"));
    }
  }
}

}  // namespace
}  // namespace tvp::host::cimxml
