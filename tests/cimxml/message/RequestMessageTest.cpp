// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/RequestMessage.h"

#include "SampleMessages.h"
#include "host/cimxml/message/KeyTypes.h"
#include "host/schema/ObjectPathText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tvp::host::cimxml::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST(RequestMessage, GivesTheParametersOfAnOperation) {
  const RequestMessage request = RequestMessage::read(intrinsic(R"(
    <IPARAMVALUE NAME="classname"><CLASSNAME NAME="T_Pool"/></IPARAMVALUE>
    <!-- a comment --><IPARAMVALUE NAME="Deep"> <VALUE> true </VALUE> </IPARAMVALUE>
    <IPARAMVALUE NAME="Query"><VALUE><![CDATA[a<b & ]]>&#x26;&apos;&#13;</VALUE></IPARAMVALUE>
    <IPARAMVALUE NAME="Blank"><VALUE>  </VALUE></IPARAMVALUE>
    <IPARAMVALUE NAME="Count"><VALUE>0x10</VALUE></IPARAMVALUE>
    <IPARAMVALUE NAME="List"><VALUE.ARRAY><VALUE>A</VALUE><VALUE></VALUE></VALUE.ARRAY></IPARAMVALUE>
    <IPARAMVALUE NAME="None"/><IPARAMVALUE NAME="Null"><VALUE.NULL/></IPARAMVALUE>
    <IPARAMVALUE NAME="Object"><INSTANCENAME CLASSNAME="T_Pool">
      <KEYBINDING NAME="Name"><KEYVALUE VALUETYPE="string">5</KEYVALUE></KEYBINDING>
      <KEYBINDING NAME="Number"><KEYVALUE VALUETYPE="numeric">5</KEYVALUE></KEYBINDING></INSTANCENAME>
    </IPARAMVALUE>)"));
  EXPECT_EQ(request.kind(), RequestKind::Intrinsic);
  EXPECT_EQ(request.id(), "a&7");
  EXPECT_EQ(request.name(), "GetInstance");
  EXPECT_EQ(request.nameSpace(), "root/x");
  EXPECT_THAT(
      request.parameters(),
      ElementsAre("classname", "Deep", "Query", "Blank", "Count", "List", "None", "Null", "Object"));
  EXPECT_EQ(request.className("ClassName"), "T_Pool");
  EXPECT_EQ(request.boolean("Deep"), true);
  EXPECT_EQ(request.text("Query"), "a<b & &'\r");
  EXPECT_EQ(request.text("Blank"), "  ");
  EXPECT_EQ(request.number("Count"), 16U);
  EXPECT_THAT(*request.texts("List"), ElementsAre("A", ""));
  for (const char* absent : {"None", "Null", "Other"}) {
    EXPECT_FALSE(request.text(absent) || request.path(absent) || request.texts(absent)) << absent;
  }
  ObjectPath path = *request.path("Object");
  EXPECT_EQ(toPathText(path), "root/x:T_Pool.Name=\"5\",Number=5");
  applyKeyTypes(path, *sampleSchema());
  EXPECT_EQ(*path.key("Name"), Value::string("5"));
  EXPECT_EQ(*path.key("Number"), Value::uint16(5));
  EXPECT_EQ(toPathText(*request.path("classname")), "root/x:T_Pool");
}

