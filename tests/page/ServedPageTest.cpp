// SPDX-License-Identifier: Apache-2.0
// What the page is made of, and the metrics, are what the commands print, for those who may see it, whatever
// is asked for and however often.
#include "cimxml/endtoend/ServeFixture.h"
#include "support/Threads.h"

#include <httplib.h>

#include <regex>
#include <set>

namespace tvp::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class ServedPageTest : public ServeTest {
protected:
  httplib::Result get(const std::string& path) const {
    httplib::Client client("127.0.0.1", port());
    client.set_read_timeout(std::chrono::minutes(2));
    return client.Get(path);
  }
  Json page() const {
    const httplib::Result result = get("/page.json");
    return result && result->status == 200 ? Json::parse(result->body) : Json();
  }
  /** A volume on two pools that was used. */
  void makeStorage() const {
    addDrive("hdd", "1TiB");
    addDrive("ssd", "100GiB");
    answer({"pool", "create", "slow \"1\"", "--drives", "0", "--size", "100GiB"});
    answer({"pool", "create", "fast", "--drives", "1", "--size", "10GiB"});
    answer({"volume", "create", "data", "--pool", "1:4GiB", "--pool", "fast:1GiB"});
    voltvkctl({"io", "data", "--reads", "100", "--writes", "20"});
  }
};

TEST_F(ServedPageTest, SaysWhatTheCommandsSay) {
  makeStorage();
  serve();
  const Json shown = page();
  EXPECT_EQ(shown["drives"], answer({"drives"}));
  EXPECT_EQ(shown["pools"], answer({"pools"}));
  EXPECT_EQ(shown["volumes"], answer({"volumes"}));
  const Json counters = answer({"volume", "stats", "data"});
  for (const auto& [name, value] : shown["counters"]["1"].items()) {
    EXPECT_EQ(value, counters[name]) << name;
  }
  EXPECT_EQ(
      shown["poolDrives"]["1"],
      Json::parse(R"([{"DeviceNumber":0,"Name":"/dev/tvk0","Sectors":209715200}])"));
  EXPECT_EQ(shown["volumePools"]["1"][1]["Name"], "fast");
  EXPECT_EQ(shown["names"]["TierLevel"]["3"], "SSD");
  const Json heat = Json::parse(get("/heat.json?volume=1")->body);
  const Json told = Json::parse(voltvkctl({"-o", "json", "heat", "data"}));
  EXPECT_EQ(heat["hotChunks"], told["hotChunks"]);
  EXPECT_EQ(heat["cells"].size(), 128U);
  for (const char* nothing :
       {"/heat.json?volume=2", "/heat.json?volume=-1", "/heat.json", "/page.js", "/metrics"}) {
    EXPECT_EQ(get(nothing)->status, 404) << nothing;
  }
  EXPECT_THAT(stop(), testing::Not(HasSubstr(" page - OK")));
}

TEST_F(ServedPageTest, IsSentWithWhatKeepsBrowsersFromDoingMore) {
  serve();
  const httplib::Result document = get("/");
  EXPECT_EQ(document->get_header_value("Content-Type"), "text/html; charset=utf-8");
  const std::string policy = document->get_header_value("Content-Security-Policy");
  EXPECT_THAT(policy, testing::StartsWith("default-src 'none'; script-src 'sha256-"));
  EXPECT_THAT(policy, testing::Not(HasSubstr("unsafe")));
  EXPECT_THAT(document->body, testing::Not(testing::ContainsRegex("(src|href)=\"(http|//)")));
  for (const char* path : {"/", "/page.json"}) {
    const httplib::Result result = get(path);
    EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store") << path;
    EXPECT_EQ(result->get_header_value("X-Content-Type-Options"), "nosniff") << path;
  }
}

