// SPDX-License-Identifier: Apache-2.0
// What is not a proper request gets the status that the standard prescribes, and the server goes on.
#include "ServeFixture.h"
#include "support/RawClient.h"

namespace tvp::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string NAMESPACE =
    R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="kvs"/><NAMESPACE NAME="tvp"/>)"
    R"(<NAMESPACE NAME="smi_15"/></LOCALNAMESPACEPATH>)";

/** A message with an operation. @param nameSpace its element */
std::string message(
    const std::string& operation, const std::string& parameters, const std::string& nameSpace = NAMESPACE) {
  return R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="7" )"
         R"(PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME=")" +
         operation + R"(">)" + nameSpace + parameters + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

/** A message that calls a method of the service with an argument. */
std::string methodMessage(const std::string& method, const std::string& argument) {
  return R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="7" )"
         R"(PROTOCOLVERSION="1.0"><SIMPLEREQ><METHODCALL NAME=")" +
         method + R"("><LOCALCLASSPATH>)" + NAMESPACE +
         R"(<CLASSNAME NAME="TVP_TierService"/></LOCALCLASSPATH>)" + argument +
         "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

const std::string POOLS =
    R"(<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="TVP_VirtualPool"/></IPARAMVALUE>)";

class BadInput : public ServeTest {
protected:
  std::string send(const std::string& headers, const std::string& body) const {
    return RawClient(port())
        .send(
            "POST /cimom HTTP/1.1\r\nContent-Type: application/xml\r\n" + headers +
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body)
        .answer();
  }
  std::string operation(
      const std::string& name, const std::string& body,
      const std::string& object = "root/kvs/tvp/smi_15") const {
    return send("CIMOperation: MethodCall\r\nCIMMethod: " + name + "\r\nCIMObject: " + object + "\r\n", body);
  }
  bool answersPools() const {
    return operation("EnumerateInstances", message("EnumerateInstances", POOLS)).rfind("HTTP/1.1 200 ", 0) ==
           0;
  }
};

TEST_F(BadInput, WhatIsNotCimXmlIsRefusedWithItsError) {
  serve();
  const std::string good = message("EnumerateInstances", POOLS);
  const std::string request =
      good.substr(good.find("<SIMPLEREQ>"), good.find("</MESSAGE>") - good.find("<SIMPLEREQ>"));
  std::string twice = good;
  twice.replace(twice.find(request), request.size(), "<MULTIREQ>" + request + request + "</MULTIREQ>");
  std::string nested;
  for (int depth = 0; depth < 100000; ++depth) {
    nested += "<VALUE.ARRAY>";
  }
  const std::vector<std::pair<std::string, std::string>> bodies = {
      {"request-not-well-formed", ""},
      {"request-not-well-formed", "no XML"},
      {"request-not-well-formed", good.substr(0, good.size() / 2)},
      {"request-not-well-formed", "<!DOCTYPE CIM [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>" + good},
      {"request-not-well-formed", message("EnumerateInstances", "<IPARAMVALUE NAME=\"&b;\"/>")},
      {"request-not-well-formed", message("EnumerateInstances", "<IPARAMVALUE NAME=\"a\xFF\"/>")},
      {"request-not-well-formed", message("EnumerateInstances", "<IPARAMVALUE NAME=\"&#1;\"/>")},
      {"request-not-well-formed", message("EnumerateInstances", nested)},
      {"request-not-valid", "<html/>"},
      {"multiple-requests-unsupported", twice},
  };
  for (const auto& [error, body] : bodies) {
    const std::string answer = operation("EnumerateInstances", body);
    EXPECT_THAT(answer, StartsWith(error.rfind("multiple", 0) == 0 ? "HTTP/1.1 501 " : "HTTP/1.1 400 "));
    EXPECT_THAT(answer, HasSubstr("CIMError: " + error + "\r\n")) << body.substr(0, 300);
  }
  const std::string call = "CIMOperation: MethodCall\r\n";
  const std::string object = "CIMObject: root/kvs/tvp/smi_15\r\n";
  const std::vector<std::pair<std::string, std::string>> headers = {
      {"header-mismatch", "CIMMethod: EnumerateInstances\r\n" + object},
      {"header-mismatch", call + "CIMMethod: DeleteInstance\r\n" + object},
      {"header-mismatch", call + "CIMMethod: EnumerateInstances\r\nCIMObject: root/interop\r\n"},
      {"unsupported-operation", "CIMOperation: Something\r\nCIMMethod: EnumerateInstances\r\n" + object},
      {"unsupported-protocol-version",
       call + "CIMProtocolVersion: 2.0\r\nCIMMethod: EnumerateInstances\r\n" + object},
  };
  for (const auto& [error, lines] : headers) {
    EXPECT_THAT(send(lines, good), HasSubstr("CIMError: " + error + "\r\n")) << lines;
  }
  EXPECT_TRUE(answersPools());
  EXPECT_THAT(stop(), HasSubstr(" EnumerateInstances TVP_VirtualPool OK "));
}

TEST_F(BadInput, WhatCannotBeDoneIsAnsweredWithAStatus) {
  serve();
  const std::string nowhere = R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="nowhere"/></LOCALNAMESPACEPATH>)";
  EXPECT_THAT(operation("Levitate", message("Levitate", "")), HasSubstr("CODE=\"7\""));
  EXPECT_THAT(
      operation("EnumerateInstances", message("EnumerateInstances", POOLS, nowhere), "nowhere"),
      HasSubstr("CODE=\"3\""));
  EXPECT_THAT(operation("EnumerateInstances", message("EnumerateInstances", "")), HasSubstr("CODE=\"4\""));
  const auto argument = [](const std::string& type, const std::string& value) {
    return R"(<PARAMVALUE NAME="VirtualPoolId" PARAMTYPE=")" + type + "\">" + value + "</PARAMVALUE>";
  };
  const auto value = [](const std::string& text) { return "<VALUE>" + text + "</VALUE>"; };
  for (const std::string& wrong :
       {argument("uint32", value("-1")), argument("uint32", value("99999999999999999999")),
        argument("uint32", value("many")),
        argument("uint32", "<VALUE.ARRAY>" + value("1") + "</VALUE.ARRAY>"), argument("uint32", ""),
        argument("string", value("1")), argument("sint64", value("-9223372036854775808")),
        argument("string", value("&lt;INSTANCE CLASSNAME=&quot;TVP_VirtualPool&quot;/&gt;")),
        argument("teapot", value("1")), std::string(),
        argument("uint32", value("1")) + argument("uint32", value("1"))}) {
    const std::string answer = send(
        "CIMOperation: MethodCall\r\nCIMMethod: DeleteVirtualPool\r\n"
        "CIMObject: root/kvs/tvp/smi_15:TVP_TierService\r\n",
        methodMessage("DeleteVirtualPool", wrong));
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 ")) << wrong;
    EXPECT_THAT(answer, HasSubstr("<ERROR CODE=")) << wrong;
  }
  EXPECT_TRUE(answersPools());
  stop();
}

}  // namespace
}  // namespace tvp::test
