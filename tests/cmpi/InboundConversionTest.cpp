// SPDX-License-Identifier: Apache-2.0
#include "CmpiTest.h"
#include "cmpi/CMPIHelper.h"
#include "cmpimacs.h"
#include "model/Describe.h"
#include "oslib/KVSSystem.h"

#include <functional>
#include <thread>

namespace tvp::test {
namespace {

using namespace cim::fwf;
using cim::adap::cmpi::CMPIHelper;
using host::Value;

constexpr char WHEN[] = "20260131235959.123456+060";

class InboundConversionTest : public testing::Test {
protected:
  CIMObjectPath converted(const host::ObjectPath& path, bool withKeys) {
    CIMObjectPath out;
    CMPIHelper::CMPIObjectPathToFrameworkObjectPath(m_request.objectPath(path), withKeys, out);
    return out;
  }
  CIMMethodParam converted(const host::Arguments& arguments) {
    CIMMethodParam out;
    CMPIHelper::CMPIArgsToFrameWorkMethodParam(m_request.arguments(arguments), out);
    return out;
  }

  LogCapture m_log;
  host::Broker m_broker{testSchema()};
  host::Request m_request{m_broker};
};

host::ObjectPath partPath() {
  return {TEST_NAMESPACE, "TEST_Part", {{"Id", Value::string("p")}}, ""};
}

host::ObjectPath pathWithAllKinds() {
  return {
      TEST_NAMESPACE,
      "TEST_All",
      {{"Text", Value::string("t")},
       {"Flag", Value::boolean(true)},
       {"Number", Value::sint64(0x100000007LL)},
       {"Unsigned", Value::uint32(7)},
       {"Ref", Value::reference(partPath())}},
      "far.example"};
}

TEST_F(InboundConversionTest, APathTakesTheLocalHostAndTheFourKindsOfKeys) {
  char host[256] = {};
  KvsGetHostName(host, sizeof host);
  const CIMObjectPath path = converted(pathWithAllKinds(), true);
  EXPECT_EQ(path.host(), host);
  EXPECT_EQ(path.nameSpace(), TEST_NAMESPACE);
  EXPECT_EQ(path.className(), "TEST_All");
  const std::vector<CIMProperty> expected = {
      scalar<std::string>("Text", PDT_STRING, "t", true), scalar("Flag", PDT_BOOLEAN, true, true),
      scalar("Number", PDT_UINT32, 7U, true),
      scalar("Ref", PDT_REFERENCE, converted(partPath(), true), true)};
  EXPECT_EQ(describe(path.keyBindings()), describe(expected)) << "the unsigned key is dropped";
  EXPECT_EQ(converted(pathWithAllKinds(), false).keyBindings().size(), 0U);
}

TEST_F(InboundConversionTest, APathWithoutATextStaysHalfFilled) {
  CMPIObjectPath* nameless = m_request.objectPath(partPath());
  CMPIObjectPathFT* const real = nameless->ft;
  CMPIObjectPathFT table = *real;
  nameless->ft = &table;
  const auto noText = [](const CMPIObjectPath*, CMPIStatus*) -> CMPIString* { return nullptr; };
  table.getClassName = noText;
  for (const std::string missing : {"ClassName", "NameSpace"}) {
    CIMObjectPath path;
    CMPIHelper::CMPIObjectPathToFrameworkObjectPath(nameless, true, path);
    EXPECT_FALSE(path.host().empty());
    EXPECT_EQ(path.nameSpace(), missing == "NameSpace" ? "" : TEST_NAMESPACE);
    EXPECT_TRUE(path.className().empty());
    EXPECT_TRUE(path.keyBindings().empty());
    EXPECT_EQ(
        m_log.lines().back(),
        LogCapture::message(
            2, "CMPIHelper::CMPIObjectPathToFrameworkObjectPath() - " + missing + " is NULL"));
    table.getNameSpace = noText;
  }
  nameless->ft = real;
}

TEST_F(InboundConversionTest, KeysThatDoNotSayTheyAreKeysAreDropped) {
  host::Broker plain(testSchema(), {CMPI_goodValue, false, 16384});
  host::Request request(plain);
  CIMObjectPath path;
  CMPIHelper::CMPIObjectPathToFrameworkObjectPath(request.objectPath(partPath()), true, path);
  EXPECT_TRUE(path.keyBindings().empty());
}

TEST_F(InboundConversionTest, KeysThatAreCountedButAbsentAreLeftOut) {
  host::Broker pegasus(testSchema(), host::optionsAs("openpegasus"));
  host::Request request(pegasus);
  const auto keysOf = [&](const host::ObjectPath& path) {
    CIMObjectPath out;
    CMPIHelper::CMPIObjectPathToFrameworkObjectPath(request.objectPath(path), true, out);
    return out.keyBindings().size();
  };
  EXPECT_EQ(keysOf({TEST_NAMESPACE, "TEST_All", {}, ""}), 0U);
  EXPECT_EQ(keysOf({TEST_NAMESPACE, "TEST_All", {{"Id", Value::string("i")}}, ""}), 1U) << "of two";
}

TEST_F(InboundConversionTest, AnInstanceBringsTheWritableKindsAndNoNulls) {
  host::Instance instance{partPath(), {}};
  instance.properties = {
      {"Flag", Value::boolean(true)},
      {"U8", Value::uint8(8)},
      {"U16", Value::uint16(16)},
      {"U32", Value::uint32(32)},
      {"U64", Value::uint64(64)},
      {"Other", Value::reference(partPath())},
      {"Text", Value::string("t")},
      {"When", Value::dateTime(*host::DateTime::parse(WHEN))},
      {"S32", Value::signedInteger(CMPI_sint32, 1)},
      {"Real", Value::real(CMPI_real32, 1)},
      {"U32s", Value::array(CMPI_uint32, {Value::uint32(1)})},
      {"Inside", Value::instance(host::Instance{partPath(), {}})},
      {"Null", Value::null(CMPI_string)}};
  CIMObjectPath path("h", "n", "TEST_All", {scalar<std::string>("Id", PDT_STRING, "x", true)});
  CIMInstance out;
  EXPECT_TRUE(CMPIHelper::CMPIInstanceToFrameworkInstance(m_request.instance(instance), path, out));
  EXPECT_EQ(out.className(), "TEST_All");
  EXPECT_TRUE(out.keyProperties().empty());
  const std::vector<CIMProperty> expected = {
      scalar("Flag", PDT_BOOLEAN, true),
      scalar<unsigned char>("U8", PDT_UINT8, 8),
      scalar<unsigned short>("U16", PDT_UINT16, 16),
      scalar("U32", PDT_UINT32, 32U),
      scalar("U64", PDT_UINT64, 64ULL),
      scalar("Other", PDT_REFERENCE, converted(partPath(), false)),
      scalar<std::string>("Text", PDT_STRING, "t"),
      scalar<std::string>("When", PDT_DATETIME, WHEN)};
  EXPECT_EQ(describe(out.properties()), describe(expected));
}

TEST_F(InboundConversionTest, ArgumentsKeepNullsAndSeveralArrays) {
  const CIMObjectPath part = converted(partPath(), true);
  const std::pair<Value, CIMProperty> cases[] = {
      {Value::boolean(true), scalar("A", PDT_BOOLEAN, true)},
      {Value::uint8(8), scalar<unsigned char>("A", PDT_UINT8, 8)},
      {Value::uint64(64), scalar("A", PDT_UINT64, 64ULL)},
      {Value::dateTime(*host::DateTime::parse(WHEN)), scalar<std::string>("A", PDT_DATETIME, WHEN)},
      {Value::reference(partPath()), scalar("A", PDT_REFERENCE, part)},
      {Value::array(CMPI_uint8, {Value::uint8(1), Value::uint8(255)}),
       list<unsigned char>("A", PDT_UINT8_ARRAY, {1, 255})},
      {Value::array(CMPI_sint8, {Value::signedInteger(CMPI_sint8, -1)}),
       list<signed char>("A", PDT_SINT8_ARRAY, {-1})},
      {Value::array(CMPI_uint32, {Value::uint32(5), Value::null(CMPI_uint32), Value::uint32(6)}),
       list<unsigned int>("A", PDT_UINT32_ARRAY, {5, 0, 6})},
      {Value::array(CMPI_uint64, {}), list<unsigned long long>("A", PDT_UINT64_ARRAY, {})},
      {Value::array(CMPI_string, {Value::string("a"), Value::null(CMPI_string)}),
       list<std::string>("A", PDT_STRING_ARRAY, {"a", ""})},
      {Value::array(CMPI_ref, {Value::reference(partPath()), Value::null(CMPI_ref)}),
       list<CIMObjectPath>("A", PDT_REFERENCE_ARRAY, {part, CIMObjectPath()})},
      {Value::null(CMPI_uint32), {"A", CIMValue<unsigned int>(0, false, true), false, PDT_UINT32, false}},
      {Value::null(CMPI_stringA),
       {"A", CIMValue<std::string>("", false, true), false, PDT_STRING_ARRAY, false}}};
  host::Arguments given;
  std::vector<CIMProperty> expected;
  for (const auto& [value, property] : cases) {
    expected.push_back(property);
    expected.back().setName("A" + std::to_string(expected.size()));
    given.add(expected.back().name(), value);
  }
  EXPECT_EQ(describe(converted(given)), describe(expected));
}

TEST_F(InboundConversionTest, WhicheverCallFailsTheConversionFails) {
  host::Instance instance{
      partPath(), {{"Text", Value::string("t")}, {"Other", Value::reference(partPath())}}};
  host::Arguments arguments;
  arguments.add("Refs", Value::array(CMPI_ref, {Value::reference(partPath())}))
      .add("When", Value::dateTime(*host::DateTime::parse(WHEN)));
  const CMPIObjectPath* path = m_request.objectPath(pathWithAllKinds());
  const CMPIInstance* ci = m_request.instance(instance);
  const CMPIArgs* args = m_request.arguments(arguments);
  const std::vector<std::function<void()>> conversions = {
      [&] {
        CIMObjectPath out;
        CMPIHelper::CMPIObjectPathToFrameworkObjectPath(path, true, out);
      },
      [&] {
        CIMInstance out;
        CMPIHelper::setProps(ci, out);
      },
      [&] {
        CIMMethodParam out;
        CMPIHelper::CMPIArgsToFrameWorkMethodParam(args, out);
      }};
  for (const std::function<void()>& convert : conversions) {
    failEveryCall(m_broker, CMPI_RC_ERR_NOT_FOUND, convert, [&](const std::string& call) {
      const unsigned int expected = call.find("getNameSpace") != std::string::npos   ? 3
                                    : call.find("getClassName") != std::string::npos ? 5
                                                                                     : 1;
      EXPECT_TRUE(isRelease(call) || thrownCode(convert) == expected);
    });
  }
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "Exception throwin in Fun: setProps in Line# 2297")));
}

