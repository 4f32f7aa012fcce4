// SPDX-License-Identifier: Apache-2.0
// How an event becomes an indication.
#include "CIM/Framework/Subscription.h"
#include "ProviderTest.h"
#include "Shown.h"
#include "backend/EventIndication.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSSystem.h"

#include <gmock/gmock.h>

using namespace tvp::cim::fwf;
using testing::ElementsAre;
using tvp::test::LogCapture;
using tvp::test::shown;

namespace {

using Indication = tvp::test::ProviderTest;

std::vector<CIMInstance> delivered;

bool take(CIMInstance& indication) {
  delivered.push_back(indication);
  return delivered.size() == 1;
}

std::vector<CIMProperty> eventKeys() {
  return {
      makeProperty("Id", 7U),
      makeProperty("eventTime", std::string("01/02/2024 10:11:12"), true),
      makeProperty("eventCode", 701U),
      makeProperty("eventType", 3U),
      makeProperty("eventDesc", std::string("something happened"), true),
      makeProperty("ActionId", 9U)};
}

const char* const ENTER_LINE = "Enter TVP_CIMIndication :: EventNotify()";
const char* const EXIT_LINE = "Exit TVP_CIMIndication :: EventNotify()";

}  // namespace

TEST_F(Indication, CarriesTheSixPropertiesOfTheEvent) {
  m_facade->registerForEvent(take);
  m_subscription.store(true);
  std::vector<CIMProperty> keys = eventKeys();
  LogCapture log;
  notifyEventIndication("ignored", keys);
  ASSERT_EQ(1U, delivered.size());
  EXPECT_THAT(
      shown(delivered[0].properties()),
      ElementsAre(
          "*eventTime string 01/02/2024 10:11:12", "eventCode uint32 701", "eventType uint32 3",
          "*eventDesc string something happened", "Id uint32 7", "ActionId uint32 9"));
  char host[256] = {};
  KvsGetHostName(host, sizeof host);
  EXPECT_EQ(host, delivered[0].host());
  EXPECT_EQ("root/PG_InterOp", delivered[0].nameSpace());
  EXPECT_EQ("TVP_CIMIndication", delivered[0].className());
  EXPECT_EQ(6U, keys.size());

  const std::vector<std::string> lines = log.lines();
  ASSERT_LE(6U, lines.size());
  EXPECT_EQ(LogCapture::trace(ENTER_LINE), lines.front());
  EXPECT_TRUE(log.has(LogCapture::trace("Enter TVP_CIMIndication :: getKeysFromEventKeys()")));
  EXPECT_TRUE(log.has(LogCapture::trace("Exit TVP_CIMIndication :: getKeysFromEventKeys() with error")));
  EXPECT_EQ(
      LogCapture::message(4, "Successfully Delivered Indication of classname = TVP_CIMIndication"),
      lines[lines.size() - 2]);
  EXPECT_EQ(LogCapture::trace(EXIT_LINE), lines.back());

  log.clear();
  notifyEventIndication("ignored", keys);
  EXPECT_TRUE(
      log.has(LogCapture::message(2, "Failed To Deliver Indication of classname = TVP_CIMIndication")));
  EXPECT_EQ(LogCapture::trace(EXIT_LINE), log.lines().back());
}

TEST_F(Indication, IsNotSentForAnEventWithoutKeys) {
  m_facade->registerForEvent(take);
  m_subscription.store(true);
  std::vector<CIMProperty> keys;
  const LogCapture log;
  notifyEventIndication("ignored", keys);
  EXPECT_TRUE(delivered.empty());
  EXPECT_EQ(LogCapture::trace(ENTER_LINE), log.lines().front());
  EXPECT_EQ(LogCapture::message(4, "ViewClass Key corrupted"), log.lines().back());
}
