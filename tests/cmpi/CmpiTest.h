// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CMPI_CMPITEST_H
#define TESTS_CMPI_CMPITEST_H

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CIMInstance.h"
#include "cmpi/CMPIMI.h"
#include "host/broker/Broker.h"
#include "host/provider/Provider.h"
#include "host/provider/Request.h"
#include "host/schema/MofReader.h"
#include "support/AssociationFixtures.h"
#include "support/LogCapture.h"
#include "support/Storage.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tvp::test {

inline constexpr char TEST_NAMESPACE[] = "root/kvs/tvp/smi_15";

/** A class with a property of every type, and one to embed and refer to. */
inline constexpr char EVERY_TYPE_MOF[] = R"mof(
class TEST_Part { [Key] string Id; uint32 Number; };
class TEST_All {
  [Key] string Id; [Key] uint32 Serial; uint8 Ranges[];
  boolean Flag; boolean Flags[]; datetime When; sint8 S8; sint8 S8s[]; sint16 S16; sint16 S16s[];
  sint32 S32; sint32 S32s[]; sint64 S64; sint64 S64s[]; uint8 U8; uint8 U8s[]; uint16 U16; uint16 U16s[];
  uint32 U32; uint32 U32s[]; uint64 U64; uint64 U64s[]; string Text; string Texts[]; real32 Real;
  TEST_Part REF Other; [EmbeddedInstance("TEST_Part")] string Inside;
};
)mof";

inline std::shared_ptr<const host::Schema> testSchema() {
  return host::MofReader::readText(std::string(EVERY_TYPE_MOF) + ASSOCIATION_FIXTURES_MOF, "test.mof");
}

/** A scalar property. */
template <typename T>
cim::fwf::CIMProperty
scalar(const std::string& name, cim::fwf::Primitive_DataType type, T value, bool isKey = false) {
  cim::fwf::CIMValue<T> content;
  content.m_values.push_back(std::move(value));
  return cim::fwf::CIMProperty(name, std::move(content), isKey, type, false);
}

/** An array property, or with no values one without elements. */
template <typename T>
cim::fwf::CIMProperty
list(const std::string& name, cim::fwf::Primitive_DataType type, std::vector<T> values) {
  cim::fwf::CIMValue<T> content;
  content.m_values = std::move(values);
  return cim::fwf::CIMProperty(name, std::move(content), false, type, false);
}

inline cim::fwf::CIMInstance
instanceOf(const std::string& className, const std::vector<cim::fwf::CIMProperty>& properties) {
  cim::fwf::CIMInstance instance;
  instance.setPath(cim::fwf::CIMObjectPath("", TEST_NAMESPACE, className, {}));
  for (const cim::fwf::CIMProperty& property : properties) {
    instance.addProperty(property);
  }
  return instance;
}

/** Runs something and gives the code of the CIMException it throws; 0 when it throws none. */
template <typename Work>
unsigned int thrownCode(Work work) {
  try {
    work();
  } catch (const cim::fwf::CIMException& exception) {
    return exception.getErrCode();
  }
  return 0;
}

/** Makes every broker call of some work fail in turn and hands each outcome to check, with the call's name.
 */
template <typename Work, typename Check>
void failEveryCall(
    host::Broker& broker, CMPIrc rc, Work work, Check check, host::Failing how = host::Failing::WithStatus) {
  broker.resetCalls(true);
  work();
  std::vector<std::string> calls;
  for (std::size_t i = 0; i < broker.callCount(); ++i) {
    calls.push_back(broker.callName(i));
  }
  ASSERT_GT(calls.size(), 3U);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE("call " + std::to_string(i + 1) + " " + calls[i]);
    broker.failCall(i + 1, rc, how);
    check(calls[i]);
    broker.failCall(0, CMPI_RC_OK);
  }
}

inline bool isRelease(const std::string& call) {
  return call.find(".release") != std::string::npos;
}

/**
 * The provider, linked in, with a broker, a log, a list of users and a storage state of its own. It is
 * cleaned up at the end, with its listener thread.
 */
class RunningProviderTest : public testing::Test {
protected:
  explicit RunningProviderTest(
      std::shared_ptr<const host::Schema> schema = testSchema(), const host::BrokerOptions& options = {})
      : m_storage(m_log.root()), m_broker(std::move(schema), options) {
    m_log.root().write(
        "etc/passwd", "root:x:0:0:root:/root:/bin/bash\n"
                      "operator:x:11:0:operator:/root:/bin/sh\n"
                      "rootuid:x:0:100::/:/bin/sh\n"
                      "short:x:0\n");
    m_provider.emplace(m_broker, factories());
  }
  ~RunningProviderTest() override {
    const NoSleep noSleep;
    static_cast<void>(m_provider->cleanup(true));
  }

  void TearDown() override {
    waitFor([this] { return m_broker.unreleasedObjects() == 0; });  // the listener may still be delivering
    m_broker.reportLeaks();
    for (const host::Breach& breach : m_broker.breaches()) {
      ADD_FAILURE() << "breach: " << breach.text;
    }
  }

  static host::ProviderFactories factories() {
    return {
        tarvexProProvider_Create_InstanceMI, tarvexProProvider_Create_MethodMI,
        tarvexProProvider_Create_AssociationMI, tarvexProProvider_Create_IndicationMI};
  }
  static host::ObjectPath path(const std::string& className, std::vector<host::NamedValue> keys = {}) {
    return host::ObjectPath{TEST_NAMESPACE, className, std::move(keys), ""};
  }

  LogCapture m_log;
  Storage m_storage;
  host::Broker m_broker;
  std::optional<host::Provider> m_provider;
};

}  // namespace tvp::test

#endif
