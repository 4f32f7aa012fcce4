// SPDX-License-Identifier: Apache-2.0
// Requests of every kind, good and bad, each of which has its status and none of which holds the server up.
#include "HttpFixture.h"

#include <future>

namespace tvp::test {
namespace {

using std::chrono::seconds;

class HttpServerTest : public HttpTest {};

TEST_F(HttpServerTest, CallsReachTheHandlerAndOneConnectionCarriesMany) {
  start();
  RawClient client(server->port());
  client.send(post("<a/>", "CIMOperation: MethodCall\r\nCIMMethod: GetClass\r\nCIMObject: root%2Fcimv2\r\n"));
  const std::string first = client.answer();
  EXPECT_THAT(first, StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(first, HasSubstr("CIMOperation: MethodResponse\r\n"));
  EXPECT_THAT(first, HasSubstr("Content-Type: application/xml; charset=utf-8\r\n"));
  EXPECT_THAT(first, HasSubstr("MethodCall||GetClass|root/cimv2|application/xml|carol|<a/>"));
  // Two at once, the second in pieces as its client makes it up, then one that waits to be asked for its
  // body.
  client.send(
      post("one") + "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n2\r\ntw\r\n1\r\no\r\n0\r\n\r\n");
  EXPECT_THAT(client.answer(), testing::EndsWith("|one"));
  EXPECT_THAT(client.answer(), testing::EndsWith("|two"));
  client.send("\r\nPOST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 0005\r\n\r\n");
  EXPECT_EQ(client.interim(), "HTTP/1.1 100 Continue\r\n\r\n");
  EXPECT_THAT(client.send("three").answer(), HasSubstr("|three"));
  client.send("POST / HTTP/1.1\r\nCIMExport: MethodRequest\r\nCIMExportMethod: ExportIndication\r\n"
              "Connection: close\r\nContent-Length: 0\r\n\r\n");
  EXPECT_THAT(client.rest(), HasSubstr("|MethodRequest|ExportIndication|"));
  EXPECT_TRUE(logged(" carol GetClass TST_Class OK "));
  EXPECT_THAT(answerTo("GET /page?x HTTP/1.0\r\n\r\n"), HasSubstr("a page for carol"));
  EXPECT_THAT(answerTo("GET /other HTTP/1.1\r\n\r\n"), StartsWith("HTTP/1.1 404 "));
}

TEST_F(HttpServerTest, MalformedRequestsGetTheirStatus) {
  const std::string line = "POST /cimom HTTP/1.1\r\n";
  const std::vector<std::pair<int, std::string>> cases = {
      {400, "no request at all\r\n\r\n"},
      {400, "\x16\x03\x01\x02"},
      {400, "POST /cimom\r\n\r\n"},
      {400, "POST /ci\x01mom HTTP/1.1\r\nContent-Length: 0\r\n\r\n"},
      {505, "POST /cimom HTTP/2.0\r\n\r\n"},
      {501, "M-POST /cimom HTTP/1.1\r\nContent-Length: 0\r\n\r\n"},
      {405, "DELETE /cimom HTTP/1.1\r\n\r\n"},
      {411, line + "\r\n"},
      {400, line + "Content-Length: 1\r\nContent-Length: 1\r\n\r\na"},
      {400, line + "Content-Length: -1\r\n\r\n"},
      {400, line + "Content-Length: 1e3\r\n\r\n"},
      {413, line + "Content-Length: 1000000000\r\n\r\n"},
      {413, line + "Content-Length: 99999999999999999999999\r\n\r\n"},
      {400, line + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n"},
      {501, line + "Transfer-Encoding: gzip\r\n\r\n"},
      {400, line + "Transfer-Encoding: chunked\r\n\r\nzz\r\n"},
      {413, line + "Transfer-Encoding: chunked\r\n\r\n800\r\n" + std::string(2048, 'a') + "\r\n"},
      {415, line + "Content-Encoding: gzip\r\nContent-Length: 1\r\n\r\na"},
      {415, line + "Content-Type: multipart/form-data; boundary=a\r\nContent-Length: 1\r\n\r\na"},
      {416, line + "Range: bytes=0-1\r\nContent-Length: 1\r\n\r\na"},
      {417, line + "Expect: more\r\nContent-Length: 1\r\n\r\na"},
      {403, line + "Origin: http://page.example\r\nContent-Length: 1\r\n\r\na"},
      {400, "GET /page HTTP/1.1\r\nContent-Length: 3\r\n\r\nPOS"},
      {400, line + "Content-Length: 0\r\nFolded: a\r\n b\r\n\r\n"},
      {400, line + "Content-Length : 0\r\n\r\n"},
      {400, line + "Content-Length: 0\r\nZero: a\rb\r\n\r\n"},
      {400, line + "CIMMethod: GetClass\r\nCIMMethod: DeleteClass\r\nContent-Length: 0\r\n\r\n"},
      {414, "POST /" + std::string(100000, 'a') + " HTTP/1.1\r\nContent-Length: 0\r\n\r\n"},
      {431, line + "Long: " + std::string(100000, 'a') + "\r\nContent-Length: 0\r\n\r\n"},
  };
  options.limits.requestBytes = 1024;
  handler = [](const HttpCall& /*call*/) -> HttpReply {
    ADD_FAILURE() << "the handler was called";
    return {};
  };
  start();
  for (const auto& [status, request] : cases) {
    RawClient client(server->port());
    client.send(request).endSending();
    EXPECT_THAT(client.rest(), StartsWith("HTTP/1.1 " + std::to_string(status) + " "))
        << request.substr(0, 200);
  }
  // A body that ends before its length, or before its head does.
  for (const char* request : {"POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\nshort", "POST / HTT"}) {
    RawClient client(server->port());
    client.send(request).endSending();
    EXPECT_THAT(client.rest(), StartsWith("HTTP/1.1 400 ")) << request;
  }
  // A client that sends on and on gets its answer all the same.
  RawClient endless(server->port());
  endless.send("POST / HTTP/1.1\r\nContent-Length: 4000000\r\n\r\n" + std::string(4000000, 'a'));
  EXPECT_THAT(endless.rest(), StartsWith("HTTP/1.1 413 "));
}

TEST_F(HttpServerTest, SlowClientsAreNotWaitedForWithoutEnd) {
  options.limits.request = seconds(1);
  options.limits.idle = seconds(1);
  options.limits.answer = seconds(1);
  std::atomic<bool> large{false};
  handler = [&](const HttpCall& call) {
    HttpReply reply = echo(call);
    reply.body.append(large ? 64000000 : 0, 'a');
    return reply;
  };
  start();
  RawClient silent(server->port());
  RawClient headless(server->port());
  RawClient bodiless(server->port());
  headless.send("POST / HTTP/1.1\r\n");
  bodiless.send("POST / HTTP/1.1\r\nContent-Length: 5\r\n\r\nab");
  EXPECT_THAT(headless.rest(), StartsWith("HTTP/1.1 408 "));
  EXPECT_THAT(bodiless.rest(), StartsWith("HTTP/1.1 408 "));
  EXPECT_EQ(silent.rest(), "");
  large = true;
  RawClient full(server->port());  // does not read its answer
  full.send(post("full", "CIMMethod: Full\r\n"));
  {
    RawClient gone(server->port());
    EXPECT_TRUE(gone.send(post("gone", "CIMMethod: Gone\r\n")).receive(10));
  }
  EXPECT_TRUE(logged("Full TST_Class lost"));
  EXPECT_TRUE(logged("Gone TST_Class lost"));
  large = false;
  EXPECT_THAT(answerTo(post("next")), HasSubstr("|next"));
}

TEST_F(HttpServerTest, ConnectionsBeyondTheLimitAreRefusedAtOnceAndTheOthersGoOn) {
  options.limits.connections = 2;
  start();
  RawClient first(server->port());
  EXPECT_THAT(first.send(post("1")).answer(), HasSubstr("|1"));
  {
    RawClient second(server->port());
    EXPECT_THAT(second.send(post("2")).answer(), HasSubstr("|2"));
    for (int number = 0; number < 10000; ++number) {
      ASSERT_THAT(RawClient(server->port()).rest(), StartsWith("HTTP/1.1 503 ")) << number;
    }
    EXPECT_THAT(first.send(post("3")).answer(), HasSubstr("|3"));
  }
  EXPECT_TRUE(waitFor([&] { return answerTo(post("4")).find("|4") != std::string::npos; }));
}

TEST_F(HttpServerTest, StoppingFinishesWhatRunsAndNothingElse) {
  std::promise<void> began;
  std::promise<void> mayEnd;
  handler = [&](const HttpCall& call) {
    began.set_value();
    mayEnd.get_future().wait();
    return echo(call);
  };
  start();
  const std::uint16_t port = server->port();
  RawClient idle(port);
  RawClient unfinished(port);
  unfinished.send("POST / HTTP/1.1\r\n");
  RawClient running(port);
  running.send(post("work"));
  began.get_future().wait();
  std::thread stopping([this] { server->stop(); });
  EXPECT_EQ(idle.rest(), "");
  EXPECT_THAT(unfinished.rest(), testing::Not(HasSubstr("200")));
  EXPECT_TRUE(waitFor([&] { return RawClient(port).rest().empty(); }));
  mayEnd.set_value();
  EXPECT_THAT(running.rest(), HasSubstr("|work"));
  stopping.join();
  EXPECT_FALSE(RawClient(port).connected());
}

TEST_F(HttpServerTest, StartsOnlyWhereItIsSafe) {
  start();
  const auto refusal = [this](const std::string& address, std::uint16_t port, const char* certificate) {
    HttpServerOptions other = options;
    other.address = address;
    other.port = port;
    other.tlsCertificate = certificate;
    try {
      HttpServer(other, users).start();
      return std::string("started");
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
  };
  EXPECT_THAT(refusal("0.0.0.0", 0, ""), HasSubstr("TLS"));
  EXPECT_THAT(refusal("::", 0, ""), HasSubstr("other machines can reach [::]:0"));
  EXPECT_THAT(refusal("localhost", 0, ""), HasSubstr("'localhost' is not an address"));
  EXPECT_THAT(refusal("127.0.0.1", server->port(), ""), HasSubstr("another server has that port"));
  EXPECT_THAT(refusal("127.0.0.1", 0, "/missing"), HasSubstr("one of them is missing"));
  EXPECT_EQ(refusal("::1", 0, ""), "started");
}

}  // namespace
}  // namespace tvp::test
