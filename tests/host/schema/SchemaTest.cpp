// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofReader.h"
#include "host/schema/Names.h"

#include <gtest/gtest.h>

namespace tvp::host {
namespace {

std::string errorOf(const std::string& text) {
  try {
    MofReader::readText(text, "a.mof");
  } catch (const MofError& problem) {
    return problem.what();
  }
  return "no error";
}

TEST(MofReader, SaysWhereAndWhatWasExpected) {
  const struct {
    const char* text;
    const char* error;
  } cases[] = {
      {"class A {\n string X\n};", "a.mof:3: expected a semicolon after the feature, found '}'"},
      {"class A {\n strin X;\n};",
       "a.mof:2: expected a type such as uint32, string or boolean, or a class and REF, found 'strin'"},
      {"class A { string ; };", "a.mof:1: expected a name after the type, found ';'"},
      {"class A {",
       "a.mof:1: expected a property, a method or } at the end of the class, found the end of the file"},
      {"class A { }", "a.mof:1: expected a semicolon after the class, found the end of the file"},
      {"instance of A { };", "a.mof:1: expected a class declaration, found 'instance'"},
      {"\n\nclass A : B { };", "a.mof:3: the superclass B of A is not declared before it"},
      {"class A { };\nclass a { };", "a.mof:2: the class a is declared twice"},
      {"class CIM_A : CIM_A { };", "a.mof:1: the class CIM_A derives from itself"},
      {"class A : CIM_B { };\nclass CIM_B : A { };",
       "a.mof:2: the class CIM_B is declared after a class that derives from it"},
      {"class A { string X;\n uint8 x; };", "a.mof:2: the property x is declared twice"},
      {"class A { uint32 M(\n string X, string x); };", "a.mof:2: the parameter x is declared twice"},
      {"class A {\n [EmbeddedInstance(\"A\")] string X; };",
       "a.mof:2: expected the name of a class declared before as the EmbeddedInstance of X, found 'A'"},
      {"class B { };\nclass A { [EmbeddedInstance(\"B\")] uint8 X; };",
       "a.mof:2: expected the type string for X, which is embedded"},
      {"[Description(\"x] class A { };", "a.mof:1: this text has no end, expected a closing quote"},
      {"[Description(\"\\q\")] class A { };",
       "a.mof:1: unknown escape in a text, expected one of \\n \\t \\r \\b \\f \\\" \\' \\\\"},
      {"/* open\n\n", "a.mof:1: this comment has no end, expected */"},
      {"[Max(99999999999999999999)] class A { };",
       "a.mof:1: '99999999999999999999' is not a number of at most 64 bits"},
      {"[Values{\"a\" \"b\", }] class A { };",
       "a.mof:1: expected a text, a number, TRUE, FALSE or NULL, found '}'"},
      {"class A { string X[; };", "a.mof:1: expected ] after the array mark, found ';'"},
      {"class A @ { };", "a.mof:1: unexpected character '@'"},
      {"class A \x01 { };", "a.mof:1: unexpected byte 1"},
      {"qualifier Key : boolean = false",
       "a.mof:1: expected a semicolon after the qualifier declaration, found the end of the file"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(errorOf(each.text), each.error);
  }
  EXPECT_THROW(MofReader::readFile("/nowhere/a.mof"), MofError);
  EXPECT_THROW(MofReader::readFile("/"), MofError);
}

TEST(MofReader, ReadsWhatASchemaFileUses) {
  const auto schema = MofReader::readText(
      R"(
    #pragma locale ("en_US")
    Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
    /* a part */
    class Part { [Key] string Id; };
    [Version("1.0"), Description("joined " "text \"quoted\"") : ToSubclass Translatable]
    class Thing {
      [Key, Write, ValueMap{"1", "2"}, Values{"One", "Two"}] uint16 Code = 1;  // a comment
      sint64 Many[]; uint8 Three[3]; Part REF Owner;
      [EmbeddedInstance("Part")] string Parts[];
      uint32 Do([In, Out] uint8 Both, [In(false), Out] boolean Answer[]);
      uint32 Nothing();
    };
    [Indication] class Special : THING { uint32 Code; real64 Ratio = -1.5e3; };
    class Alarm : CIM_ProcessIndication { };)",
      "a.mof");
  const SchemaClass* thing = schema->find("thing");
  ASSERT_NE(thing, nullptr);
  EXPECT_EQ(findValue(thing->qualifiers, "Description")->asString(), "joined text \"quoted\"");
  const struct {
    const char* name;
    CMPIType type;
    const char* className;
    bool key;
  } properties[] = {
      {"CODE", CMPI_uint16, "", true},
      {"Many", CMPI_sint64A, "", false},
      {"Three", CMPI_uint8A, "", false},
      {"Owner", CMPI_ref, "Part", false},
      {"parts", CMPI_instanceA, "Part", false}};
  for (const auto& expected : properties) {
    const SchemaProperty* property = thing->property(expected.name);
    ASSERT_NE(property, nullptr) << expected.name;
    EXPECT_EQ(property->type, expected.type) << expected.name;
    EXPECT_EQ(property->className, expected.className);
    EXPECT_EQ(property->key, expected.key) << expected.name;
  }
  EXPECT_TRUE(thing->property("Code")->writable);
  EXPECT_EQ(thing->property("Code")->valueName("2"), "Two");
  EXPECT_EQ(thing->property("Code")->valueName("3"), "");
  const SchemaMethod* method = thing->method("do");
  ASSERT_NE(method, nullptr);
  EXPECT_TRUE(method->parameter("Both")->in && method->parameter("Both")->out);
  EXPECT_FALSE(method->parameter("answer")->in);
  EXPECT_EQ(method->parameter("answer")->type, CMPI_booleanA);

  const SchemaClass* special = schema->find("Special");
  EXPECT_EQ(special->properties.size(), 6U) << "a redeclared property takes the inherited one's place";
  EXPECT_EQ(special->properties[0].type, CMPI_uint32);
  EXPECT_EQ(special->properties[1].origin, "Thing");
  EXPECT_TRUE(special->isIndication());
  EXPECT_TRUE(schema->isA("SPECIAL", "thing"));
  EXPECT_FALSE(schema->isA("Thing", "Special"));
  EXPECT_TRUE(schema->isA("Alarm", "cim_processindication"));
  EXPECT_EQ(schema->classes().size(), 4U) << "a class that is only named is not listed";
}

/** What object managers choke on must not get into the product's schema. */
TEST(ProductSchema, CompilesAnywhere) {
  const auto schema = MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  EXPECT_EQ(schema->classes().size(), 11U);
  for (const SchemaClass* known : schema->classes()) {
    bool identified = known->isIndication();
    for (const SchemaProperty& property : known->properties) {
      EXPECT_FALSE(property.key && (property.type & CMPI_ARRAY) != 0) << known->name << "." << property.name;
      identified = identified || property.key;
      EXPECT_FALSE(property.text("Description").empty()) << known->name << "." << property.name;
    }
    EXPECT_TRUE(identified) << known->name << " has no key";
    for (const SchemaMethod& method : known->methods) {
      EXPECT_EQ(method.type, CMPI_uint32) << method.name;
    }
  }
  EXPECT_TRUE(schema->isA("TVP_CIMIndication", "CIM_ProcessIndication"));
  const SchemaClass* service = schema->find("TVP_TierService");
  EXPECT_GE(service->methods.size(), 12U);
  EXPECT_EQ(service->method("CreateVirtualVolume")->parameter("UsedSizeInSectors")->type, CMPI_uint64A);
  EXPECT_EQ(service->method("CreateVirtualPool")->parameter("RetStat")->valueName("21"), "Drive In Use");
  EXPECT_EQ(
      service->method("GetVirtualPoolMembers")->parameter("Members")->className, "TVP_VirtualPoolMember");
}

}  // namespace
}  // namespace tvp::host
