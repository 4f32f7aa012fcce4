// SPDX-License-Identifier: Apache-2.0
#include "CmpiTest.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"

#include <set>
#include <thread>

namespace tvp::test {
namespace {

using namespace cim::fwf;
using cim::adap::cmpi::CMPIHelper;
using cim::adap::cmpi::CMPIObjectGuard;
using host::Value;

constexpr char WHEN[] = "20260131235959.123456+060";

class OutboundConversionTest : public testing::Test {
protected:
  host::Instance converted(const CIMInstance& instance, const char** properties = nullptr) {
    return host::Request::read(
        CMPIHelper::FrameworkInstanceToCMPIInstance(instance, m_broker.cmpi(), properties));
  }
  CIMInstance part(const char* id) {
    return instanceOf("TEST_Part", {scalar<std::string>("Id", PDT_STRING, id, true)});
  }

  LogCapture m_log;
  host::Broker m_broker{testSchema()};
  host::Broker m_lenient{testSchema(), {CMPI_keyValue, true, 16384}};
  host::Request m_request{m_broker};
};

Value numbers(CMPIType type, std::vector<std::uint64_t> values) {
  Value::List elements;
  for (const std::uint64_t value : values) {
    elements.push_back(Value::unsignedInteger(type, value));
  }
  return Value::array(type, elements);
}

Value signedNumbers(CMPIType type, std::vector<std::int64_t> values) {
  Value::List elements;
  for (const std::int64_t value : values) {
    elements.push_back(Value::signedInteger(type, value));
  }
  return Value::array(type, elements);
}

struct Converted {
  CIMProperty property;
  Value value;
  bool isArgument = false;  ///< it may be one, too
};

TEST_F(OutboundConversionTest, EveryTypeArrivesAsAPropertyAndAsAnArgument) {
  const CIMObjectPath partPath = part("p").getPath();
  const std::vector<Converted> cases = {
      {scalar("Flag", PDT_BOOLEAN, true), Value::boolean(true), true},
      {list<bool>("Flags", PDT_BOOLEAN_ARRAY, {true, false}),
       Value::array(CMPI_boolean, {Value::boolean(true), Value::boolean(false)})},
      {scalar<std::string>("When", PDT_DATETIME, WHEN), Value::dateTime(*host::DateTime::parse(WHEN))},
      {scalar<signed char>("S8", PDT_SINT8, -128), Value::signedInteger(CMPI_sint8, -128), true},
      {list<signed char>("S8s", PDT_SINT8_ARRAY, {-1, 127}), signedNumbers(CMPI_sint8, {-1, 127})},
      {scalar<short>("S16", PDT_SINT16, -32768), Value::signedInteger(CMPI_sint16, -32768), true},
      {list<short>("S16s", PDT_SINT16_ARRAY, {-2, 2}), signedNumbers(CMPI_sint16, {-2, 2})},
      {scalar("S32", PDT_SINT32, -7), Value::signedInteger(CMPI_sint32, -7), true},
      {list<int>("S32s", PDT_SINT32_ARRAY, {-3, 3}), signedNumbers(CMPI_sint32, {-3, 3})},
      {list<std::string>("S64s", PDT_SINT64_ARRAY, {}), signedNumbers(CMPI_sint64, {})},
      {scalar<unsigned char>("U8", PDT_UINT8, 255), Value::uint8(255), true},
      {list<unsigned char>("U8s", PDT_UINT8_ARRAY, {0, 255}), numbers(CMPI_uint8, {0, 255}), true},
      {scalar<unsigned short>("U16", PDT_UINT16, 65535), Value::uint16(65535), true},
      {list<unsigned short>("U16s", PDT_UINT16_ARRAY, {1}), numbers(CMPI_uint16, {1})},
      {scalar("U32", PDT_UINT32, 4294967295U), Value::uint32(4294967295U), true},
      {list<unsigned int>("U32s", PDT_UINT32_ARRAY, {4, 5, 6}), numbers(CMPI_uint32, {4, 5, 6}), true},
      {scalar("U64", PDT_UINT64, ~0ULL), Value::uint64(~0ULL), true},
      {list<unsigned long long>("U64s", PDT_UINT64_ARRAY, {~0ULL, 0}), numbers(CMPI_uint64, {~0ULL, 0}),
       true},
      {scalar<std::string>("Text", PDT_STRING, "100%s \xc3\xa4"), Value::string("100%s \xc3\xa4"), true},
      {list<std::string>("Texts", PDT_STRING_ARRAY, {"a", ""}),
       Value::array(CMPI_string, {Value::string("a"), Value::string("")}), true},
      {scalar("Other", PDT_REFERENCE, partPath),
       Value::reference({TEST_NAMESPACE, "TEST_Part", {{"Id", Value::string("p")}}, ""}), true},
      {list<std::string>("S64", PDT_SINT64, {}), Value::null(CMPI_sint64), true},
      {list<std::string>("Text", PDT_STRING, {}), Value::null(CMPI_string), true},
  };
  for (const Converted& c : cases) {
    const host::Instance instance = converted(instanceOf("TEST_All", {c.property}));
    ASSERT_NE(instance.property(c.property.name()), nullptr) << c.property.name();
    EXPECT_EQ(*instance.property(c.property.name()), c.value) << c.property.name();
    if (c.isArgument) {
      CIMMethodParam params;
      params.addArgument(c.property);
      CMPIArgs* out = m_request.outputArguments();
      CMPIHelper::FrameworkArgumentsToCMPIArguments(params, out, m_broker.cmpi());
      const bool isUint8 = c.property.getType() == PDT_UINT8;  // known to its clients as a signed one
      EXPECT_EQ(
          *host::Request::read(out).find(c.property.name()),
          isUint8 ? Value::signedInteger(CMPI_sint8, -1) : c.value)
          << c.property.name();
    }
  }
  EXPECT_EQ(m_log.count(LogCapture::message(4, "UintStringArray received")), 1U);
  EXPECT_EQ(m_log.count(LogCapture::message(4, "Uint32Array received")), 1U);
}

TEST_F(OutboundConversionTest, OnlyTheFirstEmbeddedInstanceArrivesAndSharesTheFilter) {
  CIMInstance inner = part("1");
  inner.addProperty(scalar("Number", PDT_UINT32, 5U));
  const CIMInstance instance = instanceOf(
      "TEST_All", {scalar<std::string>("Text", PDT_STRING, "t"),
                   list<CIMInstance>("Inside", PDT_INSTANCE, {inner, part("2"), part("3")})});
  EXPECT_EQ(*converted(instance).property("Inside")->asInstance().property("Number"), Value::uint32(5));

  const char* wanted[] = {"Inside", nullptr};
  const host::Instance filtered = converted(instance, wanted);
  EXPECT_EQ(filtered.property("Text"), nullptr);
  EXPECT_EQ(*filtered.property("Inside")->asInstance().property("Id"), Value::string("1"));
  EXPECT_EQ(filtered.property("Inside")->asInstance().property("Number"), nullptr);
}

TEST_F(OutboundConversionTest, ArrayKeysStayOutOfAnInstancesPathButNotOutOfAPath) {
  CIMInstance instance = instanceOf("TEST_All", {scalar<std::string>("Id", PDT_STRING, "x", true)});
  instance.addCimKeyBinding(list<unsigned char>("Ranges", PDT_UINT8_ARRAY, {1, 2}));
  const host::Instance result = converted(instance);
  EXPECT_EQ(result.path.keys.size(), 1U);
  EXPECT_EQ(*result.property("Ranges"), numbers(CMPI_uint8, {1, 2}));

  const auto convertPath = [&] {
    CMPIHelper::FrameworkObjectPathToCMPIObjectPath(instance.getPath(), m_broker.cmpi());
  };
  EXPECT_EQ(thrownCode(convertPath), FW_RC_FAILED) << "the broker refuses array keys";
  bool logged = false;
  for (const std::string& line : m_log.lines()) {
    logged = logged || line.find("FrameworkObjectPathToCMPIObjectPath : Throw exception if operation returns "
                                 "error# 61 with Error msg ") != std::string::npos;
  }
  EXPECT_TRUE(logged);
}

TEST_F(OutboundConversionTest, ScalarKeysOfAPathKeepTypeAndOrder) {
  const CIMObjectPath path(
      "elsewhere", TEST_NAMESPACE, "TEST_All",
      {scalar<std::string>("Id", PDT_STRING, "x", true), scalar("Serial", PDT_UINT32, 3U, true),
       scalar("Flag", PDT_BOOLEAN, true, true), list<std::string>("Empty", PDT_UINT16, {}),
       scalar("Other", PDT_REFERENCE, part("p").getPath(), true)});
  const host::ObjectPath result =
      host::Request::read(CMPIHelper::FrameworkObjectPathToCMPIObjectPath(path, m_broker.cmpi()));
  ASSERT_EQ(result.keys.size(), 4U);
  EXPECT_EQ(result.keys[0].value, Value::string("x"));
  EXPECT_EQ(result.keys[1].value, Value::uint32(3));
  EXPECT_EQ(result.keys[2].value, Value::boolean(true));
  EXPECT_EQ(result.keys[3].name, "Other");
  EXPECT_TRUE(m_log.has(
      LogCapture::message(5, "FrameworkObjectPathToCMPIObjectPath:Key Empty has no value and is left out.")));
}

TEST_F(OutboundConversionTest, ReferencesAndInstancesGoOutAsArguments) {
  CIMMethodParam params;
  params.addArgument(
      list<CIMObjectPath>("References", PDT_REFERENCE_ARRAY, {part("1").getPath(), part("2").getPath()}));
  params.addArgument(list<CIMInstance>("Instance", PDT_INSTANCE, {part("i"), part("j")}));
  params.addArgument(list<CIMInstance>("Instances", PDT_INSTANCE_ARRAY, {part("1"), part("2")}));
  CMPIArgs* out = m_request.outputArguments();
  CMPIHelper::FrameworkArgumentsToCMPIArguments(params, out, m_broker.cmpi());
  const host::Arguments result = host::Request::read(out);
  ASSERT_EQ(result.find("References")->asArray().size(), 2U);
  EXPECT_EQ(*result.find("References")->asArray()[1].asReference().key("Id"), Value::string("2"));
  EXPECT_EQ(*result.find("Instance")->asInstance().property("Id"), Value::string("i"));
  ASSERT_EQ(result.find("Instances")->asArray().size(), 2U);
  EXPECT_EQ(*result.find("Instances")->asArray()[1].asInstance().property("Id"), Value::string("2"));
  EXPECT_EQ(m_log.count(LogCapture::message(4, "Instance ")), 1U);
}

TEST_F(OutboundConversionTest, EachDirectionRefusesTheTypesItDoesNotTake) {
  const std::set<unsigned int> keys = {0,  1,  4,  10, 11, 12, 13, 14, 15, 16, 17,
                                       18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28};
  std::set<unsigned int> properties = keys;
  properties.insert(30);
  const std::set<unsigned int> arguments = {0,  10, 12, 14, 16, 18, 19, 20, 22,
                                            23, 24, 25, 26, 27, 28, 29, 30, 31};
  host::Request request(m_lenient);
  for (unsigned int code = 0; code < 40; ++code) {
    const CIMProperty property = list<std::string>("P", static_cast<Primitive_DataType>(code), {});
    const unsigned int asKey = thrownCode([&] {
      CMPIHelper::FrameworkObjectPathToCMPIObjectPath(
          CIMObjectPath("", "n", "TEST_All", {property}), m_lenient.cmpi());
    });
    EXPECT_EQ(asKey != FW_RC_NOT_SUPPORTED, keys.count(code) != 0) << code;
    const unsigned int asProperty = thrownCode([&] {
      CMPIHelper::FrameworkInstanceToCMPIInstance(
          instanceOf("TEST_All", {property}), m_lenient.cmpi(), nullptr);
    });
    EXPECT_EQ(asProperty, properties.count(code) != 0 ? 0U : 7U) << code;
    CIMMethodParam params;
    params.addArgument(property);
    const unsigned int asArgument = thrownCode([&] {
      CMPIHelper::FrameworkArgumentsToCMPIArguments(params, request.outputArguments(), m_lenient.cmpi());
    });
    EXPECT_EQ(asArgument, arguments.count(code) != 0 ? 0U : 7U) << code;
  }
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "TVP: fwf::FW_RC_NOT_SUPPORTED - propertyType 29")));
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "Unknown datattyppe 4")));
}

