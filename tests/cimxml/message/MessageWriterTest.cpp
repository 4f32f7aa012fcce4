// SPDX-License-Identifier: Apache-2.0
// What is written reads the same again, and has the form that other clients and servers expect.
#include "host/cimxml/message/MessageWriter.h"

#include "SampleMessages.h"
#include "host/cimxml/message/AnswerMessage.h"
#include "host/cimxml/message/RequestMessage.h"
#include "host/schema/ObjectPathText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tvp::host::cimxml::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const AnswerHead HEAD = {"1<2", "Do&It"};

/** The text between the call's start and end tags. */
std::string contentOf(const std::string& answer) {
  const std::string begin = "RESPONSE NAME=\"Do&amp;It\">\n";
  const std::size_t from = answer.find(begin) + begin.size();
  return answer.substr(from, answer.rfind("</", answer.rfind("</SIMPLERSP>") - 1) - from);
}

Instance samplePool() {
  Instance pool;
  pool.path = {"root/x", "T_Pool", {{"Name", Value::string("a\"<")}, {"Number", Value::uint16(7)}}, ""};
  Instance part;
  part.path.className = "T_Base";
  part.properties = {{"Name", Value::string("in <it> & \"here\"")}, {"Level", Value::null(CMPI_uint8)}};
  pool.properties = {
      {"Name", Value::string("a\"<")},
      {"Level", Value::uint8(3)},
      {"Number", Value::uint16(7)},
      {"Sizes", Value::array(CMPI_uint32, {Value::uint32(1), Value::null(CMPI_uint32)})},
      {"Made", Value::null(CMPI_dateTime)},
      {"Parent", Value::reference({"root/x", "T_Base", {{"Name", Value::string("up")}}, ""})},
      {"Part", Value::instance(part)}};
  return pool;
}

Arguments everyType() {
  Arguments all;
  Instance outer = samplePool();
  outer.path = {"", "T_Pool", {}, ""};
  all.add("bool", Value::boolean(true)).add("u8", Value::uint8(255)).add("u64", Value::uint64(UINT64_MAX));
  all.add("s8", Value::signedInteger(CMPI_sint8, -128)).add("s64", Value::sint64(INT64_MIN));
  all.add("r32", Value::real(CMPI_real32, 0.1F)).add("r64", Value::real(CMPI_real64, -0.1));
  all.add("inf", Value::real(CMPI_real64, -HUGE_VAL)).add("c", Value::unsignedInteger(CMPI_char16, 0x20AC));
  all.add("blank", Value::unsignedInteger(CMPI_char16, ' ')).add("time", Value::dateTime(DateTime()));
  all.add("text", Value::string("  a  b\t\r\n\x7F]]><&>'\" \xC3\xA9\xF0\x9F\x98\x80 "));
  all.add("empty", Value::string("")).add("null", Value::null(CMPI_uint16));
  all.add("list", Value::array(CMPI_string, {Value::string(""), Value::null(CMPI_string)}));
  all.add("none", Value::array(CMPI_uint8, {})).add("ref", outer.properties[5].value);
  all.add("far", Value::reference({"a/b", "C", {{"K", Value::boolean(false)}}, "host"}));
  all.add("class", Value::reference({"a/b", "C", {}, ""})).add("instance", Value::instance(outer));
  all.add("instances", Value::array(CMPI_instance, {Value::instance(outer), Value::null(CMPI_instance)}));
  all.add("refs", Value::array(CMPI_ref, {outer.properties[5].value}));
  return all;
}

