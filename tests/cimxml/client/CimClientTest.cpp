// SPDX-License-Identifier: Apache-2.0
// The client asks as the standard says, completes what servers leave out, and says what to do when a server
// does not answer.
#include "host/cimxml/client/CimClient.h"

#include "host/cimxml/server/HttpServer.h"
#include "host/schema/MofReader.h"
#include "support/Certificate.h"

#include <gmock/gmock.h>

#include <mutex>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* CLASSES = R"(
class T_Disk {
  [Key] string Name;
  uint64 Size;
  uint16 States[];
  uint32 Check([In] uint8 Depth, [Out] string Report);
};)";

std::string answer(const std::string& operation, const std::string& content) {
  return R"(<?xml version="1.0"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0">)"
         R"(<SIMPLERSP><IMETHODRESPONSE NAME=")" +
         operation + "\">" + content + "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
}

const std::string DISK_NAME = R"(<INSTANCENAME CLASSNAME="T_Disk"><KEYBINDING NAME="Name">)"
                              R"(<KEYVALUE VALUETYPE="string">d1</KEYVALUE></KEYBINDING></INSTANCENAME>)";
const std::string DISK = R"(<INSTANCE CLASSNAME="T_Disk"><PROPERTY NAME="Size" TYPE="uint64">)"
                         R"(<VALUE>7</VALUE></PROPERTY></INSTANCE>)";

/** Knows anna and her password, unless everybody may ask. */
class TestUsers : public Users {
public:
  std::optional<std::string> anonymous() const override { return everybody; }
  bool accepts(const std::string& user, const std::string& password) override {
    return user == "anna" && password == "right";
  }
  bool permits(const std::string& /*user*/) const override { return permitted; }

  std::optional<std::string> everybody = "nobody";
  bool permitted = true;
};

class CimClientTest : public testing::Test {
protected:
  void start() {
    options.port = 0;
    options.wrongPassword = std::chrono::milliseconds(1);
    server = std::make_unique<HttpServer>(options, users);
    server->onCall([this](const HttpCall& call) {
      calls.push_back(call);
      return reply;
    });
    server->start();
    client.url.host = "127.0.0.1";
    client.url.port = server->port();
    client.url.tls = !options.tlsKey.empty();
  }

  CimClient connect() const { return {client, schema}; }

  /** Why a request fails; empty when it does not. */
  std::string failure() const {
    try {
      CimClient asked(client, schema);
      static_cast<void>(asked.enumerateInstanceNames(CLASS));
      return "";
    } catch (const ServerError& error) {
      return error.what();
    }
  }

  const ObjectPath CLASS{"root/test", "T_Disk", {}, ""};
  const ObjectPath PATH{"root/test", "T_Disk", {{"Name", Value::string("d1")}}, ""};
  std::shared_ptr<const Schema> schema = MofReader::readText(CLASSES, "test");
  std::shared_ptr<TestUsers> users = std::make_shared<TestUsers>();
  HttpServerOptions options;
  CimClientOptions client;
  HttpReply reply;
  std::vector<HttpCall> calls;
  std::unique_ptr<HttpServer> server;
};