TEST(RequestMessage, RefusesWhatIsNotARequest) {
  const std::string good = intrinsic("");
  const auto with = [&good](const std::string& old, const std::string& put) {
    std::string text = good;
    return text.replace(text.find(old), old.size(), put);
  };
  const std::string deep = [] {
    std::string text;
    for (int depth = 0; depth < 100000; ++depth) {
      text += "<a>";
    }
    return text;
  }();
  std::string many;
  for (int count = 0; count < 60000; ++count) {
    many += "<a b=''/>";
  }
  const std::string call = "<IMETHODCALL NAME=\"X\">" + PLACE + "</IMETHODCALL>";
  const struct {
    std::string xml;
    const char* error;
  } cases[] = {
      {"", "request-not-well-formed"},
      {"no XML", "request-not-well-formed"},
      {std::string("\xFF\xFE<\0C", 5),
       "request-not-well-formed: the message is not well-formed XML: a byte that is not UTF-8"},
      {good.substr(0, good.size() - 1), "request-not-well-formed"},
      {good + "x", "request-not-well-formed"},
      {good + "<CIM/>", "request-not-well-formed"},
      {with("</MESSAGE>", "</MESSAG>"), "request-not-well-formed"},
      {with("UTF-8", "ISO-8859-1"), "request-not-well-formed"},
      {with("?><", "?><!DOCTYPE CIM [<!ENTITY e 'x'>]><"), "request-not-well-formed"},
      {with("GetInstance", "&e;"), "request-not-well-formed"},
      {with("GetInstance", "&#1;"), "request-not-well-formed"},
      {with("GetInstance", "&#xD800;"), "request-not-well-formed"},
      {with("GetInstance", "\x01"), "request-not-well-formed"},
      {with("GetInstance", "\xC0\x80"), "request-not-well-formed"},
      {with("GetInstance", std::string(1, '\0')), "request-not-well-formed"},
      {with("NAME=\"root\"", "NAME=\"a\" NAME=\"b\""), "request-not-well-formed"},
      {deep, "request-not-well-formed"},
      {intrinsic(many), "request-not-well-formed"},
      {"<CIM/>", "request-not-valid"},
      {"<HTML/>", "request-not-valid"},
      {with("DTDVERSION=\"2.0\"", ""), "request-not-valid"},
      {with(" ID=\"a&amp;7\"", ""), "request-not-valid"},
      {with("NAME=\"GetInstance\"", ""), "request-not-valid"},
      {with(PLACE, ""), "request-not-valid"},
      {message("<SIMPLEREQ/>"), "request-not-valid"},
      {message("<SIMPLEREQ>" + call + call + "</SIMPLEREQ>"), "request-not-valid"},
      {message("<SIMPLERSP><IMETHODRESPONSE NAME=\"X\"/></SIMPLERSP>"), "request-not-valid"},
      {message("<SIMPLEREQ><METHODCALL NAME=\"X\"/></SIMPLEREQ>"), "request-not-valid"},
      {message("<MULTIREQ/>"), "multiple-requests-unsupported"},
      {with("CIMVERSION=\"2.0", "CIMVERSION=\"3.0"), "unsupported-cim-version"},
      {with("DTDVERSION=\"2.0", "DTDVERSION=\"20.0"), "unsupported-dtd-version"},
      {with("PROTOCOLVERSION=\"1.0", "PROTOCOLVERSION=\"2.0"), "unsupported-protocol-version"},
  };
  for (const auto& each : cases) {
    EXPECT_THAT(badMessageOf([&] { RequestMessage::read(each.xml); }), StartsWith(each.error))
        << each.xml.substr(0, 400);
  }
  EXPECT_EQ(badMessageOf([&] { RequestMessage::read("\xEF\xBB\xBF" + good); }), "") << "a byte order mark";
  EXPECT_EQ(BadMessage("request-not-valid", "").httpStatus(), 400);
  EXPECT_EQ(BadMessage("unsupported-operation", "").httpStatus(), 501);
}