// On a thread outside any request nothing is freed for the provider: what it forgets stays.
TEST_F(InboundConversionTest, TheStringsOfAPathAreReleasedWhicheverCallFails) {
  const CMPIObjectPath* path = m_request.objectPath(pathWithAllKinds());
  const CMPIContext* context = CBPrepareAttachThread(m_broker.cmpi(), m_request.context());
  std::thread([&] {
    ASSERT_EQ(CBAttachThread(m_broker.cmpi(), context).rc, CMPI_RC_OK);
    const auto convert = [&] {
      CIMObjectPath out;
      CMPIHelper::CMPIObjectPathToFrameworkObjectPath(path, false, out);
    };
    convert();
    EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
    failEveryCall(m_broker, CMPI_RC_ERR_FAILED, convert, [&](const std::string& call) {
      if (!isRelease(call)) {
        EXPECT_NE(thrownCode(convert), 0U);
        EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
      }
    });
  }).join();
}

TEST_F(InboundConversionTest, NullObjectsEndInExceptions) {
  CIMObjectPath path;
  CIMInstance instance;
  EXPECT_EQ(thrownCode([&] { CMPIHelper::CMPIObjectPathToFrameworkObjectPath(nullptr, true, path); }), 3U);
  EXPECT_EQ(thrownCode([&] { CMPIHelper::setProps(nullptr, instance); }), 1U);
  CMPIObjectPath empty{nullptr, nullptr};
  for (const CMPIObjectPath* op : {static_cast<const CMPIObjectPath*>(nullptr), &std::as_const(empty)}) {
    EXPECT_EQ(thrownCode([&] { CMPIHelper::setKeys(op, path); }), 1U);
  }
  CMPIArgs noArguments{nullptr, nullptr};
  CMPIArgs* const someArguments = m_request.outputArguments();
  const struct {
    CMPIArgs* in;
    CMPIArgs* out;
    const CMPIBroker* broker;
  } nulls[] = {
      {nullptr, nullptr, m_broker.cmpi()},
      {&noArguments, &noArguments, m_broker.cmpi()},
      {nullptr, someArguments, nullptr}};
  for (const auto& given : nulls) {
    CIMMethodParam parameters;
    parameters.addArgument(scalar<std::string>("Text", PDT_STRING, "t"));
    EXPECT_EQ(thrownCode([&] { CMPIHelper::CMPIArgsToFrameWorkMethodParam(given.in, parameters); }), 1U);
    EXPECT_EQ(
        thrownCode(
            [&] { CMPIHelper::FrameworkArgumentsToCMPIArguments(parameters, given.out, given.broker); }),
        1U);
  }
  EXPECT_EQ(CMPIHelper::objectPathText(nullptr), CIMObjectPath().toString());
}

}  // namespace
}  // namespace tvp::test