TEST_F(ServedPageTest, MetricsAreThoseOfTheCommandAndOfTheServer) {
  makeStorage();
  serve({"--metrics", "local"});
  const CommandResult printed = tvpcim({"metrics"});
  EXPECT_EQ(printed.exitStatus, 0) << printed.err;
  const httplib::Result served = get("/metrics");
  EXPECT_EQ(served->get_header_value("Content-Type"), "text/plain; version=0.0.4; charset=utf-8");
  EXPECT_THAT(served->body, testing::StartsWith(printed.out));
  for (const char* line :
       {"tvp_up 1\n", "tvp_policy_engine_running 1\n",
        "tvp_pool_used_bytes{pool=\"1\",name=\"slow \\\"1\\\"\",tier=\"hdd\"} 4294967296\n",
        "tvp_drive_used_bytes{drive=\"1\",device=\"/dev/tvk1\",kind=\"ssd\"} 10737418240\n",
        "tvp_volume_operations_total{volume=\"1\",name=\"data\",type=\"tiered\",direction=\"read\"} 100\n",
        "tvp_volume_chunk_bytes{volume=\"1\",name=\"data\",type=\"tiered\"} 1048576\n"}) {
    EXPECT_THAT(printed.out, HasSubstr(line));
  }
  const std::string counted = "tvp_server_requests_total{asked=\"page\",status=\"200\"} ";
  std::size_t before = 0;
  const auto hasCountedAll = [&] {
    ++before;
    return get("/metrics")->body.find(counted + std::to_string(before) + "\n") != std::string::npos;
  };
  EXPECT_TRUE(waitFor(hasCountedAll)) << "counted once the answer was sent";
  // The format: each line is a comment or a sample.
  static const std::regex LINE(
      R"x(# (HELP|TYPE) tvp_\w+ .+|tvp_\w+(\{\w+="([^"\\]|\\.)*"(,\w+="([^"\\]|\\.)*")*\})? [0-9.]+)x");
  std::istringstream lines(served->body);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(std::regex_match(line, LINE)) << line;
  }
}

TEST_F(ServedPageTest, OthersThanAdministratorsDoNotSeeWhatMethodsAnswer) {
  makeStorage();
  serve({"--user", "nobody", "--metrics", "all"});
  const Json shown = page();
  EXPECT_EQ(shown["volumes"].size(), 1U);
  EXPECT_FALSE(shown.contains("counters"));
  EXPECT_FALSE(shown.contains("poolDrives"));
  EXPECT_EQ(get("/heat.json?volume=1")->status, 403);
  EXPECT_THAT(get("/metrics")->body, testing::Not(HasSubstr("tvp_volume_operations_total")));
  const CommandResult printed = tvpcim({"metrics", "--user", "nobody"});
  EXPECT_THAT(printed.err, HasSubstr("for administrators"));
}

TEST_F(ServedPageTest, AStateThatVanishesIsSaidAndItsReturnSeen) {
  makeStorage();
  serve({"--metrics", "local"});
  EXPECT_TRUE(page()["error"].is_null());
  voltvkctl({"fault", "set", "driver-absent"});
  ASSERT_TRUE(waitFor([&] { return !page()["error"].is_null(); }));
  EXPECT_EQ(page()["error"]["message"], "no storage driver answers");
  EXPECT_THAT(get("/metrics")->body, testing::StartsWith("# HELP tvp_up"));
  EXPECT_THAT(get("/metrics")->body, HasSubstr("\ntvp_up 0\n"));
  EXPECT_EQ(get("/heat.json?volume=1")->status, 503) << "nobody knows whether there is such a volume";
  const CommandResult printed = tvpcim({"metrics"});
  EXPECT_EQ(printed.exitStatus, 1);
  EXPECT_THAT(
      printed.out, AllOf(HasSubstr("\ntvp_up 0\n"), HasSubstr("\ntvp_findings{severity=\"failed\"} 1\n")));
  voltvkctl({"fault", "clear"});
  EXPECT_TRUE(waitFor([&] { return page()["error"].is_null(); }));
}

TEST_F(ServedPageTest, AThousandRequestsASecondReadTheStorageOnce) {
  makeStorage();
  serve();
  std::mutex mutex;
  std::set<std::int64_t> readings;
  std::vector<std::thread> clients(8);
  const auto began = std::chrono::steady_clock::now();
  for (std::thread& client : clients) {
    client = std::thread([&] {
      httplib::Client http("127.0.0.1", port());
      http.set_keep_alive(true);
      http.set_read_timeout(std::chrono::minutes(2));
      for (int i = 0; i < 250; ++i) {
        const httplib::Result result = http.Get("/page.json");
        ASSERT_TRUE(result);
        ASSERT_EQ(result->status, 200);
        const std::lock_guard<std::mutex> lock(mutex);
        readings.insert(Json::parse(result->body)["milliseconds"].get<std::int64_t>());
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - began);
  EXPECT_LE(static_cast<std::int64_t>(readings.size()), seconds.count() + 2);
}

}  // namespace
}  // namespace tvp::test
