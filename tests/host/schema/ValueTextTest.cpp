// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"

#include <gtest/gtest.h>

namespace tvp::host {
namespace {

TEST(ObjectPathText, ComesBackAsItWasWritten) {
  ObjectPath odd;
  odd.nameSpace = "root/a";
  odd.className = "C_1";
  odd.keys = {
      {"Name", Value::string("a \"b\", \\c=1.x:y")},
      {"Number", Value::sint64(-9223372036854775807LL - 1)},
      {"Flag", Value::boolean(false)},
      {"Empty", Value::string("")}};
  ObjectPath bare;
  bare.className = "C";
  ObjectPath hosted = bare;
  hosted.host = "node-1";
  hosted.nameSpace = "root";
  hosted.keys = {{"K", Value::string("//x/y:z")}};
  for (const ObjectPath& path : {odd, bare, hosted}) {
    const ObjectPath back = parsePathText(toPathText(path));
    EXPECT_EQ(back, path) << toPathText(path);
    EXPECT_EQ(back.host, path.host);
    EXPECT_EQ(toPathText(back), toPathText(path));
  }
  EXPECT_EQ(toPathText(hosted), "//node-1/root:C.K=\"//x/y:z\"");
  EXPECT_EQ(parsePathText("c.n=1,m=\"x\""), parsePathText("C.M=\"x\",N=1"));
  EXPECT_NE(parsePathText("C.N=1"), parsePathText("C.N=\"1\""));
}

TEST(ObjectPathText, IsRefusedWithThePlaceAndWhatWasExpected) {
  const struct {
    const char* text;
    const char* error;
  } cases[] = {
      {"", "expected a class name at the end of: "},
      {"C.", "expected the name of a key at the end of: C."},
      {"C.N", "expected an equals sign after the key's name at the end of: C.N"},
      {"C.N=", "expected a number, TRUE, FALSE or a text in quotes at the end of: C.N="},
      {"C.N=x", "expected a number, TRUE, FALSE or a text in quotes at character 5 of: C.N=x"},
      {"C.N=\"x", "expected the closing quote at the end of: C.N=\"x"},
      {"C.N=99999999999999999999",
       "expected a number of at most 64 bits at character 5 of: C.N=99999999999999999999"},
      {"C.N=\"x\";", "expected a comma before the next key, or the end at character 8 of: C.N=\"x\";"},
      {"C,N=1", "expected a dot before the first key, or the end at character 2 of: C,N=1"},
      {"C.N=1,n=2", "the key n is given twice in: C.N=1,n=2"},
      {"//host", "expected a slash after the host name at character 1 of: //host"},
  };
  for (const auto& each : cases) {
    try {
      parsePathText(each.text);
      ADD_FAILURE() << "accepted: " << each.text;
    } catch (const PathSyntaxError& problem) {
      EXPECT_STREQ(problem.what(), each.error);
    }
  }
}

TEST(DateTime, ReadsTimesAndIntervals) {
  const struct {
    const char* text;
    std::uint64_t microseconds;
    const char* iso;
  } good[] = {
      {"19700101000000.000000+000", 0, "1970-01-01T00:00:00.000000+00:00"},
      {"20000301000001.000002+060", 951865201000002ULL, "2000-03-01T00:00:01.000002+01:00"},
      {"20240229120000.000000-330", 1709227800000000ULL, "2024-02-29T12:00:00.000000-05:30"},
      {"00000012010203.000004:000", 1040523000004ULL, "P12DT1H2M3.000004S"},
  };
  for (const auto& each : good) {
    const auto parsed = DateTime::parse(each.text);
    ASSERT_TRUE(parsed) << each.text;
    EXPECT_EQ(parsed->microseconds(), each.microseconds) << each.text;
    EXPECT_EQ(parsed->iso8601(), each.iso);
    const DateTime again = DateTime::fromMicroseconds(parsed->microseconds(), parsed->isInterval());
    EXPECT_EQ(again.microseconds(), DateTime::parse(again.text())->microseconds()) << again.text();
  }
  for (const char* bad :
       {"", "19701301000000.000000+000", "19700100000000.000000+000", "19700101240000.000000+000",
        "19700101000000,000000+000", "19700101000000.000000*000", "1970010100000a.000000+000"}) {
    EXPECT_FALSE(DateTime::parse(bad)) << bad;
  }
}

TEST(Names, AreThoseOfCim) {
  for (const char* name : {"boolean", "string", "uint8", "sint64", "real32", "char16", "datetime"}) {
    EXPECT_EQ(typeName(*typeOfName(name)), name);
  }
  EXPECT_FALSE(typeOfName("chars")) << "no type of a schema";
  EXPECT_EQ(typeName(CMPI_stringA), "string[]");
  EXPECT_EQ(statusName(CMPI_RC_ERR_NOT_FOUND), "CIM_ERR_NOT_FOUND");
  EXPECT_EQ(statusName(static_cast<CMPIrc>(77)), "status 77");
}

}  // namespace
}  // namespace tvp::host