/** PARAMVALUE elements and what is read from them, with the method of the schema or without. */
TEST(RequestMessage, GivesArgumentsTheirTypes) {
  const SchemaMethod* grow = sampleSchema()->find("T_Pool")->method("Grow");
  const struct {
    const char* attributes;
    const char* content;
    const char* expected;  ///< type and text, or a part of the failure
    const SchemaMethod* method;
  } cases[] = {
      {"PARAMTYPE='uint8'", "<VALUE> 255 </VALUE>", "uint8 255", nullptr},
      {"PARAMTYPE='uint8'", "<VALUE>256</VALUE>", "'256' is not a value of the type uint8", nullptr},
      {"PARAMTYPE='uint8'", "<VALUE>-1</VALUE>", "'-1' is not a value of the type uint8", nullptr},
      {"PARAMTYPE='uint8'", "<VALUE></VALUE>", "'' is not a value of the type uint8", nullptr},
      {"PARAMTYPE='sint8'", "<VALUE>-128</VALUE>", "sint8 -128", nullptr},
      {"PARAMTYPE='sint8'", "<VALUE>-129</VALUE>", "'-129' is not a value", nullptr},
      {"PARAMTYPE='sint64'", "<VALUE>-9223372036854775808</VALUE>", "sint64 -9223372036854775808", nullptr},
      {"PARAMTYPE='uint64'", "<VALUE>0xFFFFFFFFFFFFFFFF</VALUE>", "uint64 18446744073709551615", nullptr},
      {"PARAMTYPE='uint64'", "<VALUE>99999999999999999999</VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='real32'", "<VALUE>1e39</VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='real64'", "<VALUE>-1.5E3</VALUE>", "real64 -1500", nullptr},
      {"PARAMTYPE='boolean'", "<VALUE>yes</VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='char16'", "<VALUE>\xE2\x82\xAC</VALUE>", "char16 8364", nullptr},
      {"PARAMTYPE='datetime'", "<VALUE>20260131235959.000000+000</VALUE>",
       "datetime \"20260131235959.000000+000\"", nullptr},
      {"PARAMTYPE='datetime'", "<VALUE>yesterday</VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='string'", "<VALUE>a<VALUE>b</VALUE></VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='string'", "<VALUE>a</VALUE><VALUE>b</VALUE>", "more than one value", nullptr},
      {"PARAMTYPE='string'", "", "string NULL", nullptr},
      {"PARAMTYPE='string'", "<INSTANCENAME CLASSNAME='C'/>", "is not a value", nullptr},
      {"PARAMTYPE='number'", "<VALUE>1</VALUE>", "'number' is not a type", nullptr},
      {"PARAMTYPE='uint8'", "<VALUE.ARRAY><VALUE>1</VALUE><VALUE.NULL/></VALUE.ARRAY>", "uint8[] {1, NULL}",
       nullptr},
      {"PARAMTYPE='reference'", "<VALUE>C</VALUE>", "is not a value", nullptr},
      {"PARAMTYPE='reference'",
       "<VALUE.REFERENCE><CLASSPATH><NAMESPACEPATH><HOST>h</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME='r'/>"
       "</LOCALNAMESPACEPATH></NAMESPACEPATH><CLASSNAME NAME='C'/></CLASSPATH></VALUE.REFERENCE>",
       "ref \"//h/r:C\"", nullptr},
      {"PARAMTYPE='string' EmbeddedObject='instance'",
       "<VALUE>&lt;INSTANCE CLASSNAME='C'>&lt;PROPERTY NAME='A' TYPE='uint8'>&lt;VALUE>7&lt;/VALUE>"
       "&lt;/PROPERTY>&lt;/INSTANCE></VALUE>",
       "instance instance of C {A = 7; }", nullptr},
      {"PARAMTYPE='string' EMBEDDEDOBJECT='instance'", "<VALUE>&lt;INSTANCE</VALUE>",
       "an embedded instance: the message is not well-formed", nullptr},
      {"", "<VALUE>7</VALUE>", "sint64 7", nullptr},
      {"", "<VALUE>18446744073709551615</VALUE>", "uint64 18446744073709551615", nullptr},
      {"", "<VALUE>True</VALUE>", "boolean TRUE", nullptr},
      {"", "<VALUE.ARRAY><VALUE>1</VALUE><VALUE>x</VALUE></VALUE.ARRAY>", "string[] {\"1\", \"x\"}", nullptr},
      {"", "<VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY>", "uint8[] {1}", grow},
      {"", "<VALUE>1</VALUE>", "uint8 1", grow},
      {"", "", "uint8[] NULL", grow},
      {"PARAMTYPE='uint16'", "<VALUE>1</VALUE>", "uint16 1", grow},
  };
  for (const auto& each : cases) {
    const RequestMessage request = RequestMessage::read(methodCall(
        std::string("<PARAMVALUE NAME='steps' ") + each.attributes + ">" + each.content + "</PARAMVALUE>"));
    std::string seen;
    const std::string failure = failureOf([&] {
      const Arguments arguments = request.arguments(each.method);
      const Value& value = arguments.values.at(0).value;
      seen = typeName(value.type()) + " " + value.toText();
    });
    EXPECT_THAT(seen + failure, HasSubstr(each.expected)) << each.attributes << each.content;
  }
  const RequestMessage twice =
      RequestMessage::read(methodCall("<PARAMVALUE NAME='A'/><PARAMVALUE NAME='a'/>"));
  EXPECT_EQ(toPathText(twice.target()), "root/x:T_Pool");
  EXPECT_EQ(failureOf([&] { twice.arguments(nullptr); }), "the argument 'a' comes twice");
}

TEST(RequestMessage, GivesInstancesTheTypesOfTheSchema) {
  const std::string properties =
      "<PROPERTY NAME='level' TYPE='string'><VALUE>3</VALUE></PROPERTY>"
      "<PROPERTY.ARRAY NAME='Sizes' "
      "TYPE='uint64'><VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"
      "<PROPERTY NAME='Made' TYPE='string'/><PROPERTY NAME='Other' TYPE='uint16'><VALUE>9</VALUE></PROPERTY>"
      "<PROPERTY NAME='Part' TYPE='string'><VALUE>&lt;INSTANCE CLASSNAME='T_Base'/></VALUE></PROPERTY>";
  const std::string named = "<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME='T_Pool'><KEYBINDING NAME='Number'>"
                            "<KEYVALUE VALUETYPE='numeric'>4</KEYVALUE></KEYBINDING></INSTANCENAME>"
                            "<INSTANCE CLASSNAME='T_Pool'>" +
                            properties + "</INSTANCE></VALUE.NAMEDINSTANCE>";
  const Instance instance = *RequestMessage::read(parameter(named)).instance("P", *sampleSchema());
  EXPECT_EQ(toPathText(instance.path), "root/x:T_Pool.Number=4");
  EXPECT_EQ(*instance.path.key("Number"), Value::uint16(4));
  EXPECT_EQ(*instance.property("Level"), Value::uint8(3));
  EXPECT_EQ(*instance.property("Sizes"), Value::array(CMPI_uint32, {Value::uint32(1)}));
  EXPECT_EQ(*instance.property("Made"), Value::null(CMPI_dateTime));
  EXPECT_EQ(*instance.property("Other"), Value::uint16(9));
  EXPECT_EQ(instance.property("Part")->asInstance().path.className, "T_Base");
}

