// SPDX-License-Identifier: Apache-2.0
// The framework's exception and the small text helpers.
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "model/Describe.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>

namespace {

using namespace tvp::cim::fwf;
using namespace tvp::test;
using Helpers = CommonFunctions;

TEST(Exception, KeepsItsCodeAndCutsFormattedTextsOnly) {
  const std::string longText(2000, 'x');
  EXPECT_EQ(CIMException().getErrMessage(), "");
  const CIMException formatted(FW_RC_NOT_SUPPORTED, "%s %d", longText.c_str(), 1);
  EXPECT_EQ(formatted.getErrCode(), 7U);
  EXPECT_EQ(formatted.getErrMessage(), longText.substr(0, 1023));
  EXPECT_EQ(CIMException(4711, longText + "%s").getErrMessage(), longText + "%s");
  EXPECT_EQ(CIMException(CIMException(4711, std::string("text"))).getErrCode(), 4711U);
  EXPECT_EQ(frameworkError(FW_RC_INTERNAL_ERROR, "f", "100%s").getErrMessage(), "f :: 100%s");
  const std::pair<const char*, const char*> suffixes[] = {
      {OPERATION_FAILED_SUFFIX, "f ::  :: Operation Failed."},
      {INVALID_NAMESPACE_SUFFIX, "f ::  :: Invalid namespace."},
      {INVALID_CLASS_SUFFIX, "f ::  :: Invalid class."},
      {NOT_SUPPORTED_SUFFIX, "f ::  :: Not supported."}};
  for (const auto& [suffix, message] : suffixes) {
    EXPECT_EQ(frameworkErrorWithStop(FW_RC_FAILED, "f", suffix).getErrMessage(), message);
  }
}

TEST(Helpers, TextsAreSplitAtTheirSeparators) {
  struct Case {
    const char* text;
    unsigned int part;
    const char* expected;
  };
  const Case parts[] = {
      {"A_B_C", 1, "A"}, {"A_B_C", 2, "B_C"}, {"A_B_C", 3, "C"}, {"A_B_C", 4, "A_B_C"}, {"A_B_C", 0, "A_B_C"},
      {"ABC", 1, "ABC"}, {"ABC", 2, "ABC"},   {"ABC", 3, "ABC"}, {"A_B", 3, "B"},       {"A_B_C_D", 3, "C_D"},
      {"_A", 1, ""},     {"A_", 2, ""},       {"", 1, ""}};
  for (const Case& item : parts) {
    EXPECT_EQ(Helpers::getStringAt(item.text, item.part), item.expected) << item.text << item.part;
  }
  const Case fields[] = {{"a:b:c:d", 1, "a"}, {"a:b:c:d", 4, "d"}, {"a:b:c:d", 5, ""}, {"a:b", 4, ""},
                         {"a::c", 2, ""},     {"a:", 2, ""},       {"", 1, ""},        {"a:b", 0, ""}};
  for (const Case& item : fields) {
    EXPECT_EQ(Helpers::getStringAtPosition(item.text, item.part, ':'), item.expected)
        << item.text << item.part;
  }
  const std::pair<const char*, std::optional<std::string>> identifiers[] = {
      {"A_B_C", "B"}, {"A_B", "B"}, {"_B_", "B"}, {"A__C", ""}, {"A_", std::nullopt}, {"ABC", std::nullopt}};
  for (const auto& [text, expected] : identifiers) {
    EXPECT_EQ(Helpers::getControllerId(text), expected) << text;
  }
  EXPECT_EQ(Helpers::stripExtraSemicolons(";a;b;"), "a;b");
  EXPECT_EQ(Helpers::stripExtraSemicolons("xy"), "");
  EXPECT_EQ(Helpers::stripExtraSemicolons("x"), "");
}

TEST(Helpers, NumbersAreReadFromTexts) {
  const std::pair<const char*, int> cases[] = {
      {"42", 42}, {" -7x", -7}, {"12.9", 12}, {"", 0},
      {"x1", 0},  {"+", 0},     {"0x10", 0},  {"99999999999", std::numeric_limits<int>::max()}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Helpers::str2int(text), expected) << text;
  }
}