TEST_F(OutboundConversionTest, AMismatchIsLoggedWithThePropertyAndEndsTheConversion) {
  const CIMInstance instance = instanceOf("TEST_All", {scalar("Text", PDT_UINT32, 1U)});
  EXPECT_EQ(thrownCode([&] { converted(instance); }), FW_RC_FAILED);
  EXPECT_TRUE(m_log.has(LogCapture::message(
      5, "FrameworkInstanceToCMPIInstance:Exception for the attribute Text due to Type MisMatch ->13.")));
}

/** An instance with everything that needs objects of the broker. */
CIMInstance richInstance() {
  const CIMInstance inner = instanceOf("TEST_Part", {scalar<std::string>("Id", PDT_STRING, "p", true)});
  return instanceOf(
      "TEST_All",
      {scalar<std::string>("Id", PDT_STRING, "x", true), scalar<std::string>("When", PDT_DATETIME, WHEN),
       list<std::string>("Texts", PDT_STRING_ARRAY, {"a", "b"}),
       scalar("Other", PDT_REFERENCE, inner.getPath()), scalar("Inside", PDT_INSTANCE, inner)});
}

// Some object managers keep pointers where others copy: an element must outlive its array.
TEST_F(OutboundConversionTest, WhatWasMadeOnTheWayIsReleasedAsSoonAsItIsUsedAndNotBefore) {
  const char* wanted[] = {"Texts", nullptr};
  m_broker.resetCalls(true);
  converted(instanceOf("TEST_All", {list<std::string>("Texts", PDT_STRING_ARRAY, {"a", "b"})}), wanted);
  const std::vector<std::string> expected = {"CMPIBroker.newObjectPath", "CMPIBroker.newInstance",
                                             "CMPIObjectPath.release",   "CMPIInstance.setPropertyFilter",
                                             "CMPIBroker.newArray",      "CMPIBroker.newString",
                                             "CMPIArray.setElementAt",   "CMPIBroker.newString",
                                             "CMPIArray.setElementAt",   "CMPIInstance.setProperty",
                                             "CMPIArray.release",        "CMPIString.release",
                                             "CMPIString.release"};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(m_broker.callName(i), expected[i]) << i;
  }
}

// On a thread outside any request nothing is freed for the provider, so that every object which one of
// the failing paths forgets stays.
TEST_F(OutboundConversionTest, WhicheverCallFailsTheConversionFailsAndLeavesNothingBehind) {
  const CMPIContext* context = CBPrepareAttachThread(m_broker.cmpi(), m_request.context());
  std::thread([&] {
    ASSERT_EQ(CBAttachThread(m_broker.cmpi(), context).rc, CMPI_RC_OK);
    const CIMInstance instance = richInstance();
    const char* wanted[] = {"Id", "When", "Texts", "Other", "Inside", nullptr};
    const auto convert = [&] {
      const CMPIObjectGuard<CMPIInstance> result(
          CMPIHelper::FrameworkInstanceToCMPIInstance(instance, m_broker.cmpi(), wanted));
    };
    failEveryCall(m_broker, CMPI_RC_ERR_FAILED, convert, [&](const std::string& call) {
      if (!isRelease(call)) {
        EXPECT_EQ(thrownCode(convert), FW_RC_FAILED);
        EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
      }
    });
  }).join();
}

}  // namespace
}  // namespace tvp::test