TEST(MessageWriter, WritesArgumentsThatReadTheSame) {
  const Arguments all = everyType();
  const ObjectPath target = {"root/x", "T_Pool", {{"Name", Value::string("n")}}, ""};
  const RequestMessage request = RequestMessage::read(methodRequest("1<2", target, "Do&It", all));
  EXPECT_EQ(request.kind(), RequestKind::Method);
  EXPECT_EQ(request.id(), "1<2");
  EXPECT_EQ(request.name(), "Do&It");
  EXPECT_EQ(request.nameSpace(), "root/x");
  EXPECT_EQ(request.target(), target);
  const Arguments read = request.arguments(nullptr);
  ASSERT_EQ(read.values.size(), all.values.size());
  for (std::size_t index = 0; index < all.values.size(); ++index) {
    EXPECT_EQ(read.values[index], all.values[index])
        << all.values[index].name << " " << read.values[index].value << "\n"
        << all.values[index].value;
  }
  const AnswerMessage answer =
      AnswerMessage::read(methodAnswer(HEAD, Value::uint32(4), all), *sampleSchema());
  EXPECT_EQ(answer.code, CMPI_RC_OK);
  EXPECT_EQ(answer.returnValue, Value::uint32(4));
  EXPECT_EQ(answer.output, all);
  const std::string nothing = contentOf(methodAnswer(HEAD, Value(), {}));
  EXPECT_EQ(nothing, "");
}

TEST(MessageWriter, ReplacesWhatXmlCannotHave) {
  Arguments odd;
  odd.add("a\x01", Value::string(std::string("\0\x1B\x7F\xFF\xC3 \xED\xA0\x80 \xEF\xBF\xBF", 13)));
  odd.add("half", Value::unsignedInteger(CMPI_char16, 0xD800));
  const AnswerMessage answer = AnswerMessage::read(methodAnswer(HEAD, Value(), odd), *sampleSchema());
  const std::string mark = "\xEF\xBF\xBD";
  const std::string three = mark + mark + mark;
  EXPECT_EQ(answer.output.values[0].name, "a" + mark);
  EXPECT_EQ(
      answer.output.values[0].value,
      Value::string(mark + mark + "\x7F" + mark + mark + " " + three + " " + mark));
  EXPECT_EQ(answer.output.values[1].value, Value::unsignedInteger(CMPI_char16, 0xFFFD));
}

TEST(MessageWriter, WritesInstancesInTheShapeOfTheOperation) {
  const Instance pool = samplePool();
  Detail detail;
  detail.properties = {{"name", "SIZES", "Other"}};
  detail.classOrigin = true;
  const std::string keys =
      "<INSTANCENAME CLASSNAME=\"T_Pool\">\n<KEYBINDING NAME=\"Name\">\n"
      "<KEYVALUE VALUETYPE=\"string\">a&quot;&lt;</KEYVALUE>\n</KEYBINDING>\n<KEYBINDING NAME=\"Number\">\n"
      "<KEYVALUE VALUETYPE=\"numeric\">7</KEYVALUE>\n</KEYBINDING>\n</INSTANCENAME>\n";
  const std::string body =
      "<INSTANCE CLASSNAME=\"T_Pool\">\n"
      "<PROPERTY NAME=\"Name\" CLASSORIGIN=\"T_Base\" "
      "TYPE=\"string\">\n<VALUE>a&quot;&lt;</VALUE>\n</PROPERTY>\n"
      "<PROPERTY.ARRAY NAME=\"Sizes\" CLASSORIGIN=\"T_Pool\" TYPE=\"uint32\">\n"
      "<VALUE.ARRAY>\n<VALUE>1</VALUE>\n<VALUE.NULL/>\n</VALUE.ARRAY>\n</PROPERTY.ARRAY>\n</INSTANCE>\n";
  const auto answer = [&](ObjectShape shape, const Detail& shown) {
    return instancesAnswer(HEAD, {pool}, shape, shown, *sampleSchema());
  };
  EXPECT_EQ(
      answer(ObjectShape::Instance, detail),
      "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
      "<MESSAGE ID=\"1&lt;2\" PROTOCOLVERSION=\"1.0\">\n<SIMPLERSP>\n<IMETHODRESPONSE NAME=\"Do&amp;It\">\n"
      "<IRETURNVALUE>\n" +
          body + "</IRETURNVALUE>\n</IMETHODRESPONSE>\n</SIMPLERSP>\n</MESSAGE>\n</CIM>\n");
  EXPECT_EQ(
      contentOf(answer(ObjectShape::NamedInstance, detail)),
      "<IRETURNVALUE>\n<VALUE.NAMEDINSTANCE>\n" + keys + body + "</VALUE.NAMEDINSTANCE>\n</IRETURNVALUE>\n");
  EXPECT_THAT(
      contentOf(answer(ObjectShape::ObjectWithPath, detail)),
      HasSubstr(
          "<NAMESPACE NAME=\"x\"/>\n</LOCALNAMESPACEPATH>\n</NAMESPACEPATH>\n" + keys + "</INSTANCEPATH>\n"));
  EXPECT_EQ(contentOf(instancesAnswer(HEAD, {}, ObjectShape::Instance, {}, *sampleSchema())), "");
  for (const ObjectShape shape :
       {ObjectShape::Instance, ObjectShape::NamedInstance, ObjectShape::ObjectWithPath}) {
    const AnswerMessage read = AnswerMessage::read(answer(shape, {}), *sampleSchema());
    ASSERT_EQ(read.instances.size(), 1U);
    EXPECT_EQ(read.instances[0], pool);
    EXPECT_EQ(read.instances[0].path.keys.size(), shape == ObjectShape::Instance ? 0U : 2U);
    EXPECT_EQ(read.instances[0].path.nameSpace, shape == ObjectShape::ObjectWithPath ? "root/x" : "");
  }
}

