// SPDX-License-Identifier: Apache-2.0
#include "tests/cimxml/service/ServiceFixture.h"

namespace tvp::host::cimxml::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string DISK_D1 = parameter("InstanceName", instanceName("Sample_Disk", "Name", "d1"));

TEST_F(ServiceTest, AnEnumerationIncludesSubclassesInTheNameOfTheUser) {
  const std::string base = classParameter("ClassName", "sample_base");
  const HttpReply all = ask("EnumerateInstances", "root/sample", base);
  EXPECT_EQ(all.status, 200);
  EXPECT_EQ(all.headers.at("CIMOperation"), "MethodResponse");
  EXPECT_EQ(all.operation + " " + all.className, "EnumerateInstances Sample_Base");
  EXPECT_EQ(m_principal, "ann");
  EXPECT_THAT(all.body, HasSubstr("ID=\"42\""));
  EXPECT_EQ(countOf(all.body, "<VALUE.NAMEDINSTANCE>"), 3U);
  EXPECT_EQ(countOf(all.body, "<INSTANCENAME CLASSNAME=\"Sample_Disk\">"), 2U);
  EXPECT_EQ(countOf(all.body, "NAME=\"Count\""), 2U);
  EXPECT_THAT(all.body, Not(HasSubstr("CLASSORIGIN")));

  const HttpReply flat =
      ask("EnumerateInstances", "root/sample", base + textParameter("DeepInheritance", "FALSE"));
  EXPECT_EQ(countOf(flat.body, "NAME=\"Flag\""), 3U);
  EXPECT_THAT(flat.body, Not(HasSubstr("NAME=\"Count\"")));

  const HttpReply few = ask(
      "EnumerateInstances", "root/sample",
      base + textParameter("IncludeClassOrigin", "true") +
          parameter("PropertyList", "<VALUE.ARRAY><VALUE>count</VALUE><VALUE>Nothing</VALUE></VALUE.ARRAY>"));
  EXPECT_EQ(countOf(few.body, "<PROPERTY NAME=\"Count\""), 2U);
  EXPECT_THAT(
      few.body, AllOf(HasSubstr("CLASSORIGIN=\"Sample_Disk\""), Not(HasSubstr("PROPERTY NAME=\"Name\""))));

  EXPECT_EQ(countOf(ask("EnumerateInstanceNames", "root/sample", base).body, "<INSTANCENAME "), 2U);
}