TEST(RequestMessage, RefusesMalformedParametersByName) {
  const auto schema = sampleSchema();
  const std::string pool = "<INSTANCE CLASSNAME='T_Pool'>";
  std::string embedded = "<INSTANCE CLASSNAME='C'/>";
  for (int depth = 0; depth < 10; ++depth) {
    std::string escaped;
    for (const char character : embedded) {
      escaped += character == '<' ? "&lt;" : character == '&' ? "&amp;" : std::string(1, character);
    }
    embedded = "<INSTANCE CLASSNAME='C'><PROPERTY NAME='A' TYPE='string' EmbeddedObject='instance'><VALUE>" +
               escaped + "</VALUE></PROPERTY></INSTANCE>";
  }
  const struct {
    std::string content;
    const char* failure;
  } cases[] = {
      {"<VALUE>x</VALUE>", "the parameter P: 'VALUE' is not an instance"},
      {"<INSTANCE/>", "'INSTANCE' has no CLASSNAME"},
      {pool + "<VALUE>x</VALUE></INSTANCE>", "'VALUE' is not a property"},
      {pool + "<PROPERTY NAME='Level' TYPE='uint8'/><PROPERTY NAME='LEVEL' TYPE='uint8'/></INSTANCE>",
       "the property 'LEVEL' comes twice"},
      {pool + "<PROPERTY NAME='Level' TYPE='uint16'><VALUE>300</VALUE></PROPERTY></INSTANCE>",
       "'300' is not a value of the type uint8"},
      {pool + "<PROPERTY NAME='Sizes' TYPE='uint32'><VALUE>3</VALUE></PROPERTY></INSTANCE>",
       "the value of 'Sizes' is not an array"},
      {"<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME='T_Base'/>" + pool + "</INSTANCE></VALUE.NAMEDINSTANCE>",
       "the class of the instance, 'T_Pool', is not that of its path"},
      {embedded, "instances are embedded deeper than 8"},
  };
  for (const auto& each : cases) {
    const RequestMessage request = RequestMessage::read(parameter(each.content));
    EXPECT_THAT(failureOf([&] { request.instance("P", *schema); }), HasSubstr(each.failure)) << each.content;
  }
  const RequestMessage words = RequestMessage::read(parameter("<VALUE>\n-5 \x7F</VALUE>"));
  EXPECT_EQ(failureOf([&] { words.boolean("P"); }), "the parameter P: expected TRUE or FALSE");
  EXPECT_EQ(failureOf([&] { words.number("P"); }), "the parameter P: expected a number from 0 to 4294967295");
  EXPECT_THAT(failureOf([&] { words.className("P"); }), HasSubstr("where CLASSNAME is expected"));
  EXPECT_THAT(failureOf([&] { words.texts("P"); }), HasSubstr("where VALUE.ARRAY is expected"));
  EXPECT_THAT(failureOf([&] { words.path("P"); }), HasSubstr("is not a path"));
  const RequestMessage keys = RequestMessage::read(
      parameter("<INSTANCENAME CLASSNAME='C'><KEYBINDING NAME='A'><KEYVALUE VALUETYPE='numeric'>x</KEYVALUE>"
                "</KEYBINDING></INSTANCENAME>"));
  EXPECT_THAT(
      failureOf([&] { keys.path("P"); }), HasSubstr("'x' is not the value of a key of the type sint64"));
}

TEST(RequestMessage, GivesTheIndicationOfAnExport) {
  const RequestMessage request = RequestMessage::read(message(
      "<SIMPLEEXPREQ><EXPMETHODCALL NAME='ExportIndication'><EXPPARAMVALUE NAME='NewIndication'>"
      "<INSTANCE CLASSNAME='C'><PROPERTY NAME='Id' TYPE='uint32'><VALUE>3</VALUE></PROPERTY></INSTANCE>"
      "</EXPPARAMVALUE></EXPMETHODCALL></SIMPLEEXPREQ>"));
  EXPECT_EQ(request.kind(), RequestKind::Export);
  EXPECT_EQ(*request.indication().property("Id"), Value::uint32(3));
  const RequestMessage empty =
      RequestMessage::read(message("<SIMPLEEXPREQ><EXPMETHODCALL NAME='ExportIndication'/></SIMPLEEXPREQ>"));
  EXPECT_EQ(failureOf([&] { empty.indication(); }), "the export has no NewIndication");
}

}  // namespace
}  // namespace tvp::host::cimxml::test
