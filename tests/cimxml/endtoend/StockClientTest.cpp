// SPDX-License-Identifier: Apache-2.0
// wbemcli, a client of somebody else, does over HTTP what tvpcim does, and sees what tvpcim sees.
#include "ServeFixture.h"
#include "support/Lines.h"

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
    return '"' + value.get<std::string>() + '"';
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
    ASSERT_EQ(paths.size(), expected.size()) << name;
    for (std::size_t index = 0; index < paths.size(); ++index) {
      const std::vector<Properties> got = instancesIn(printed({"gi", "-nl", "http://" + paths[index]}));
      EXPECT_EQ(got, std::vector<Properties>{expected[index]}) << paths[index];
    }
  }
  EXPECT_EQ(classes, 10U);
  stop();
}

}  // namespace
}  // namespace tvp::test