TEST_F(ServiceTest, OperationsOnOneInstanceReachTheProvider) {
  const HttpReply found = ask("GetInstance", "root/sample", DISK_D1);
  EXPECT_THAT(found.body, HasSubstr("<IRETURNVALUE>"));
  EXPECT_THAT(found.body, HasSubstr("<INSTANCE CLASSNAME=\"Sample_Disk\""));
  EXPECT_THAT(
      ask("GetProperty", "root/sample", DISK_D1 + textParameter("PropertyName", "Count")).body,
      HasSubstr("<VALUE>1</VALUE>"));

  // The provider returns no path, and the client gets that of the keys.
  const std::string disk = "<INSTANCE CLASSNAME=\"Sample_Disk\">" + property("Name", "new") + "</INSTANCE>";
  EXPECT_THAT(
      ask("CreateInstance", "root/sample", parameter("NewInstance", disk)).body,
      AllOf(HasSubstr("<INSTANCENAME CLASSNAME=\"Sample_Disk\">"), HasSubstr(">new<")));

  std::string modified;
  sampleBehaviour().modify = [&](const CMPIObjectPath*, const CMPIInstance*, const char** names) {
    for (; *names != nullptr; ++names) {
      modified += std::string(*names) + " ";
    }
    return ok();
  };
  const std::string named = parameter(
      "ModifiedInstance",
      "<VALUE.NAMEDINSTANCE>" + instanceName("Sample_Disk", "Name", "d1") + disk + "</VALUE.NAMEDINSTANCE>");
  EXPECT_EQ(ask("ModifyInstance", "root/sample", named).code, CMPI_RC_OK);
  EXPECT_EQ(modified, "Name ");
  EXPECT_EQ(ask("DeleteInstance", "root/sample", DISK_D1).code, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(ServiceTest, AQueryThatTheProviderDoesNotSupportIsAnsweredFromAnEnumeration) {
  const auto query = [this](const char* text) {
    return ask(
        "ExecQuery", "root/sample", textParameter("QueryLanguage", "WQL") + textParameter("Query", text));
  };
  const HttpReply selected = query("SELECT Name FROM Sample_Disk WHERE Count = 2");
  EXPECT_EQ(countOf(selected.body, "<VALUE.OBJECTWITHPATH>"), 1U);
  EXPECT_THAT(selected.body, AllOf(HasSubstr(">d2<"), Not(HasSubstr("NAME=\"Count\""))));
  EXPECT_EQ(query("SELECT * FROM Sample_Disk WHERE").code, CMPI_RC_ERR_INVALID_QUERY);
}

TEST_F(ServiceTest, AMethodGetsItsArgumentsAsTheyWereSent) {
  std::string seen;
  sampleBehaviour().invoke = [&](auto, const CMPIResult* result, const CMPIArgs* input, CMPIArgs* output) {
    for (CMPICount i = 0; i < CMGetArgCount(input, nullptr); ++i) {
      CMPIString* name = nullptr;
      const CMPIData argument = CMGetArgAt(input, i, &name, nullptr);
      seen += std::string(CMGetCharsPtr(name, nullptr)) + ":" + typeName(argument.type) + " ";
    }
    CMPIValue value{};
    value.uint8 = 7;
    CMAddArg(output, "Level", &value, CMPI_uint8);
    value.uint32 = 3;
    CMReturnData(result, &value, CMPI_uint32);
    return CMReturnDone(result);
  };
  const HttpReply scanned = invoke(
      "Scan", "<PARAMVALUE NAME=\"depth\" PARAMTYPE=\"uint32\"><VALUE>4</VALUE></PARAMVALUE>"
              "<PARAMVALUE NAME=\"More\" "
              "PARAMTYPE=\"string\"><VALUE.ARRAY><VALUE>x</VALUE></VALUE.ARRAY></PARAMVALUE>");
  EXPECT_EQ(seen, "depth:uint32 More:string[] ");
  EXPECT_THAT(
      scanned.body, AllOf(
                        HasSubstr("<METHODRESPONSE NAME=\"Scan\">"),
                        HasSubstr("<RETURNVALUE PARAMTYPE=\"uint32\">"), HasSubstr("NAME=\"Level\"")));
  EXPECT_EQ(scanned.operation + " " + scanned.className, "Scan Sample_Disk");
  // One that the class does not declare is the provider's to refuse.
  EXPECT_EQ(invoke("Undeclared", "").code, CMPI_RC_OK);

  sampleBehaviour().invoke = [this](auto...) {
    return CMPIStatus{CMPI_RC_ERR_FAILED, CMNewString(m_broker.cmpi(), "Scan :: no <disk>", nullptr)};
  };
  const HttpReply failed = invoke("Scan", "");
  EXPECT_EQ(failed.code, CMPI_RC_ERR_FAILED);
  EXPECT_THAT(
      failed.body,
      AllOf(
          HasSubstr("<METHODRESPONSE NAME=\"Scan\">"),
          HasSubstr("<ERROR CODE=\"1\" DESCRIPTION=\"CIM_ERR_FAILED: Scan :: no &lt;disk&gt;\"/>")));
  EXPECT_EQ(
      invoke("Scan", "<PARAMVALUE NAME=\"Depth\" PARAMTYPE=\"uint32\"><VALUE>-1</VALUE></PARAMVALUE>").code,
      CMPI_RC_ERR_INVALID_PARAMETER);
  EXPECT_EQ(invoke("Scan", "", "root/sample", "Sample_No").code, CMPI_RC_ERR_INVALID_CLASS);
  EXPECT_EQ(invoke("Scan", "", "root/interop", "CIM_ObjectManager").code, CMPI_RC_ERR_METHOD_NOT_FOUND);
}

TEST_F(ServiceTest, WhatFailsHasTheStatusOfTheStandard) {
  const std::string disks = classParameter("ClassName", "Sample_Disk");
  const struct {
    const char* operation;
    const char* nameSpace;
    std::string parameters;
    const char* error;
  } cases[] = {
      {"EnumerateInstances", "root/nosuch", disks,
       "CODE=\"3\" DESCRIPTION=\"CIM_ERR_INVALID_NAMESPACE: root/nosuch\""},
      {"EnumerateInstances", "root/sample", classParameter("ClassName", "Sample_No"),
       "CODE=\"5\" DESCRIPTION=\"CIM_ERR_INVALID_CLASS: Sample_No\""},
      {"EnumerateInstances", "root/sample", "",
       "CODE=\"4\" DESCRIPTION=\"CIM_ERR_INVALID_PARAMETER: the parameter "
       "ClassName is missing\""},
      {"EnumerateInstances", "root/sample", disks + disks,
       "CIM_ERR_INVALID_PARAMETER: the parameter ClassName comes twice"},
      {"EnumerateInstances", "root/sample", disks + textParameter("Colour", "red"),
       "has no parameter &apos;Colour&apos;"},
      {"EnumerateInstances", "root/sample", disks + textParameter("LocalOnly", "perhaps"), "CODE=\"4\""},
      {"GetInstance", "root/sample",
       parameter("InstanceName", instanceName("Sample_Disk", "Name", "missing")),
       "CODE=\"6\" DESCRIPTION=\"CIM_ERR_NOT_FOUND: root/sample:Sample_Disk.Name="},
      {"GetInstance", "root/sample", parameter("InstanceName", instanceName("Sample_No", "Name", "d")),
       "CODE=\"5\""},
      {"GetProperty", "root/sample", DISK_D1 + textParameter("PropertyName", "Colour"), "CODE=\"12\""},
      {"GetClass", "root/sample", classParameter("ClassName", "Sample_No"), "CODE=\"6\""},
      {"EnumerateClassNames", "root/sample", classParameter("ClassName", "Sample_No"), "CODE=\"5\""},
      {"Associators", "root/sample", classParameter("ObjectName", "Sample_Disk"), "CODE=\"7\""},
      {"ExecQuery", "root/sample", textParameter("QueryLanguage", "SQL") + textParameter("Query", "x"),
       "CODE=\"14\""},
      {"CreateInstance", "root/interop",
       parameter(
           "NewInstance", "<INSTANCE CLASSNAME=\"CIM_Namespace\">" + property("Name", "x") + "</INSTANCE>"),
       "CODE=\"7\""},
      {"DeleteClass", "root/sample", disks,
       "CODE=\"7\" DESCRIPTION=\"CIM_ERR_NOT_SUPPORTED: the operation &apos;DeleteClass&apos;"},
      {"OpenEnumerateInstances", "root/sample", disks, "CODE=\"7\""}};
  for (const auto& each : cases) {
    const HttpReply reply = ask(each.operation, each.nameSpace, each.parameters);
    EXPECT_EQ(reply.status, 200) << each.operation;
    EXPECT_NE(reply.code, CMPI_RC_OK) << each.operation;
    EXPECT_THAT(
        reply.body,
        AllOf(HasSubstr(each.error), HasSubstr(std::string("<IMETHODRESPONSE NAME=\"") + each.operation)));
  }
}

TEST_F(ServiceTest, HeadersThatContradictTheBodyAndOtherProtocolsAreRefused) {
  const HttpCall good = call("GetInstance", "root/sample", DISK_D1);
  using Change = void (*)(HttpCall&);
  const struct {
    Change change;
    int status;
    const char* error;
  } cases[] = {
      {[](HttpCall& each) { each.operation.clear(); }, 400, "header-mismatch"},
      {[](HttpCall& each) { each.operation = "MethodResponse"; }, 501, "unsupported-operation"},
      {[](HttpCall& each) { each.exportOperation = "MethodRequest"; }, 501, "unsupported-operation"},
      {[](HttpCall& each) { each.protocolVersion = "2.0"; }, 501, "unsupported-protocol-version"},
      {[](HttpCall& each) { each.method = "DeleteInstance"; }, 400, "header-mismatch"},
      {[](HttpCall& each) { each.method.clear(); }, 400, "header-mismatch"},
      {[](HttpCall& each) { each.object = "root/interop"; }, 400, "header-mismatch"},
      {[](HttpCall& each) { each.object = "root/sample:Sample_Disk"; }, 400, "header-mismatch"},
      {[](HttpCall& each) { each.body = "<CIM>"; }, 400, "request-not-well-formed"},
      {[](HttpCall& each) { each.body.clear(); }, 400, "request-not-well-formed"}};
  for (const auto& each : cases) {
    HttpCall changed = good;
    each.change(changed);
    const HttpReply reply = m_service.answer(changed);
    EXPECT_EQ(reply.status, each.status) << each.error;
    EXPECT_EQ(reply.headers.at("CIMError"), each.error);
    EXPECT_EQ(reply.headers.count("CIMOperation"), 0U);
  }
  HttpCall other = good;  // written differently, and the same
  other.operation = "methodcall";
  other.protocolVersion = "1.3";
  other.object = "/Root/Sample/";
  EXPECT_EQ(m_service.answer(other).status, 200);
}

TEST_F(ServiceTest, ClassesAreAnsweredInEachNamespace) {
  const auto names = [this](const std::string& nameSpace, const std::string& parameters) {
    return ask("EnumerateClassNames", nameSpace, parameters).body;
  };
  const std::string deep = textParameter("DeepInheritance", "TRUE");
  // A class that the provider's schema only names is there with its base.
  EXPECT_THAT(
      names("root/sample", deep), AllOf(
                                      HasSubstr("\"Sample_Disk\""), HasSubstr("\"CIM_ProcessIndication\""),
                                      HasSubstr("\"CIM_Indication\"")));
  EXPECT_THAT(
      names("root/sample", ""),
      AllOf(
          HasSubstr("\"Sample_Base\""), HasSubstr("\"CIM_Indication\""), Not(HasSubstr("\"Sample_Disk\""))));
  const std::string indication = classParameter("ClassName", "CIM_Indication");
  EXPECT_EQ(countOf(names("root/sample", indication), "<CLASSNAME"), 1U);
  EXPECT_EQ(countOf(names("root/sample", indication + deep), "<CLASSNAME"), 2U);
  for (const char* nameSpace : {"root/interop", "interop", "root/PG_InterOp"}) {
    EXPECT_THAT(
        names(nameSpace, deep), AllOf(
                                    HasSubstr("\"CIM_IndicationFilter\""), HasSubstr("\"Sample_Alarm\""),
                                    Not(HasSubstr("Sample_Disk"))));
  }

  const auto getClass = [this](const std::string& more) {
    return ask("GetClass", "root/sample", classParameter("ClassName", "Sample_Disk") + more).body;
  };
  EXPECT_THAT(getClass(""), AllOf(HasSubstr("NAME=\"Count\""), Not(HasSubstr("PROPERTY NAME=\"Flag\""))));
  EXPECT_THAT(
      getClass(textParameter("LocalOnly", "FALSE")),
      AllOf(
          HasSubstr("PROPERTY NAME=\"Flag\""), HasSubstr("METHOD NAME=\"Scan\""),
          HasSubstr("QUALIFIER NAME=\"Key\"")));
  EXPECT_THAT(getClass(textParameter("IncludeQualifiers", "FALSE")), Not(HasSubstr("<QUALIFIER")));
  const HttpReply alarm =
      ask("GetClass", "root/interop",
          classParameter("ClassName", "Sample_Alarm") + textParameter("LocalOnly", "FALSE"));
  EXPECT_THAT(alarm.body, AllOf(HasSubstr("NAME=\"Text\""), HasSubstr("NAME=\"SequenceNumber\"")));
  EXPECT_EQ(
      countOf(
          ask("EnumerateClasses", "root/sample", classParameter("ClassName", "Sample_Base")).body, "<CLASS "),
      1U);
}

TEST_F(ServiceTest, TheInteropNamespaceAnswersWhatClientsLookForFirst) {
  for (const char* className : {"CIM_Namespace", "__Namespace"}) {
    const std::string body =
        ask("EnumerateInstanceNames", "root/PG_InterOp", classParameter("ClassName", className)).body;
    EXPECT_EQ(countOf(body, "<INSTANCENAME "), 2U) << className;
    EXPECT_THAT(body, AllOf(HasSubstr(">root/interop<"), HasSubstr(">root/sample<")));
  }
  EXPECT_EQ(
      countOf(
          ask("EnumerateInstances", "interop", classParameter("ClassName", "CIM_ObjectManager")).body,
          "<VALUE.NAMEDINSTANCE>"),
      1U);
  EXPECT_THAT(
      ask("GetInstance", "root/interop",
          parameter("InstanceName", instanceName("__Namespace", "Name", "root/sample")))
          .body,
      HasSubstr("<INSTANCE CLASSNAME=\"__Namespace\""));
}

TEST_F(ServiceTest, ASubscriptionIsMadeAssociatedAndDeletedByItsMessages) {
  const std::string interop = "root/PG_InterOp";
  /** Creates an instance. @return its INSTANCENAME */
  const auto create = [&](const std::string& className, const std::string& properties) {
    const std::string body =
        ask("CreateInstance", interop,
            parameter(
                "NewInstance", "<INSTANCE CLASSNAME=\"" + className + "\">" + properties + "</INSTANCE>"))
            .body;
    const std::size_t begin = body.find("<INSTANCENAME ");
    const std::string end = "</INSTANCENAME>";
    EXPECT_NE(begin, std::string::npos) << body;
    return begin == std::string::npos ? "" : body.substr(begin, body.rfind(end) + end.size() - begin);
  };
  const auto reference = [](const std::string& name, const std::string& path) {
    return "<PROPERTY.REFERENCE NAME=\"" + name + "\"><VALUE.REFERENCE>" + path +
           "</VALUE.REFERENCE></PROPERTY.REFERENCE>";
  };
  const std::string filterName = create(
      "CIM_IndicationFilter", property("Name", "f") + property("Query", "SELECT * FROM Sample_Alarm") +
                                  property("SourceNamespace", "root/PG_InterOp"));
  const std::string handlerName = create(
      "CIM_ListenerDestinationCIMXML",
      property("Name", "h") + property("Destination", "http://127.0.0.1:1/") +
          "<PROPERTY NAME=\"PersistenceType\" TYPE=\"uint16\"><VALUE>2</VALUE></PROPERTY>");
  const std::string link = create(
      "CIM_IndicationSubscription", reference("Filter", filterName) + reference("Handler", handlerName));
  EXPECT_THAT(filterCalls().seen, ElementsAre("authorize ann", "activate Sample_Alarm first", "enable"));

  const std::string object = parameter("ObjectName", filterName);
  EXPECT_THAT(
      ask("AssociatorNames", interop, object).body,
      AllOf(HasSubstr("<OBJECTPATH>"), HasSubstr("CLASSNAME=\"CIM_ListenerDestinationCIMXML\"")));
  EXPECT_EQ(countOf(ask("Associators", interop, object).body, "<VALUE.OBJECTWITHPATH>"), 1U);
  EXPECT_EQ(
      countOf(
          ask("References", interop, object + classParameter("ResultClass", "CIM_IndicationSubscription"))
              .body,
          "<INSTANCE CLASSNAME=\"CIM_IndicationSubscription\""),
      1U);
  for (const std::string& narrow :
       {textParameter("Role", "Handler"), classParameter("ResultClass", "CIM_IndicationFilter")}) {
    EXPECT_EQ(countOf(ask("AssociatorNames", interop, object + narrow).body, "<OBJECTPATH>"), 0U) << narrow;
  }
  EXPECT_EQ(
      countOf(ask("ReferenceNames", interop, parameter("ObjectName", handlerName)).body, "<OBJECTPATH>"), 1U);

  EXPECT_EQ(ask("DeleteInstance", interop, parameter("InstanceName", filterName)).code, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(ask("DeleteInstance", interop, parameter("InstanceName", link)).code, CMPI_RC_OK);
  EXPECT_EQ(ask("DeleteInstance", interop, parameter("InstanceName", filterName)).code, CMPI_RC_OK);
}

}  // namespace
}  // namespace tvp::host::cimxml::testing
