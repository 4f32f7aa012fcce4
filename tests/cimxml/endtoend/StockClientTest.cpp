// SPDX-License-Identifier: Apache-2.0
// wbemcli, a client of somebody else, does over HTTP what tvpcim does, and sees what tvpcim sees.
#include "ServeFixture.h"
#include "support/Lines.h"

#include <algorithm>
#include <map>

namespace tvp::test {
namespace {

using testing::HasSubstr;

class StockClient : public ServeTest {
protected:
  static CommandResult wbemcli(Words words) {
    words.insert(words.begin(), "/usr/bin/wbemcli");
    return Command(words).without("http_proxy").run();
  }
  /** What it prints; it must succeed. */
  static std::string printed(const Words& words) {
    const CommandResult result = wbemcli(words);
    EXPECT_EQ(result.exitStatus, 0) << words[0] << " " << words.back() << ": " << result.out << result.err;
    return result.out;
  }
  static std::string refusal(const Words& words) {
    const CommandResult result = wbemcli(words);
    EXPECT_NE(result.exitStatus, 0) << words[0] << " " << words.back() << ": " << result.out;
    return result.out + result.err;
  }

  /** Two pools, a tiered volume and one with a cache. */
  void makeVolumes() const {
    const std::string hdd = addDrive("hdd", "100GiB");
    const std::string ssd = addDrive("ssd", "100GiB");
    const std::string other = addDrive("hdd", "50GiB");
    answer(
        {"pool", "create", "slow", "--drives", hdd, "--size", "50GiB", "--description",
         R"(a "b" <c> & 'd')"});
    answer({"pool", "create", "gr\xC3\xBC<&>n", "--drives", ssd, "--size", "50GiB"});
    answer({"volume", "create", "data", "--pool", "slow:10GiB", "--pool", "gr\xC3\xBC<&>n:1GiB"});
    answer(
        {"volume", "cache", "cached", "--drive", other, "--size", "10GiB", "--ssd-pool", "gr\xC3\xBC<&>n",
         "--ssd-size", "1GiB"});
  }
};

/** A value of tvpcim's JSON as wbemcli prints it. */
std::string asPrinted(const nlohmann::ordered_json& value) {
  if (value.is_null()) {
    return "";
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "TRUE" : "FALSE";
  }
  if (value.is_string()) {
    std::string text = "\"";
    for (const char c : value.get<std::string>()) {
      text += c == '"' ? "\\\"" : std::string(1, c);
    }
    return text + '"';
  }
  if (value.is_array()) {
    std::string text;
    for (const auto& element : value) {
      text += (text.empty() ? "" : ",") + asPrinted(element);
    }
    return text;
  }
  return value.dump();
}

using Properties = std::map<std::string, std::string>;

/** The instances that `wbemcli -nl` printed: lines "-Name=Value" below the path of each. */
std::vector<Properties> instancesIn(const std::string& text) {
  std::vector<Properties> instances;
  for (const std::string& line : linesOf(text)) {
    const std::size_t equals = line.find('=');
    if (line.rfind('-', 0) == 0 && equals != std::string::npos && !instances.empty()) {
      instances.back()[line.substr(1, equals - 1)] = line.substr(equals + 1);
    } else if (!line.empty()) {
      instances.emplace_back();
    }
  }
  return instances;
}

TEST_F(StockClient, ReadsEveryClassAsTvpcimDoes) {
  makeVolumes();
  serve();
  std::size_t classes = 0;
  for (const Json& declared : answer({"classes"})) {
    const std::string name = declared.at("Name");
    if (name == "TVP_CIMIndication") {
      continue;
    }
    ++classes;
    std::vector<Properties> expected;
    for (const Json& instance : answer({"ei", name})) {
      Properties& properties = expected.emplace_back();
      for (const auto& [property, value] : instance.items()) {
        properties[property] = asPrinted(value);
      }
    }
    EXPECT_FALSE(expected.empty()) << name;
    EXPECT_EQ(instancesIn(printed({"ei", "-nl", url(name)})), expected) << name;
    const std::vector<std::string> paths = linesOf(printed({"ein", url(name)}));
    EXPECT_EQ(paths.size(), answer({"ein", name}).size()) << name;
    for (const std::string& path : paths) {
      const std::string local = path.substr(path.find(':', path.find('/')) + 1);
      Properties single;
      for (const auto& [property, value] : answer({"gi", local}).items()) {
        single[property] = asPrinted(value);
      }
      EXPECT_EQ(instancesIn(printed({"gi", "-nl", "http://" + path})), std::vector<Properties>{single})
          << path;
      EXPECT_EQ(printed({"ai", "http://" + path}) + printed({"ri", "http://" + path}), "") << path;
    }
  }
  EXPECT_EQ(classes, 10U);
  stop();
}

TEST_F(StockClient, InvokesModifiesAndReadsClasses) {
  addDrive("ssd", "10GiB");
  addDrive("ssd", "10GiB");
  serve();
  const std::string service =
      url("TVP_TierService.CreationClassName=\"TVP_TierService\",Name=\"TVP_TierServiceInstance1\"");
  EXPECT_THAT(
      printed(
          {"cm", service,
           "CreateVirtualPool.Name=\"basement\",Description=\"a "
           "b\",NumberOfLogicalDevice=2,LDDeviceNumbers=0,1,"
           "CapacityInSectors=4194304,ChunkSize=2048,TierLevel=3"}),
      HasSubstr("CreateVirtualPool: 0, RetStat (uint32): 0"));
  const Json pools = answer({"pools"});
  ASSERT_EQ(pools.size(), 1U);
  EXPECT_EQ(pools[0].at("NumberOfLogicalDevice"), 2);
  EXPECT_THAT(
      refusal(
          {"mi", url("TVP_VirtualPool.CreationClassName=\"TVP_VirtualPool\",Name=\"basement\""),
           "Name=\"other\""}),
      HasSubstr("CIM_ERR_NOT_SUPPORTED: modifyInstance ::"));
  printed({"cm", service, "DeleteVirtualPool.VirtualPoolId=1"});
  EXPECT_EQ(answer({"pools"}).size(), 0U);
  EXPECT_THAT(refusal({"cm", service, "DeleteVirtualPool.VirtualPoolId=1"}), HasSubstr("CIM_ERR_FAILED: "));
  EXPECT_THAT(refusal({"ei", url("TVP_NoSuch")}), HasSubstr("CIM_ERR_INVALID_CLASS: TVP_NoSuch"));
  EXPECT_THAT(refusal({"ei", url("TVP_VirtualPool", "nowhere")}), HasSubstr("CIM_ERR_INVALID_NAMESPACE"));
  for (const Json& declared : answer({"classes"})) {
    const std::string name = declared.at("Name");
    const std::string properties = printed({"gc", "-nl", url(name)});
    EXPECT_GE(std::count(properties.begin(), properties.end(), '='), declared.at("PropertyCount").get<int>())
        << name;
    EXPECT_THAT(printed({"ecn", url("")}), HasSubstr(":" + name + "\n"));
  }
  EXPECT_THAT(printed({"ein", url("CIM_Namespace", "root/interop")}), HasSubstr("root/kvs/tvp/smi_15"));
  EXPECT_EQ(instancesIn(printed({"ei", "-nl", url("CIM_ObjectManager", "root/interop")})).size(), 1U);
  EXPECT_THAT(stop(), HasSubstr(" DeleteVirtualPool TVP_TierService CIM_ERR_FAILED "));
}

TEST_F(StockClient, SubscribesAndIsSentEachIndicationOnce) {
  const std::string drive = addDrive("ssd", "10GiB");
  serve();
  RunningCommand listener = command("tvpcim", {"listen", "0", "--count", "4", "-o", "json"}).start();
  const std::string beginning = "listening on ";
  ASSERT_TRUE(listener.waitFor("; Ctrl-C"));
  const std::string& notice = listener.soFar().err;
  const std::size_t at = notice.find(beginning) + beginning.size();
  const std::string destination = notice.substr(at, notice.find(';', at) - at);

  const auto keys = [](const std::string& className, const std::string& name) {
    return "SystemCreationClassName=\"CIM_ComputerSystem\",SystemName=\"here\",CreationClassName=\"" +
           className + "\",Name=\"" + name + "\"";
  };
  const std::string filter = keys("CIM_IndicationFilter", "f");
  const std::string handler = keys("CIM_ListenerDestinationCIMXML", "h");
  const std::string subscription = "Filter=root/interop:CIM_IndicationFilter." + filter +
                                   ",Handler=root/interop:CIM_ListenerDestinationCIMXML." + handler;
  const auto interop = [this](const std::string& path) { return url(path, "root/interop"); };
  const std::string filterPath = "CIM_IndicationFilter." + filter;
  const std::string handlerPath = "CIM_ListenerDestinationCIMXML." + handler;
  const std::string subscriptionPath = "CIM_IndicationSubscription." + subscription;
  printed(
      {"ci", interop(filterPath),
       filter + ",Query=\"SELECT * FROM TVP_CIMIndication\",QueryLanguage=\"WQL\","
                "SourceNamespace=\"root/PG_InterOp\""});
  printed({"ci", interop(handlerPath), handler + ",Destination=\"" + destination + "\""});
  printed({"ci", interop(subscriptionPath), subscription});
  EXPECT_THAT(refusal({"ci", interop(subscriptionPath), subscription}), HasSubstr("CIM_ERR_ALREADY_EXISTS"));
  EXPECT_THAT(printed({"ein", interop("CIM_IndicationSubscription")}), HasSubstr("Name=\"h\""));
  EXPECT_THAT(
      printed({"ei", "-nl", interop("CIM_IndicationSubscription")}), HasSubstr("-SubscriptionState=2"));
  EXPECT_THAT(printed({"ei", "-nl", interop("CIM_IndicationFilter")}), HasSubstr("-Name=\"f\""));

  for (const char* pool : {"first", "second"}) {
    answer({"pool", "create", pool, "--drives", drive, "--size", "1GiB"});
    answer({"pool", "delete", pool});
    ASSERT_TRUE(listener.waitFor("[" + std::string(pool) + "]")) << listener.soFar().err;
    // Of the second pool the listener takes the last one it waits for; of the first one, both are to be out.
    if (pool == std::string("first")) {
      ASSERT_TRUE(listener.waitFor("\"eventCode\":205")) << listener.soFar().out;
      stop();
      serve();  // the subscription is still there
    }
  }
  const CommandResult heard = listener.finish();
  std::vector<int> codes;
  for (const std::string& line : linesOf(heard.out)) {
    codes.push_back(Json::parse(line).at("eventCode").get<int>());
  }
  EXPECT_EQ(codes, (std::vector<int>{201, 205, 201, 205})) << heard.out;
  EXPECT_THAT(refusal({"di", interop(filterPath)}), HasSubstr("CIM_ERR_FAILED"));
  printed({"mi", interop(subscriptionPath), "SubscriptionState=4"});
  EXPECT_THAT(
      printed({"ei", "-nl", interop("CIM_IndicationSubscription")}), HasSubstr("-SubscriptionState=4"));
  for (const std::string& path : {subscriptionPath, handlerPath, filterPath}) {
    printed({"di", interop(path)});
  }
  EXPECT_EQ(printed({"ein", interop("CIM_IndicationFilter")}), "");
  stop();
}

}  // namespace
}  // namespace tvp::test