TEST(MessageWriter, WritesPathsNamesValuesAndErrors) {
  const ObjectPath path = samplePool().path;
  const auto read = [](const std::string& answer) { return AnswerMessage::read(answer, *sampleSchema()); };
  ObjectPath bare = path;
  bare.nameSpace.clear();
  EXPECT_THAT(read(pathsAnswer(HEAD, {path}, PathShape::InstanceName)).paths, ElementsAre(bare));
  EXPECT_THAT(read(pathsAnswer(HEAD, {path}, PathShape::ObjectPath)).paths, ElementsAre(path));
  EXPECT_THAT(read(classNamesAnswer(HEAD, {"A", "B"})).classNames, ElementsAre("A", "B"));
  EXPECT_EQ(read(valueAnswer(HEAD, Value::string("v"))).returnValue, Value::string("v"));
  EXPECT_EQ(contentOf(valueAnswer(HEAD, Value())), "");
  EXPECT_EQ(contentOf(emptyAnswer(HEAD)), "");
  const std::string error = errorAnswer(HEAD, false, CMPI_RC_ERR_NOT_FOUND, "no <such> \"x\"");
  EXPECT_EQ(contentOf(error), "<ERROR CODE=\"6\" DESCRIPTION=\"no &lt;such&gt; &quot;x&quot;\"/>\n");
  EXPECT_EQ(read(error).code, CMPI_RC_ERR_NOT_FOUND);
  EXPECT_EQ(read(error).message, "no <such> \"x\"");
  EXPECT_THAT(errorAnswer(HEAD, true, CMPI_RC_ERR_FAILED, ""), HasSubstr("<METHODRESPONSE"));
  EXPECT_EQ(contentOf(errorAnswer(HEAD, true, CMPI_RC_ERR_FAILED, "")), "<ERROR CODE=\"1\"/>\n");
  EXPECT_EQ(read(exportAnswer(HEAD)).code, CMPI_RC_OK);
}

