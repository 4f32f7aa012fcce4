// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/AnswerMessage.h"

#include "SampleMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tvp::host::cimxml::test {
namespace {

using testing::HasSubstr;

AnswerMessage read(const std::string& content, const SchemaMethod* method = nullptr) {
  return AnswerMessage::read(message("<SIMPLERSP>" + content + "</SIMPLERSP>"), *sampleSchema(), method);
}

std::string intrinsicAnswer(const std::string& content) {
  return "<IMETHODRESPONSE NAME='X'>" + content + "</IMETHODRESPONSE>";
}

TEST(AnswerMessage, ReadsWhatOtherServersWrite) {
  const AnswerMessage objects = read(intrinsicAnswer(
      "<IRETURNVALUE><VALUE.OBJECT><INSTANCE CLASSNAME='T_Base'><QUALIFIER NAME='Q' TYPE='string'/>"
      "<PROPERTY NAME='Level' PROPAGATED='true' TYPE='uint8'><QUALIFIER NAME='Q' TYPE='string'/>"
      "<VALUE>3</VALUE></PROPERTY></INSTANCE></VALUE.OBJECT><CLASS NAME='T_Pool'/></IRETURNVALUE>"));
  ASSERT_EQ(objects.instances.size(), 1U);
  EXPECT_EQ(*objects.instances[0].property("Level"), Value::uint8(3));
  EXPECT_EQ(objects.classNames, std::vector<std::string>{"T_Pool"});

  const AnswerMessage names = read(intrinsicAnswer(
      "<IRETURNVALUE><INSTANCENAME CLASSNAME='T_Pool'><KEYBINDING NAME='Number'><KEYVALUE "
      "VALUETYPE='numeric'>9"
      "</KEYVALUE></KEYBINDING><KEYBINDING NAME='Name'><KEYVALUE>n</KEYVALUE></KEYBINDING></INSTANCENAME>"
      "<INSTANCENAME CLASSNAME='T_Base'><KEYVALUE VALUETYPE='string'>only</KEYVALUE></INSTANCENAME>"
      "</IRETURNVALUE>"));
  EXPECT_EQ(*names.paths.at(0).key("Number"), Value::uint16(9)) << "typed by the schema";
  EXPECT_EQ(*names.paths.at(0).key("Name"), Value::string("n"));
  EXPECT_EQ(*names.paths.at(1).key("Name"), Value::string("only"));

  const AnswerMessage untyped = read(
      "<METHODRESPONSE NAME='Grow'><RETURNVALUE><VALUE>0</VALUE></RETURNVALUE>"
      "<PARAMVALUE NAME='Note'><VALUE>5</VALUE></PARAMVALUE></METHODRESPONSE>",
      sampleSchema()->find("T_Pool")->method("Grow"));
  EXPECT_EQ(untyped.returnValue, Value::uint32(0));
  EXPECT_EQ(*untyped.output.find("Note"), Value::string("5"));
}

TEST(AnswerMessage, RefusesWhatIsNotAnAnswer) {
  constexpr const char* TWO_KINDS_OF_KEYS =
      "<IMETHODRESPONSE NAME='X'><IRETURNVALUE><INSTANCENAME CLASSNAME='C'><KEYVALUE>a</KEYVALUE>"
      "<KEYBINDING "
      "NAME='B'><KEYVALUE>b</KEYVALUE></KEYBINDING></INSTANCENAME></IRETURNVALUE></IMETHODRESPONSE>";
  for (const char* content :
       {"", "<IMETHODCALL NAME='X'/>", "<IMETHODRESPONSE NAME='X'><ERROR/></IMETHODRESPONSE>",
        "<IMETHODRESPONSE NAME='X'><ERROR CODE='-1'/></IMETHODRESPONSE>",
        "<IMETHODRESPONSE NAME='X'><ERROR CODE='0'/></IMETHODRESPONSE>",
        "<IMETHODRESPONSE NAME='X'><ERROR CODE='99999'/></IMETHODRESPONSE>",
        "<IMETHODRESPONSE NAME='X'><OTHER/></IMETHODRESPONSE>", TWO_KINDS_OF_KEYS,
        "<IMETHODRESPONSE NAME='X'><IRETURNVALUE><INSTANCE/></IRETURNVALUE></IMETHODRESPONSE>"}) {
    EXPECT_THAT(badMessageOf([&] { read(content); }), HasSubstr("request-not-valid: ")) << content;
  }
}

}  // namespace
}  // namespace tvp::host::cimxml::test
