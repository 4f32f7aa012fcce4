// SPDX-License-Identifier: Apache-2.0
#include "tests/host/SampleProvider.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tvp::host::testing {
namespace {

class Strictness : public ::testing::Test {
protected:
  CMPIInstance* newInstance(const char* className) {
    CMPIStatus status{};
    return CMNewInstance(m_cmpi, CMNewObjectPath(m_cmpi, "root/sample", className, nullptr), &status);
  }

  /** An array of that many elements, all null. */
  CMPIValue array(CMPIType elementType, CMPICount size = 1) {
    CMPIValue value{};
    value.array = CMNewArray(m_cmpi, size, elementType, nullptr);
    return value;
  }

  CMPIValue embedded(const char* className) {
    CMPIValue value{};
    value.inst = newInstance(className);
    return value;
  }

  CMPIValue string(const char* text) {
    CMPIValue value{};
    value.string = CMNewString(m_cmpi, text, nullptr);
    return value;
  }

  Broker m_broker{sampleSchema()};
  const CMPIBroker* m_cmpi = m_broker.cmpi();
  Request m_request{m_broker};
};

TEST_F(Strictness, PropertiesTakeTheirNameAndTypeOnly) {
  CMPIInstance* disk = newInstance("sample_disk");
  ASSERT_NE(disk, nullptr);
  CMPIValue number{};
  number.uint64 = 5;
  const struct {
    const char* what;
    const char* property;
    CMPIValue value;
    CMPIType type;
    CMPIrc expected;
  } cases[] = {
      {"exact", "Count", number, CMPI_uint32, CMPI_RC_OK},
      {"other case", "cOUNT", number, CMPI_uint32, CMPI_RC_OK},
      {"inherited", "Small", number, CMPI_uint8, CMPI_RC_OK},
      {"unknown", "Nothing", number, CMPI_uint32, CMPI_RC_ERR_NO_SUCH_PROPERTY},
      {"of another sign", "Count", number, CMPI_sint32, CMPI_RC_ERR_TYPE_MISMATCH},
      {"of another width", "Count", number, CMPI_uint64, CMPI_RC_ERR_TYPE_MISMATCH},
      {"signed byte", "Small", number, CMPI_sint8, CMPI_RC_ERR_TYPE_MISMATCH},
      {"number for text", "Name", number, CMPI_uint32, CMPI_RC_ERR_TYPE_MISMATCH},
      {"text for number", "Count", string("5"), CMPI_string, CMPI_RC_ERR_TYPE_MISMATCH},
      {"string", "Name", string("x"), CMPI_string, CMPI_RC_OK},
      {"array", "Ranges", array(CMPI_uint64), CMPI_uint64A, CMPI_RC_OK},
      {"scalar for array", "Ranges", number, CMPI_uint64, CMPI_RC_ERR_TYPE_MISMATCH},
      {"array of others", "Ranges", array(CMPI_uint32), CMPI_uint32A, CMPI_RC_ERR_TYPE_MISMATCH},
      {"array of other elements than the type says", "Ranges", array(CMPI_uint32), CMPI_uint64A,
       CMPI_RC_ERR_TYPE_MISMATCH},
      {"array of texts by pointer", "Labels", array(CMPI_chars), CMPI_stringA, CMPI_RC_OK},
      {"embedded", "Part", embedded("Sample_Part"), CMPI_instance, CMPI_RC_OK},
      {"embedded subclass", "Part", embedded("Sample_SpecialPart"), CMPI_instance, CMPI_RC_OK},
      {"embedded other class", "Part", embedded("Sample_Base"), CMPI_instance, CMPI_RC_ERR_TYPE_MISMATCH},
      {"no type of a value", "Count", number, CMPI_args, CMPI_RC_ERR_INVALID_DATA_TYPE},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(CMSetProperty(disk, each.property, &each.value, each.type).rc, each.expected) << each.what;
  }
  EXPECT_EQ(
      CMSetProperty(disk, "Name", reinterpret_cast<const CMPIValue*>("chars"), CMPI_chars).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetProperty(disk, "Size", nullptr, CMPI_uint64).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetProperty(disk, nullptr, &number, CMPI_uint32).rc, CMPI_RC_ERR_INVALID_PARAMETER);

  const Instance read = Request::read(disk);
  EXPECT_EQ(*read.property("Name"), Value::string("chars")) << "the last value stays";
  EXPECT_EQ(*read.property("Count"), Value::uint32(5)) << "a refused value changes nothing";
  EXPECT_EQ(*read.property("Delta"), Value::null(CMPI_sint8));
  EXPECT_EQ(read.properties.front().name, "Name") << "properties stand as the schema has them";
  CMPIStatus status{};
  EXPECT_EQ(CMGetProperty(disk, "Nothing", &status).state, CMPI_notFound);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(Strictness, ALenientBrokerDropsWhatDoesNotFit) {
  BrokerOptions options;
  options.lenient = true;
  Broker lenient(sampleSchema(), options);
  Request request(lenient);
  CMPIInstance* disk = CMNewInstance(lenient.cmpi(), request.objectPath(samplePath()), nullptr);
  CMPIValue number{};
  EXPECT_EQ(CMSetProperty(disk, "Nothing", &number, CMPI_uint32).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetProperty(disk, "Name", &number, CMPI_uint32).rc, CMPI_RC_OK);
  EXPECT_EQ(Request::read(disk), sampleSchema()->emptyInstance(samplePath()));
}

// What else is different is in the recorded lives, which run as each of them.
TEST_F(Strictness, ABrokerActsAsTheObjectManagerItIsTold) {
  const Broker pegasus(sampleSchema(), optionsAs("openpegasus"));
  EXPECT_STREQ(pegasus.cmpi()->bft->brokerName, "Pegasus");
  EXPECT_EQ(pegasus.cmpi()->mft, nullptr);
  Broker sfcb(sampleSchema(), optionsAs("sfcb"));
  EXPECT_STREQ(sfcb.cmpi()->bft->brokerName, "RequestHandler");
  EXPECT_STREQ(Broker(sampleSchema(), optionsAs(nullptr)).cmpi()->bft->brokerName, "tvp host");
  EXPECT_THROW(optionsAs("another"), std::invalid_argument);

  Request request(sfcb);
  CMPIStatus status{};
  CMGetKeyAt(request.objectPath(samplePath()), 0, nullptr, &status);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  EXPECT_EQ(status.msg, nullptr);
  CMGetKeyAt(m_request.objectPath(samplePath()), 0, nullptr, &status);
  EXPECT_STREQ(CMGetCharsPtr(status.msg, nullptr), "CMPIObjectPath.getKeyAt failed with status 12");

  Provider provider(sfcb, sampleFactories(), CallOptions{true, std::nullopt});
  sampleInstanceTable.createInstance = [](auto, auto, auto result, auto...) { return CMReturnDone(result); };
  EXPECT_TRUE(provider.createInstance(samplePath(), {samplePath(), {}}).ok());
  EXPECT_NE(breachTexts(sfcb).find("success without a path"), std::string::npos);
  EXPECT_TRUE(provider.authorizeFilter({}).ok());
  EXPECT_EQ(sampleBehaviour().seen.back(), "-") << "nobody owns a filter without authentication";
  bool listed = true;
  sampleBehaviour().modify = [&listed](auto, auto, const char** names) {
    listed = names != nullptr;
    return ok();
  };
  EXPECT_TRUE(provider.modifyInstance(samplePath(), {samplePath(), {}}).ok());
  EXPECT_FALSE(listed);
}

TEST_F(Strictness, KeysAreScalars) {
  CMPIObjectPath* path = CMNewObjectPath(m_cmpi, nullptr, "Sample_Disk", nullptr);
  CMPIValue number{};
  number.uint32 = 7;
  CMPIValue list = array(CMPI_uint64);
  EXPECT_EQ(CMAddKey(path, "Anything", &number, CMPI_uint32).rc, CMPI_RC_OK);
  EXPECT_EQ(CMAddKey(path, "Ranges", &list, CMPI_uint64A).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
  EXPECT_EQ(CMAddKey(path, "Part", &number, CMPI_instance).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
  EXPECT_EQ(CMAddKey(path, "Null", nullptr, CMPI_uint32).rc, CMPI_RC_ERR_INVALID_PARAMETER);
  EXPECT_EQ(CMGetKeyCount(path, nullptr), 1U);
  CMPIString* name = nullptr;
  const CMPIData key = CMGetKeyAt(path, 0, &name, nullptr);
  EXPECT_EQ(key.type, CMPI_uint32);
  EXPECT_EQ(key.state, CMPI_keyValue);
  EXPECT_EQ(key.value.uint32, 7U);
  EXPECT_STREQ(CMGetCharsPtr(name, nullptr), "Anything");
  CMPIStatus status{};
  CMGetKey(path, "Other", &status);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(Strictness, OnlyKnownClassesHaveInstances) {
  CMPIStatus status{};
  CMPIObjectPath* unknown = CMNewObjectPath(m_cmpi, "root", "Sample_Nothing", nullptr);
  EXPECT_EQ(CMNewInstance(m_cmpi, unknown, &status), nullptr);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);
  EXPECT_TRUE(CMClassPathIsA(
      m_cmpi, CMNewObjectPath(m_cmpi, "root", "sample_disk", nullptr), "Sample_Base", nullptr));
  EXPECT_FALSE(CMClassPathIsA(m_cmpi, unknown, "Sample_Base", nullptr));
}

TEST_F(Strictness, OutputArgumentsAreTheMethods) {
  CMPIArgs* output = m_request.outputArguments(sampleSchema()->find("Sample_Disk")->method("Scan"));
  CMPIValue number{};
  CMPIValue labels = array(CMPI_string);
  EXPECT_EQ(CMAddArg(output, "Level", &number, CMPI_uint8).rc, CMPI_RC_OK);
  EXPECT_EQ(CMAddArg(output, "Level", &number, CMPI_sint8).rc, CMPI_RC_OK)
      << "unsigned bytes travel as signed ones";
  EXPECT_EQ(CMAddArg(output, "Level", &number, CMPI_uint16).rc, CMPI_RC_ERR_TYPE_MISMATCH);
  EXPECT_EQ(CMAddArg(output, "Labels", &labels, CMPI_stringA).rc, CMPI_RC_OK);
  EXPECT_EQ(CMAddArg(output, "Depth", &number, CMPI_uint32).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY) << "an input";
  EXPECT_EQ(CMAddArg(output, "Nothing", &number, CMPI_uint32).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  EXPECT_EQ(CMGetArgCount(output, nullptr), 2U);
}

TEST_F(Strictness, ArraysTakeTheirElementTypeWithinTheirSize) {
  CMPIArray* numbers = array(CMPI_uint64A, 2).array;
  EXPECT_EQ(CMGetArrayType(numbers, nullptr), CMPI_uint64) << "the array's own type stands for its elements'";
  CMPIValue number{};
  number.uint64 = 18446744073709551615ULL;
  EXPECT_EQ(CMSetArrayElementAt(numbers, 0, &number, CMPI_uint64).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetArrayElementAt(numbers, 1, &number, CMPI_uint32).rc, CMPI_RC_ERR_TYPE_MISMATCH);
  EXPECT_EQ(CMSetArrayElementAt(numbers, 2, &number, CMPI_uint64).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  EXPECT_EQ(CMGetArrayElementAt(numbers, 0, nullptr).value.uint64, number.uint64);
  EXPECT_EQ(CMGetArrayElementAt(numbers, 1, nullptr).state, CMPI_nullValue);
  CMPIStatus status{};
  EXPECT_EQ(CMNewArray(m_cmpi, 1, CMPI_args, &status), nullptr);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
}

TEST_F(Strictness, ValuesAreCopiedWhenTheyAreSet) {
  CMPIInstance* disk = newInstance("Sample_Disk");
  CMPIValue part = embedded("Sample_Part");
  CMSetProperty(part.inst, "Id", reinterpret_cast<const CMPIValue*>("first"), CMPI_chars);
  ASSERT_EQ(CMSetProperty(disk, "Part", &part, CMPI_instance).rc, CMPI_RC_OK);
  CMSetProperty(part.inst, "Id", reinterpret_cast<const CMPIValue*>("second"), CMPI_chars);
  CMPIInstance* read = CMGetProperty(disk, "Part", nullptr).value.inst;
  EXPECT_STREQ(CMGetCharsPtr(CMGetProperty(read, "Id", nullptr).value.string, nullptr), "first");
  EXPECT_EQ(CMRelease(part.inst).rc, CMPI_RC_OK);
  EXPECT_STREQ(CMGetCharsPtr(CMGetProperty(read, "Id", nullptr).value.string, nullptr), "first");
}

TEST_F(Strictness, AFilterDropsWhatIsNotAskedFor) {
  CMPIInstance* disk = newInstance("Sample_Disk");
  const char* names[] = {"count", nullptr};
  CMSetPropertyFilter(disk, names, nullptr);
  CMPIValue number{};
  number.uint64 = 9;
  EXPECT_EQ(CMSetProperty(disk, "Count", &number, CMPI_uint32).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetProperty(disk, "Size", &number, CMPI_uint64).rc, CMPI_RC_OK);
  EXPECT_EQ(CMSetProperty(disk, "Nothing", &number, CMPI_uint64).rc, CMPI_RC_OK);
  EXPECT_EQ(
      CMSetProperty(disk, "Name", reinterpret_cast<const CMPIValue*>("key"), CMPI_chars).rc, CMPI_RC_OK);
  const Instance read = Request::read(disk);
  ASSERT_EQ(read.properties.size(), 2U);
  EXPECT_EQ(*read.property("Name"), Value::string("key")) << "keys pass every filter";
  EXPECT_EQ(*read.property("Count"), Value::uint32(9));
}

TEST_F(Strictness, EveryTypeOfValueTravelsUnchanged) {
  const Value values[] = {
      Value::boolean(true),
      Value::unsignedInteger(CMPI_char16, 65535),
      Value::uint8(255),
      Value::uint16(65535),
      Value::uint32(4294967295U),
      Value::uint64(18446744073709551615ULL),
      Value::signedInteger(CMPI_sint8, -128),
      Value::signedInteger(CMPI_sint16, -32768),
      Value::signedInteger(CMPI_sint32, -2147483647 - 1),
      Value::sint64(-9223372036854775807LL - 1),
      Value::sint64(9223372036854775807LL),
      Value::real(CMPI_real32, 0.5),
      Value::real(CMPI_real64, -1e300),
      Value::string("\xC3\xA9"),
      Value::dateTime(*DateTime::parse("20260131235959.123456+060")),
      Value::reference(samplePath()),
      Value::instance(sampleSchema()->emptyInstance(samplePath("Sample_Part"))),
      Value::array(CMPI_string, {Value::string("a"), Value::null(CMPI_string)}),
      Value::array(CMPI_instance, {}),
      Value::null(CMPI_uint32)};
  Arguments all;
  for (const Value& value : values) {
    all.add("V" + std::to_string(all.values.size()), value);
  }
  CMPIArgs* source = m_request.arguments(all);
  CMPIArgs* target = CMNewArgs(m_cmpi, nullptr);
  for (CMPICount i = 0; i < CMGetArgCount(source, nullptr); ++i) {
    CMPIString* name = nullptr;
    const CMPIData data = CMGetArgAt(source, i, &name, nullptr);
    const CMPIValue* value = CMIsNullValue(data) ? nullptr : &data.value;
    EXPECT_EQ(CMAddArg(target, CMGetCharsPtr(name, nullptr), value, data.type).rc, CMPI_RC_OK) << values[i];
  }
  EXPECT_EQ(Request::read(target), all);
}

}  // namespace
}  // namespace tvp::host::testing