TEST_F(CimClientTest, AsksForEachOperationAsTheStandardSays) {
  start();
  CimClient asked = connect();
  Instance disk{PATH, {{"Size", Value::uint64(9)}}};
  const AssociationFilter filter{"T_Link", "T_Disk", "Left", "Right"};
  struct Case {
    const char* operation;
    std::function<Outcome()> ask;
    std::vector<const char*> expected;
  };
  const std::vector<Case> cases = {
      {"EnumerateInstances",
       [&] { return Outcome(asked.enumerateInstances(CLASS, {{"Size"}})); },
       {"<CLASSNAME NAME=\"T_Disk\"/>", "DeepInheritance", "LocalOnly", "PropertyList",
        "<VALUE>Size</VALUE>"}},
      {"EnumerateInstanceNames", [&] { return Outcome(asked.enumerateInstanceNames(CLASS)); }, {"ClassName"}},
      {"GetInstance",
       [&] { return Outcome(asked.getInstance(PATH)); },
       {"InstanceName", ">d1<", "LocalOnly"}},
      {"CreateInstance", [&] { return Outcome(asked.createInstance(CLASS, disk)); }, {"NewInstance", ">9<"}},
      {"ModifyInstance",
       [&] { return asked.modifyInstance(PATH, disk); },
       {"ModifiedInstance", "VALUE.NAMEDINSTANCE", "PropertyList", "<VALUE>Size</VALUE>"}},
      {"DeleteInstance", [&] { return asked.deleteInstance(PATH); }, {"InstanceName", ">d1<"}},
      {"ExecQuery", [&] { return Outcome(asked.execQuery(CLASS, "SELECT a<b", "WQL")); }, {"SELECT a&lt;b"}},
      {"Associators",
       [&] { return Outcome(asked.associators(PATH, filter)); },
       {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"}},
      {"AssociatorNames", [&] { return Outcome(asked.associatorNames(PATH, filter)); }, {"AssocClass"}},
      {"References", [&] { return Outcome(asked.references(PATH, filter)); }, {"ResultClass", "Role"}},
      {"ReferenceNames", [&] { return Outcome(asked.referenceNames(PATH, filter)); }, {"ResultClass"}},
  };
  for (const Case& each : cases) {
    reply.body = answer(each.operation, "");
    const Outcome outcome = each.ask();
    EXPECT_TRUE(outcome.ok()) << each.operation;
    const HttpCall& call = calls.back();
    EXPECT_EQ(call.operation, "MethodCall");
    EXPECT_EQ(call.method, each.operation);
    EXPECT_EQ(call.object, "root/test");
    EXPECT_THAT(call.contentType, HasSubstr("application/xml"));
    for (const char* expected : each.expected) {
      EXPECT_THAT(call.body, HasSubstr(expected)) << each.operation;
    }
    EXPECT_EQ(call.client, calls.front().client) << "one connection is kept for all requests";
  }
  EXPECT_THAT(calls[9].body, Not(HasSubstr("AssocClass"))) << "References knows no such parameter";
}

TEST_F(CimClientTest, ReadsAnswersAndCompletesWhatTheyLeaveOut) {
  start();
  CimClient asked = connect();
  reply.body = answer(
      "EnumerateInstances",
      "<IRETURNVALUE><VALUE.NAMEDINSTANCE>" + DISK_NAME + DISK + "</VALUE.NAMEDINSTANCE></IRETURNVALUE>");
  const Instance complete{
      PATH,
      {{"Name", Value::null(CMPI_string)},
       {"Size", Value::uint64(7)},
       {"States", Value::null(CMPI_uint16A)}}};
  const InstancesOutcome all = asked.enumerateInstances(CLASS);
  ASSERT_EQ(all.instances.size(), 1U);
  EXPECT_EQ(all.instances.front(), complete);
  EXPECT_EQ(all.instances.front().path, PATH);

  reply.body = answer("GetInstance", "<IRETURNVALUE>" + DISK + "</IRETURNVALUE>");
  const InstancesOutcome listed = asked.getInstance(PATH, {{"Size"}});
  ASSERT_EQ(listed.instances.size(), 1U);
  EXPECT_EQ(listed.instances.front().path, PATH);
  EXPECT_EQ(listed.instances.front().properties.size(), 1U) << "what was not asked for is not made up";

  reply.body = answer("EnumerateInstanceNames", "<IRETURNVALUE>" + DISK_NAME + "</IRETURNVALUE>");
  EXPECT_EQ(asked.enumerateInstanceNames(CLASS).paths, std::vector<ObjectPath>{PATH});

  reply.body =
      answer("DeleteInstance", R"(<ERROR CODE="2" DESCRIPTION="CIM_ERR_ACCESS_DENIED: not &lt;you&gt;"/>)");
  const Outcome refused = asked.deleteInstance(PATH);
  EXPECT_EQ(refused.rc, CMPI_RC_ERR_ACCESS_DENIED);
  EXPECT_EQ(refused.message, "not <you>");
}

TEST_F(CimClientTest, CallsMethodsWithTypedArgumentsAndAnEncodedTarget) {
  start();
  CimClient asked = connect();
  reply.body =
      R"(<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLERSP>)"
      R"(<METHODRESPONSE NAME="Check"><RETURNVALUE PARAMTYPE="uint32"><VALUE>3</VALUE></RETURNVALUE>)"
      R"(<PARAMVALUE NAME="Report"><VALUE>fine</VALUE></PARAMVALUE></METHODRESPONSE></SIMPLERSP>)"
      R"(</MESSAGE></CIM>)";
  ObjectPath odd = PATH;
  odd.keys.front().value = Value::string("d \xC3\xA4%\r\nX: y");
  const MethodOutcome outcome = asked.invokeMethod(odd, "Check", Arguments().add("Depth", Value::uint8(2)));
  EXPECT_TRUE(outcome.ok());
  EXPECT_EQ(outcome.returnValue, Value::uint32(3));
  ASSERT_NE(outcome.output.find("Report"), nullptr);
  EXPECT_EQ(*outcome.output.find("Report"), Value::string("fine"));
  EXPECT_EQ(calls.back().method, "Check");
  EXPECT_EQ(calls.back().object, "root/test:T_Disk.Name=\"d \xC3\xA4%\r\nX: y\"");
  EXPECT_THAT(calls.back().body, HasSubstr("PARAMTYPE=\"uint8\""));
}

TEST_F(CimClientTest, SaysWhatToDoWhenTheAnswerIsNone) {
  start();
  reply.body = answer("EnumerateInstanceNames", "");
  EXPECT_EQ(failure(), "");
  reply.status = 400;
  reply.headers["CIMError"] = "request-not-loosely-valid";
  EXPECT_THAT(failure(), HasSubstr("HTTP status 400, CIMError 'request-not-loosely-valid'"));
  reply.status = 200;
  for (const char* body : {"", "<html/>", "not XML", "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"/>"}) {
    reply.body = body;
    EXPECT_THAT(failure(), HasSubstr("does not answer as a WBEM server")) << body;
  }
  client.url.tls = true;
  EXPECT_THAT(failure(), HasSubstr("does not speak TLS there"));
  client.url.tls = false;
  server->stop();
  EXPECT_THAT(failure(), HasSubstr("cannot be reached; check that it runs"));
  EXPECT_THAT(failure(), HasSubstr("http://127.0.0.1:" + std::to_string(client.url.port)));
}

TEST_F(CimClientTest, SaysWhetherTheUserOrThePasswordIsMissing) {
  users->everybody.reset();
  start();
  reply.body = answer("EnumerateInstanceNames", "");
  EXPECT_THAT(failure(), HasSubstr("answers known users only; write the URL as http://USER@HOST:PORT"));
  client.url.user = "anna";
  client.password = "wrong";
  EXPECT_THAT(failure(), HasSubstr("refuses the user 'anna' or the password"));
  EXPECT_THAT(failure(), Not(HasSubstr("wrong")));
  client.password = "right";
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(calls.back().user, "anna");
  users->permitted = false;
  EXPECT_THAT(failure(), HasSubstr("does not let the user 'anna' in"));
}

TEST_F(CimClientTest, BelievesOnlyACertificateThatIsTrustedValidAndOfTheHost) {
  const test::TemporaryDirectory directory;
  const test::CertificateFiles own = test::makeCertificate(directory, "own", -test::AN_HOUR, test::AN_HOUR);
  const test::CertificateFiles late =
      test::makeCertificate(directory, "late", -2 * test::AN_HOUR, -test::AN_HOUR);
  options.tlsCertificate = own.certificate;
  options.tlsKey = own.key;
  start();
  reply.body = answer("EnumerateInstanceNames", "");
  EXPECT_THAT(failure(), HasSubstr("not trusted: self-signed certificate; name the file of the right ones"));
  client.certificates = directory.file("none.pem");
  EXPECT_THAT(failure(), HasSubstr("the certificates in '"));
  client.certificates = late.certificate;
  EXPECT_THAT(failure(), HasSubstr("not trusted"));
  client.certificates = own.certificate;
  EXPECT_EQ(failure(), "");
  client.url.host = "127.0.0.2";
  EXPECT_THAT(failure(), Not(IsEmpty()));
  client.url.host = "127.0.0.1";
  client.url.tls = false;
  EXPECT_THAT(failure(), Not(IsEmpty()));
  EXPECT_EQ(calls.size(), 1U) << "nothing was asked of a server that is not believed";

  options.tlsCertificate = late.certificate;
  options.tlsKey = late.key;
  start();
  client.certificates = late.certificate;
  EXPECT_THAT(failure(), HasSubstr("certificate has expired"));
}

/** A server that sends the same few bytes over and over, until it is destroyed or the client goes away. */
class EndlessServer {
public:
  EndlessServer() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* any = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(::bind(m_socket, any, size), 0);
    EXPECT_EQ(::listen(m_socket, 1), 0);
    EXPECT_EQ(::getsockname(m_socket, any, &size), 0);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] {
      const int client = ::accept(m_socket, nullptr, nullptr);
      const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
      ::send(client, head.data(), head.size(), MSG_NOSIGNAL);
      while (::send(client, "1\r\nx\r\n", 6, MSG_NOSIGNAL) > 0) {
        ::usleep(1000);
      }
      ::close(client);
    });
  }
  ~EndlessServer() {
    m_thread.join();
    ::close(m_socket);
  }
  EndlessServer(const EndlessServer&) = delete;
  EndlessServer& operator=(const EndlessServer&) = delete;

  std::uint16_t port() const { return m_port; }

private:
  const int m_socket;
  std::uint16_t m_port = 0;
  std::thread m_thread;
};

TEST_F(CimClientTest, GivesUpOnAnAnswerWithoutAnEnd) {
  const EndlessServer endless;
  client.url.host = "127.0.0.1";
  client.url.port = endless.port();
  client.timeout = std::chrono::seconds(1);
  EXPECT_THAT(failure(), HasSubstr("answers without an end"));
}

}  // namespace
}  // namespace tvp::host::cimxml