TEST(MessageWriter, WritesClasses) {
  const SchemaClass* pool = sampleSchema()->find("T_Pool");
  Detail everything;
  everything.qualifiers = everything.classOrigin = true;
  const std::string whole = contentOf(classesAnswer(HEAD, {pool}, everything));
  EXPECT_THAT(
      whole,
      StartsWith("<IRETURNVALUE>\n<CLASS NAME=\"T_Pool\" SUPERCLASS=\"T_Base\">\n"
                 "<PROPERTY NAME=\"Name\" CLASSORIGIN=\"T_Base\" PROPAGATED=\"true\" TYPE=\"string\">\n"
                 "<QUALIFIER NAME=\"Key\" TYPE=\"boolean\">\n<VALUE>TRUE</VALUE>\n</QUALIFIER>\n"
                 "<QUALIFIER NAME=\"Description\" TYPE=\"string\">\n<VALUE>who &lt;it&gt; "
                 "is</VALUE>\n</QUALIFIER>\n"));
  for (const char* part :
       {"<PROPERTY.ARRAY NAME=\"Sizes\" CLASSORIGIN=\"T_Pool\" TYPE=\"uint32\">",
        "<PROPERTY.REFERENCE NAME=\"Parent\" REFERENCECLASS=\"T_Base\" CLASSORIGIN=\"T_Pool\">",
        "<PROPERTY NAME=\"Part\" CLASSORIGIN=\"T_Pool\" TYPE=\"string\" EmbeddedObject=\"instance\">",
        "<METHOD NAME=\"Grow\" TYPE=\"uint32\" CLASSORIGIN=\"T_Pool\">",
        "<PARAMETER.ARRAY NAME=\"Steps\" TYPE=\"uint8\">",
        "<PARAMETER.REFERENCE NAME=\"Result\" REFERENCECLASS=\"T_Base\">", "<PARAMETER NAME=\"Note\""}) {
    EXPECT_THAT(whole, HasSubstr(part));
  }
  Detail own;
  own.localOnly = true;
  own.properties = {{"Name", "Made"}};
  EXPECT_THAT(
      contentOf(classesAnswer(HEAD, {pool}, own)),
      testing::AllOf(
          HasSubstr("<PROPERTY NAME=\"Made\" TYPE=\"datetime\">\n</PROPERTY>\n<METHOD"),
          Not(HasSubstr("\"Name\"")), Not(HasSubstr("Number")), Not(HasSubstr("QUALIFIER"))));
}

TEST(MessageWriter, WritesRequestsThatReadTheSame) {
  const Instance pool = samplePool();
  using Kind = IntrinsicParameter::Kind;
  const auto parameterOf = [](const char* name, Kind kind) {
    IntrinsicParameter parameter;
    parameter.name = name;
    parameter.kind = kind;
    return parameter;
  };
  std::vector<IntrinsicParameter> all = {
      parameterOf("Class", Kind::ClassName),
      parameterOf("Path", Kind::InstanceName),
      parameterOf("ClassPath", Kind::InstanceName),
      parameterOf("New", Kind::Instance),
      parameterOf("Changed", Kind::NamedInstance),
      parameterOf("Text", Kind::Text),
      parameterOf("Texts", Kind::Texts),
      parameterOf("Flag", Kind::Boolean)};
  all[0].text = all[5].text = all[2].path.className = "T_Pool";
  all[1].path = pool.path;
  all[3].instance = all[4].instance = pool;
  all[6].texts = {"a", " "};
  all[7].flag = true;
  const RequestMessage request = RequestMessage::read(intrinsicRequest("9", "Any", "root/x", all));
  EXPECT_EQ(request.name(), "Any");
  EXPECT_EQ(request.className("Class"), "T_Pool");
  ObjectPath untyped = pool.path;
  untyped.keys[1].value = Value::sint64(7);
  EXPECT_EQ(request.path("Path"), untyped);
  EXPECT_EQ(toPathText(*request.path("ClassPath")), "root/x:T_Pool");
  EXPECT_EQ(request.instance("New", *sampleSchema()), pool);
  EXPECT_EQ(request.instance("Changed", *sampleSchema())->path, pool.path);
  EXPECT_EQ(request.text("Text"), "T_Pool");
  EXPECT_THAT(*request.texts("Texts"), ElementsAre("a", " "));
  EXPECT_EQ(request.boolean("Flag"), true);
  EXPECT_EQ(RequestMessage::read(exportRequest("9", pool)).indication(), pool);
}

}  // namespace
}  // namespace tvp::host::cimxml::test
