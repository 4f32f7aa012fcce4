// SPDX-License-Identifier: Apache-2.0
#include "tests/cimxml/SampleServer.h"
#include "tests/cimxml/indications/TestListener.h"

#include <atomic>

namespace tvp::host::cimxml::testing {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using tvp::test::waitFor;

using Delivery = SampleServer;

TEST_F(Delivery, AnIndicationIsExportedOnceToEverySubscriptionThatWantsIt) {
  TestListener first;
  TestListener second;
  const auto held = subscriptions(options());
  subscribe(*held, "all", first.url(), "SELECT * FROM CIM_Indication");
  subscribe(*held, "some", second.url(), "SELECT Text FROM Sample_Alarm WHERE Text <> 'quiet'");
  held->deliver("root/PG_InterOp", alarm("quiet"));
  held->deliver("root/PG_InterOp", alarm("a <loud> & b"));

  ASSERT_TRUE(first.waitForExports(2));
  ASSERT_TRUE(second.waitForExports(1));
  held->stop();
  EXPECT_THAT(first.exports(), SizeIs(2));
  ASSERT_THAT(second.exports(), SizeIs(1));
  const httplib::Request request = second.exports().front();
  EXPECT_EQ(request.path, "/sink");
  EXPECT_EQ(request.get_header_value("Content-Type"), "application/xml; charset=utf-8");
  EXPECT_EQ(request.get_header_value("CIMExport"), "MethodRequest");
  EXPECT_EQ(request.get_header_value("CIMExportMethod"), "ExportIndication");
  EXPECT_THAT(request.body, HasSubstr("<EXPMETHODCALL NAME=\"ExportIndication\">"));
  EXPECT_THAT(request.body, HasSubstr("<INSTANCE CLASSNAME=\"Sample_Alarm\""));
  EXPECT_THAT(request.body, HasSubstr("a &lt;loud&gt; &amp; b"));
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(Delivery, AListenerThatFailsGetsItAgainInOrderAndThenNoMore) {
  std::atomic<int> failures{3};
  TestListener listener([&](const httplib::Request&, httplib::Response& response) {
    response.status = failures-- > 0 ? 503 : 200;
  });
  const auto held = subscriptions(options());
  subscribe(*held, "retried", listener.url());
  held->deliver("root/interop", alarm("one"));
  held->deliver("root/interop", alarm("two"));
  ASSERT_TRUE(listener.waitForExports(5));
  held->stop();
  std::string order;
  for (const httplib::Request& each : listener.exports()) {
    order += each.body.find("<VALUE>one") != std::string::npos ? '1' : '2';
  }
  EXPECT_EQ(order, "11112");
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(Delivery, WhatAnAbsentListenerDoesNotTakeInTimeIsDroppedWithALine) {
  std::string url;
  {
    const TestListener gone;
    url = gone.url();
  }
  Subscriptions::Options impatient = options();
  impatient.delivery.patience = milliseconds(30);
  const auto held = subscriptions(std::move(impatient));
  subscribe(*held, "away", url);
  held->deliver("root/interop", alarm("one"));
  ASSERT_TRUE(waitFor([this] { return !lines().empty(); }));
  EXPECT_THAT(lines(), ElementsAre("an indication for " + url + " was dropped: it cannot be connected to"));
}

TEST_F(Delivery, ASlowListenerHoldsUpNeitherOthersNorTheServersEndAndItsQueueIsBounded) {
  Gate gate;
  TestListener slow([&](const httplib::Request&, httplib::Response&) { gate.pass(); });
  TestListener quick;
  Subscriptions::Options bounded = options();
  bounded.delivery.waiting = 2;
  const auto held = subscriptions(std::move(bounded));
  subscribe(*held, "slow", slow.url());
  subscribe(*held, "quick", quick.url());
  held->deliver("root/interop", alarm("0"));
  ASSERT_TRUE(slow.waitForExports(1));
  for (int i = 1; i <= 4; ++i) {
    held->deliver("root/interop", alarm(std::to_string(i)));
    ASSERT_TRUE(quick.waitForExports(static_cast<std::size_t>(i) + 1));
  }
  EXPECT_THAT(lines(), SizeIs(2));
  EXPECT_THAT(lines(), ::testing::Each(HasSubstr(slow.url() + " was dropped: 2 newer ones are waiting")));

  const auto before = std::chrono::steady_clock::now();
  held->stop();  // the limit of an attempt is 15 seconds
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
  gate.open();
}

TEST_F(Delivery, AnAttemptHasALimitHoweverSlowlyAListenerAnswers) {
  std::atomic<bool> ended{false};
  TestListener trickling([&](const httplib::Request&, httplib::Response& response) {
    response.set_chunked_content_provider("text/plain", [&](std::size_t, httplib::DataSink& sink) {
      std::this_thread::sleep_for(milliseconds(5));  // never silent for as long as the limit
      ended = ended || !sink.write("x", 1);
      return !ended;
    });
  });
  ExportAttempt attempt;
  attempt.limit = milliseconds(200);
  const std::string failure =
      postExport(Destination::parse(trickling.url()), "<CIM/>", attempt, [] { return false; });
  EXPECT_EQ(failure, "");  // it has answered 200, so it has the indication; what it adds is not waited for
  EXPECT_TRUE(waitFor([&] { return ended.load(); }));
}

TEST_F(Delivery, ACertificateHasToBeTrusted) {
  const tvp::test::TemporaryDirectory directory;
  const tvp::test::CertificateFiles files = tvp::test::makeCertificate(directory, "listener", 0, 3600);
  TestListener listener(files);
  const Destination destination = Destination::parse(listener.url());
  ExportAttempt attempt;
  EXPECT_THAT(postExport(destination, "<CIM/>", attempt, [] { return false; }), HasSubstr("is not trusted"));
  attempt.certificates = files.certificate;
  EXPECT_EQ(postExport(destination, "<CIM/>", attempt, [] { return false; }), "");
  EXPECT_THAT(listener.exports(), SizeIs(1));
}

TEST_F(Delivery, SubscriptionsComeAndGoWhileIndicationsArrive) {
  TestListener listener;
  const auto held = subscriptions(options());
  std::atomic<bool> ended{false};
  std::thread provider([&] {
    while (!ended) {
      held->deliver("root/interop", alarm("again"));
    }
  });
  const std::vector<std::string> names = {"one", "two"};
  std::vector<std::thread> clients;
  clients.reserve(names.size());
  for (const std::string& name : names) {
    clients.emplace_back([&, name] {
      for (int round = 0; round < 10; ++round) {
        const ObjectPath path = subscribe(*held, name, listener.url());
        EXPECT_FALSE(held->instances("CIM_IndicationSubscription").empty());
        held->remove(path, "ann");
        held->remove(path.key("Filter")->asReference(), "ann");
        held->remove(path.key("Handler")->asReference(), "ann");
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  held->stop();
  ended = true;
  provider.join();
  EXPECT_THAT(held->instances("CIM_ManagedElement"), ElementsAre());
}

TEST_F(Delivery, ASubscriptionThatIsDisabledOrDeletedGetsNothing) {
  TestListener listener;
  const auto held = subscriptions(options());
  const ObjectPath path = subscribe(*held, "on and off", listener.url());
  const auto set = [&](std::uint16_t state) {
    Instance change = held->get(path);
    setValue(change.properties, "SubscriptionState", Value::uint16(state));
    held->modify(change, std::nullopt, "ann");
  };
  set(4);
  held->deliver("root/interop", alarm("while disabled"));
  set(2);
  held->deliver("root/interop", alarm("while enabled"));
  ASSERT_TRUE(listener.waitForExports(1));
  held->remove(path, "ann");
  held->deliver("root/interop", alarm("after the end"));
  held->stop();
  ASSERT_THAT(listener.exports(), SizeIs(1));
  EXPECT_THAT(listener.exports().front().body, HasSubstr("while enabled"));
}

}  // namespace
}  // namespace tvp::host::cimxml::testing
