// SPDX-License-Identifier: Apache-2.0
// How an event becomes an indication; what clients receive is recorded in tests/life.
#include "CIM/Framework/Subscription.h"
#include "ProviderTest.h"
#include "backend/EventIndication.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSSystem.h"

using namespace tvp::cim::fwf;
using namespace tvp::test;

namespace {

using Indication = ProviderTest;

std::vector<CIMInstance> delivered;

}  // namespace

TEST_F(Indication, IsSentInTheNameOfTheHostForAnEventThatHasKeys) {
  m_facade->registerForEvent([](CIMInstance& indication) {
    delivered.push_back(indication);
    return true;
  });
  m_subscription.store(true);
  const LogCapture log;
  std::vector<CIMProperty> keys;
  notifyEventIndication("ignored", keys);
  EXPECT_TRUE(delivered.empty());
  EXPECT_EQ(LogCapture::message(4, "ViewClass Key corrupted"), log.lines().back());

  for (const char* name : {"Id", "eventTime", "eventCode", "eventType", "eventDesc", "ActionId"}) {
    keys.push_back(makeProperty(name, 7U));
  }
  notifyEventIndication("ignored", keys);
  ASSERT_EQ(1U, delivered.size());
  char host[256] = {};
  KvsGetHostName(host, sizeof host);
  EXPECT_EQ(host, delivered[0].host());
  std::vector<std::string> names;
  for (const CIMProperty& property : delivered[0].properties()) {
    names.push_back(property.name());
  }
  EXPECT_EQ(
      (std::vector<std::string>{"eventTime", "eventCode", "eventType", "eventDesc", "Id", "ActionId"}),
      names);
  EXPECT_EQ(6U, keys.size());
}
