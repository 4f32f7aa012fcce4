// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/ArgumentText.h"

#include "host/schema/MofReader.h"
#include "host/tvpcim/Failure.h"

#include <gmock/gmock.h>

namespace tvp::host::tvpcim {
namespace {

const char* const SCHEMA = R"(
class TVP_Thing {
  [Key] string Name;
  boolean Flag;
  uint8 Small;
  sint8 Signed;
  uint64 Large;
  real64 Real;
  datetime Time;
  uint8 Numbers[];
  string Texts[];
  uint32 Start([In] uint32 Id, [In] string Names[], [In(false), Out] uint32 Result);
};
)";

class ArgumentText : public testing::Test {
protected:
  const std::shared_ptr<const Schema> m_schema = MofReader::readText(SCHEMA, "thing.mof");
  const SchemaClass& m_class = *m_schema->find("TVP_Thing");
};

TEST_F(ArgumentText, IsReadByTheDeclaredType) {
  const auto texts = [](const std::vector<std::string>& elements) {
    Value::List list;
    for (const std::string& element : elements) {
      list.push_back(Value::string(element));
    }
    return Value::array(CMPI_string, list);
  };
  const struct {
    const char* text;
    const char* name;
    Value value;
  } cases[] = {
      {"name=a=b, \"c\"", "Name", Value::string("a=b, \"c\"")},
      {"Name=", "Name", Value::string("")},
      {"Name=null", "Name", Value::string("null")},
      {"Flag=TRUE", "Flag", Value::boolean(true)},
      {"Flag=null", "Flag", Value::null(CMPI_boolean)},
      {"SMALL=255", "Small", Value::uint8(255)},
      {"Small=0xff", "Small", Value::uint8(255)},
      {"Small=007", "Small", Value::uint8(7)},
      {"Signed=-128", "Signed", Value::signedInteger(CMPI_sint8, -128)},
      {"Large=18446744073709551615", "Large", Value::uint64(18446744073709551615U)},
      {"Real=-2.5e3", "Real", Value::real(CMPI_real64, -2500)},
      {"Time=20260131235959.000000+060", "Time",
       Value::dateTime(*DateTime::parse("20260131235959.000000+060"))},
      {"Numbers=1,2,0x3", "Numbers",
       Value::array(CMPI_uint8, {Value::uint8(1), Value::uint8(2), Value::uint8(3)})},
      {"Numbers=[4, 5]", "Numbers", Value::array(CMPI_uint8, {Value::uint8(4), Value::uint8(5)})},
      {"Numbers=", "Numbers", Value::array(CMPI_uint8, {})},
      {"Numbers=null", "Numbers", Value::null(CMPI_uint8A)},
      {"Texts=a,,b", "Texts", texts({"a", "", "b"})},
      {"Texts=[\"a, b\", \"]\"]", "Texts", texts({"a, b", "]"})},
  };
  for (const auto& [text, name, value] : cases) {
    SCOPED_TRACE(text);
    const std::vector<NamedValue> values = parseProperties(m_class, {text});
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0].value, value);
    EXPECT_EQ(values[0].value.type(), value.type());
    EXPECT_STREQ(values[0].name.c_str(), name) << "the schema's spelling is used";
  }
}

TEST_F(ArgumentText, IsRefusedWithWhatWasExpected) {
  const struct {
    std::vector<std::string> texts;
    const char* expected;
  } cases[] = {
      {{"Small=256"}, "Small is of type uint8: '256' is not a whole number from 0 to 255"},
      {{"Small=-1"}, "'-1' is not a whole number from 0 to 255"},
      {{"Small="}, "'' is not a whole number"},
      {{"Small=0x"}, "'0x' is not a whole number"},
      {{"Small=1 "}, "'1 ' is not a whole number"},
      {{"Signed=-129"}, "from -128 to 127"},
      {{"Large=18446744073709551616"}, "from 0 to 18446744073709551615"},
      {{"Real=nan"}, "is not a number"},
      {{"Flag=yes"}, "give true or false"},
      {{"Time=yesterday"}, "date-time such as"},
      {{"Numbers=1,,2"}, "'' is not a whole number"},
      {{"Numbers=[1,[2]]"}, "is not an array of plain values"},
      {{"Texts=[\"a\""}, "write it 1,2,3 or as JSON"},
      {{"Smal=1"},
       "CIM_ERR_NO_SUCH_PROPERTY: the class TVP_Thing has no property 'Smal'; did you mean 'Small'?"},
      {{"Small"}, "'Small' is not of the form NAME=VALUE"},
      {{"=1"}, "not of the form NAME=VALUE"},
      {{"Small=1", "small=2"}, "Small is given twice"},
      {{"Sma\x1bll=1"}, "'Sma\\x1Bll'"},
  };
  for (const auto& [texts, expected] : cases) {
    SCOPED_TRACE(texts.front());
    try {
      parseProperties(m_class, texts);
      ADD_FAILURE() << "was taken";
    } catch (const UsageError& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr(expected));
    }
  }
}

TEST_F(ArgumentText, KnowsWhichArgumentsGoIn) {
  const SchemaMethod& method = *m_class.method("Start");
  const Arguments arguments = parseArguments(method, {"Names=x", "Id=3"});
  EXPECT_EQ(*arguments.find("Id"), Value::uint32(3));
  EXPECT_EQ(arguments.values.front().name, "Names");
  const std::pair<const char*, const char*> refused[] = {
      {"Result=1", "has no input argument 'Result'; it has: Id, Names"},
      {"names=x", "has no input argument 'names'"}};
  for (const auto& [text, expected] : refused) {
    try {
      parseArguments(method, {text});
      ADD_FAILURE() << text << " was taken";
    } catch (const UsageError& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr(expected));
    }
  }
}

}  // namespace
}  // namespace tvp::host::tvpcim
