// SPDX-License-Identifier: Apache-2.0
// The listener takes exports and nothing else, and tells the sender when an indication was not taken.
#include "host/cimxml/client/IndicationListener.h"

#include "host/cimxml/message/MessageWriter.h"

#include <gmock/gmock.h>
#include <httplib.h>

namespace tvp::host::cimxml {
namespace {

using testing::HasSubstr;
using testing::Not;

class IndicationListenerTest : public testing::Test {
protected:
  httplib::Result post(const std::string& body) {
    return m_sender.Post(
        "/any/path", {{"CIMExport", "MethodRequest"}}, body, "application/xml; charset=\"utf-8\"");
  }
  static std::string exported(const std::string& text) {
    return exportRequest("17", {{"", "T_Alert", {}, ""}, {{"Text", Value::string(text)}}});
  }

  std::vector<Instance> received;
  IndicationListener m_listener{"127.0.0.1", 0, [this](const Instance& indication) {
                                  if (*indication.property("Text") == Value::string("no")) {
                                    throw std::runtime_error("not <taken>");
                                  }
                                  received.push_back(indication);
                                }};
  httplib::Client m_sender{"127.0.0.1", m_listener.port()};
};

TEST_F(IndicationListenerTest, PassesAnExportOnAndConfirmsIt) {
  const httplib::Result result = post(exported("a <b> \xC3\xA4"));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->status, 200);
  EXPECT_EQ(result->get_header_value("CIMExport"), "MethodResponse");
  EXPECT_THAT(result->body, HasSubstr("ID=\"17\""));
  EXPECT_THAT(result->body, Not(HasSubstr("ERROR")));
  ASSERT_EQ(received.size(), 1U);
  EXPECT_EQ(received.front().path.className, "T_Alert");
  EXPECT_EQ(*received.front().property("Text"), Value::string("a <b> \xC3\xA4"));
}

TEST_F(IndicationListenerTest, RefusesWhatItCannotTake) {
  httplib::Result result = post(exported("no"));
  ASSERT_TRUE(result);
  EXPECT_THAT(result->body, HasSubstr("<ERROR CODE=\"1\""));
  EXPECT_THAT(result->body, HasSubstr("not &lt;taken&gt;"));
  struct Case {
    std::string body;
    int status;
    const char* error;
  };
  for (const auto& [body, status, error] : {
           Case{"no XML", 400, "request-not-well-formed"},
           {intrinsicRequest("1", "GetClass", "root/test", {}), 501, "unsupported-operation"},
           {std::string((1U << 20U) + 1, ' '), 413, ""},
       }) {
    result = post(body);
    ASSERT_TRUE(result) << error;
    EXPECT_EQ(result->status, status) << error;
    EXPECT_EQ(result->get_header_value("CIMError"), error);
  }
  std::size_t sent = 0;
  result = m_sender.Post(
      "/",
      [&](std::size_t /*offset*/, httplib::DataSink& sink) {
        const std::string part(65536, ' ');
        sent += part.size();
        sink.write(part.data(), part.size());
        if (sent > 4U << 20U) {
          sink.done();
        }
        return true;
      },
      "application/xml");
  EXPECT_TRUE(!result || result->status == 413) << "chunks do not say their sum beforehand";
  EXPECT_TRUE(received.empty());
}

TEST(IndicationListener, SaysWhyItCannotListen) {
  const IndicationListener first("127.0.0.1", 0, [](const Instance&) {});
  for (const auto& [address, port] :
       {std::pair("127.0.0.1", first.port()), {"192.0.2.1", std::uint16_t{0}}, {"nowhere.invalid", {}}}) {
    try {
      const IndicationListener second(address, port, [](const Instance&) {});
      ADD_FAILURE() << address;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), HasSubstr("give an address of this machine and a port that is free"));
    }
  }
  EXPECT_EQ(addressTowards("127.0.0.1"), "127.0.0.1");
  EXPECT_THROW(addressTowards("nowhere.invalid"), std::runtime_error);
}

}  // namespace
}  // namespace tvp::host::cimxml