TEST(Helpers, TrimKeepsCarriageReturns) {
  const std::pair<const char*, const char*> cases[] = {
      {" \t\na b\n\t ", "a b"}, {"a\r\n", "a\r"}, {"a\n\r", "a\n\r"}, {" \n\t ", ""}, {"", ""}, {"ab", "ab"}};
  for (const auto& [text, expected] : cases) {
    std::string buffer(text);
    const std::size_t length = Helpers::trim(buffer.data());
    EXPECT_STREQ(buffer.c_str(), expected);
    EXPECT_EQ(length, std::string(expected).size());
  }
  EXPECT_EQ(Helpers::trim(nullptr), 0U);
}

TEST(Helpers, RedundancyOfUnknownLevelsChangesNothing) {
  unsigned short first = 77;
  unsigned short redundancy = 88;
  EXPECT_FALSE(Helpers::getRedundancy(10, first, redundancy));
  EXPECT_TRUE(first == 77 && redundancy == 88);
  EXPECT_TRUE(Helpers::getRedundancy(6, first, redundancy));
  EXPECT_TRUE(first == 0 && redundancy == 2);
}

TEST(Helpers, ObjectsAreNullWithKeysButWithoutAClass) {
  const std::vector<CIMProperty> keys = {text("Key", "1", true)};
  EXPECT_TRUE(Helpers::ObjectIsNull({"h", "n", "", keys}));
  EXPECT_FALSE(Helpers::ObjectIsNull({"h", "n", "Class", keys}));
  EXPECT_FALSE(Helpers::ObjectIsNull({"h", "n", "", {}}));
  EXPECT_FALSE(Helpers::ObjectIsNull(CIMObjectPath()));
}

TEST(Helpers, CaseIsLoweredBytewise) {
  // Of these locales the installed ones count; the Turkish one lowers "I" to another letter.
  for (const char* locale : {"de_DE.ISO-8859-1", "tr_TR.ISO-8859-9", "C"}) {
    std::setlocale(LC_CTYPE, locale);
    EXPECT_EQ(Helpers::toLower("TVP_Identity\xC3\x84\xFF z"), "tvp_identity\xC3\x84\xFF z") << locale;
  }
  EXPECT_TRUE(Helpers::equalsIgnoringCase("TVP_Pool\xC3", "tvp_pOOL\xC3"));
  EXPECT_FALSE(Helpers::equalsIgnoringCase("TVP_Pool", "tvp_pools"));
  EXPECT_FALSE(Helpers::equalsIgnoringCase("TVP_\xC3", "tvp_\xE3"));
}

TEST(Helpers, ListsOfTextsAreAppended) {
  std::vector<std::string> out = {"before"};
  const char* const list[] = {"a", "", "b", nullptr};
  EXPECT_TRUE(Helpers::convertToStringVector(list, out));
  EXPECT_TRUE(Helpers::convertToStringVector(nullptr, out));
  EXPECT_EQ(out, (std::vector<std::string>{"before", "a", "", "b"}));
}

TEST(Helpers, TimeTextIsAppendedInLocalTimeWithItsZone) {
  setenv("TZ", "LOC-5:30", 1);
  tzset();
  const LogCapture log;
  std::string out = "at ";
  EXPECT_EQ(Helpers::getUTCStringTimeFromUint64Time(out, 1717595112), 0);
  EXPECT_EQ(out, "at 20240605191512.000000+330");
  EXPECT_EQ(log.lines(), std::vector<std::string>{LogCapture::message(4, "Time = " + out)});
  EXPECT_EQ(Helpers::getUTCStringTimeFromUint64Time(out, 40000000000), 1) << "beyond the year 3000";
  EXPECT_EQ(out, "at 20240605191512.000000+330");
  unsetenv("TZ");
  tzset();
}

TEST(Helpers, DebugTextIsPutIntoTheSharedBuffer) {
  EXPECT_EQ(debug_smis_log("a longer text", "prefix"), log_smis_buff);
  EXPECT_STREQ(log_smis_buff, "prefix a longer text");
  EXPECT_STREQ(debug_smis_log("%s", "p"), "p %s");
  EXPECT_EQ(std::string(log_smis_buff + 4, 124), std::string(124, '\0')) << "the buffer was not cleared";
  EXPECT_EQ(std::string(debug_smis_log(std::string(200, 'x').c_str(), "p")), "p " + std::string(125, 'x'));
}

}  // namespace
