// SPDX-License-Identifier: Apache-2.0
// The page in a real browser shows what the commands say, follows what happens, and can be read and used at
// any width, in both colour schemes, with the keyboard and with a screen reader.
#include "cimxml/endtoend/ServeFixture.h"
#include "page/Browser.h"
#include "support/Storage.h"
#include "text/Size.h"

#include <cstdlib>

namespace tvp::test {
namespace {

using testing::HasSubstr;

class PageInBrowserTest : public ServeTest {
protected:
  void open() {
    serve();
    browser.emplace(directory());
    browser->open("http://127.0.0.1:" + std::to_string(port()) + "/");
    ASSERT_TRUE(browser->waitFor("state.page"));
  }
  /** Texts of all elements that a selector finds. */
  Json texts(const std::string& selector) {
    return browser->run(
        "return [...document.querySelectorAll(arguments[0])].map((element) => element.innerText.trim());",
        {selector});
  }
  void setAppearance(int width, const std::string& scheme) {
    browser->control(
        "Emulation.setDeviceMetricsOverride",
        {{"width", width}, {"height", 1400}, {"deviceScaleFactor", 1}, {"mobile", false}});
    browser->control(
        "Emulation.setEmulatedMedia",
        {{"features", {{{"name", "prefers-color-scheme"}, {"value", scheme}}}}});
  }
  /** Keeps a picture in the directory that the environment names, for people to look at. */
  void picture(const std::string& name) {
    if (const char* place = std::getenv("TVP_PICTURES")) {
      const Json taken = browser->control(
          "Page.captureScreenshot", {{"format", "png"}, {"captureBeyondViewport", name.find("400") == 0}});
      std::filesystem::create_directories(place);
      std::ofstream(std::filesystem::path(place) / (name + ".base64")) << taken["data"].get<std::string>();
    }
  }

  std::optional<Browser> browser;
};

std::string usedOf(const nlohmann::ordered_json& pool) {
  return text::formatSectors(pool["UsedCapacityInSectors"]) + " of " +
         text::formatSectors(pool["CapacityInSectors"]);
}

TEST_F(PageInBrowserTest, ShowsWhatTheCommandsSayAndFollowsChanges) {
  const std::string markup = "<img src=x onerror=boom()>&lt;";
  addDrive("hdd", "3TiB");
  addDrive("ssd", "447GiB");
  answer({"pool", "create", markup, "--drives", "0", "--size", "1001GiB"});
  answer({"pool", "create", "fast", "--drives", "1", "--size", "20GiB"});
  answer({"volume", "create", markup, "--pool", "1:10GiB", "--pool", "2:19GiB"});
  open();
  const Json pools = answer({"pools"});
  ASSERT_TRUE(browser->waitFor("document.querySelectorAll('#pool-list > li').length === 2"));
  for (std::size_t i = 0; i < 2; ++i) {
    const std::string shown = texts("#pool-list > li")[i];
    EXPECT_THAT(shown, HasSubstr(pools[i]["Name"].get<std::string>()));
    EXPECT_THAT(shown, HasSubstr(usedOf(pools[i])));
  }
  EXPECT_EQ(texts("#pool-list .name"), Json({markup, "fast"}));
  EXPECT_EQ(texts("#volume-list button"), Json({markup}));
  EXPECT_EQ(
      browser->run("return document.images.length + document.querySelectorAll('#main img').length;"), 0);
  EXPECT_THAT(browser->text("#pools"), HasSubstr("95%, nearly full"));
  EXPECT_THAT(
      browser->text("#volume-list"),
      HasSubstr(text::formatSectors(answer({"volumes"})[0]["CapacityInSectors"])));

  // What happens while it is watched.
  addDrive("hdd", "1TiB");
  answer({"pool", "create", "later", "--drives", "2", "--size", "5GiB"});
  EXPECT_TRUE(browser->waitFor("byId('pool-list').innerText.includes('later')"));
  EXPECT_TRUE(browser->waitFor("byId('event-list').innerText.includes('later')"));
  EXPECT_TRUE(browser->waitFor("byId('announcer').textContent.includes('event')"));
  voltvkctl({"io", markup, "--reads", "3000", "--writes", "100"});
  EXPECT_TRUE(browser->waitFor("byId('heat-text').textContent.includes('hot chunk')"));
  EXPECT_TRUE(browser->waitFor("state.samples.get(1).some((sample) => sample.reads > 0)"));
  answer({"volume", "delete", "1"});
  EXPECT_TRUE(browser->waitFor("!byId('no-volumes').hidden && byId('heat-title').textContent === 'Heat'"));
  voltvkctl({"fault", "set", "driver-absent"});
  EXPECT_TRUE(browser->waitFor("byId('banner').textContent.includes('no storage driver answers')"));
  EXPECT_TRUE(browser->waitFor("document.title.includes('Not readable')"));
  voltvkctl({"fault", "clear"});
  EXPECT_TRUE(browser->waitFor("byId('banner').hidden"));
  stop();
  EXPECT_TRUE(browser->waitFor("byId('banner').textContent.includes('does not answer')"));
  serve();
  EXPECT_TRUE(browser->waitFor("byId('banner').hidden"));
  EXPECT_EQ(
      browser->run("return performance.getEntriesByType('resource').filter((entry) => "
                   "!entry.name.startsWith(location.origin + '/')).length;"),
      0);
}

TEST_F(PageInBrowserTest, TheKeyboardAndAScreenReaderReachEverything) {
  addDrive("hdd", "1TiB");
  answer({"pool", "create", "slow", "--drives", "0", "--size", "10GiB"});
  answer({"volume", "create", "data", "--pool", "slow:2GiB"});
  answer({"volume", "create", "mail", "--pool", "slow:1GiB"});
  open();
  const std::string right = "\uE014";
  browser->run("document.querySelector('#tree [tabindex=\"0\"]').focus();");
  const auto focused = [&] {
    return browser->run("return document.activeElement.getAttribute('aria-label');");
  };
  EXPECT_EQ(focused(), "drive 0 /dev/tvk0, Online, Hard Disk · 1 TiB, 1% used · Virtual HDD");
  for (const std::string& key : {right, right, right, right}) {
    browser->press(key);
  }
  EXPECT_EQ(focused(), "volume 1 data, Good, Tiered · 2 GiB");
  browser->press("\uE011");  // Home
  browser->press("\uE012");  // ArrowLeft: closes the drive
  EXPECT_EQ(browser->run("return document.querySelectorAll('#tree [role=treeitem]').length;"), 1);
  EXPECT_EQ(browser->spoken("#tree").substr(0, 5), "tree:");
  EXPECT_EQ(browser->spoken("#volumes table"), "table: Volumes");
  EXPECT_EQ(browser->spoken("#find"), "searchbox: Find");
  EXPECT_EQ(browser->spoken("#volume-list button"), "button: data");
  EXPECT_EQ(browser->spoken("#health").substr(0, 9), "paragraph");
  // Whatever can be operated has a name; whatever is in a list is in one place only.
  EXPECT_EQ(
      browser->run(
          "return [...document.querySelectorAll('button, input, [tabindex=\"0\"]')].filter((element) => "
          "!(element.innerText || element.labels?.length || element.ariaLabel || "
          "element.getAttribute('aria-labelledby'))).length;"),
      0);
  EXPECT_EQ(
      browser->run("announce('One'); announce('two'); return Promise.resolve().then(() => "
                   "byId('announcer').textContent);"),
      "One. two");
  browser->run("document.querySelectorAll('#volume-list button')[1].focus();");
  answer({"volume", "delete", "data"});
  ASSERT_TRUE(browser->waitFor("byId('volume-list').children.length === 1"));
  EXPECT_EQ(browser->run("return document.activeElement.innerText;"), "mail");
  browser->run("byId('pause').focus();");
  browser->press(" ");
  EXPECT_EQ(browser->run("return state.paused;"), true);
}

TEST_F(PageInBrowserTest, WhatIsShownIsNeverOld) {
  addDrive("hdd", "1TiB");
  open();
  browser->run("state.patience = 500;");
  signal(SIGSTOP);
  EXPECT_TRUE(browser->waitFor("byId('banner').textContent.includes('does not answer')"));
  EXPECT_EQ(browser->text("#health-text"), "No answer");
  browser->run("state.patience = 60000;");
  signal(SIGCONT);
  EXPECT_TRUE(browser->waitFor("byId('banner').hidden"));
  // Servers count their events from 1.
  EXPECT_EQ(
      browser->run(
          "byId('pause').click();"
          "for (const started of ['before', 'after']) {"
          "  const event = {sequence: 1, eventType: 3, eventTime: '2026-01-01T00:00:00Z', eventDesc: "
          "started};"
          "  show({...state.page, started, events: [event]});"
          "}"
          "return [...document.querySelectorAll('#event-list .text')].map((text) => text.innerText);"),
      Json({"after"}));
  EXPECT_EQ(
      browser->run("return [[899, 1000], [900, 1000], [999, 1000], [1000, 1000]].map(([used, size]) =>"
                   "poolUse({UsedCapacityInSectors: used * 2048, CapacityInSectors: size * 2048})"
                   ".text.split(', ').slice(1).join());"),
      Json({"90%,nearly full", "90%,nearly full", "99%,nearly full", "100%,full"}));
}

/** The smallest contrast of a text to its ground, and which text that is. */
const char* const CONTRAST = R"(
  const luminance = (color) => color.map((c) => (c /= 255) <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const rgb = (text) => text.match(/[\d.]+/g).map(Number);
  let worst = [21, ''];
  for (const element of document.querySelectorAll('body *')) {
    if (!element.checkVisibility() || ![...element.childNodes].some((n) => n.nodeType === 3 && n.data.trim())) continue;
    let ground = element;
    while (ground.parentElement && rgb(getComputedStyle(ground).backgroundColor)[3] === 0) ground = ground.parentElement;
    const [a, b] = [getComputedStyle(element).color, getComputedStyle(ground).backgroundColor]
      .map((color) => luminance(rgb(color).slice(0, 3)) + 0.05);
    const contrast = Math.max(a, b) / Math.min(a, b);
    if (contrast < worst[0]) worst = [contrast, element.textContent];
  }
  return worst;)";

TEST_F(PageInBrowserTest, CanBeReadAtAnyWidthInBothSchemes) {
  const Storage storage(directory());
  for (int drive = 0; drive < 255; ++drive) {
    Storage::addDrive(
        drive % 3 == 1 ? TVK_DEVICE_SSD : TVK_DEVICE_HDD, static_cast<std::uint64_t>(100 + drive) * 40 * GIB);
  }
  for (std::uint8_t pool = 0; pool < 20; ++pool) {
    const bool ssd = pool % 2 != 0;
    Storage::createPool(poolSpec(
        ("pool-with-a-long-name-number-" + std::to_string(pool)).c_str(),
        {static_cast<std::uint8_t>(pool * 3 + (ssd ? 1 : 0))}, 100 * GIB, ssd ? TVK_TIER_SSD : TVK_TIER_HDD));
  }
  for (std::uint32_t volume = 0; volume < 128; ++volume) {
    Storage::createVolume(volumeSpec(
        ("volume-" + std::to_string(volume)).c_str(), TVK_VOLUME_TIERED,
        {{volume % 10 * 2 + 1, GIB * (volume % 7 + 1)}, {volume % 10 * 2 + 2, GIB}}));
  }
  voltvkctl({"policy", "stop"});
  voltvkctl({"io", "volume-0", "--reads", "2000", "--writes", "300"});
  open();
  ASSERT_TRUE(browser->waitFor("document.querySelectorAll('#tree > li').length === 255"));
  EXPECT_TRUE(browser->waitFor("byId('volume-list').children.length === 128"));
  ASSERT_TRUE(
      browser->waitFor("document.querySelector('#heat-chart svg') && state.samples.get(1).length > 1"));
  for (const int width : {400, 2000}) {
    for (const char* scheme : {"light", "dark"}) {
      SCOPED_TRACE(std::to_string(width) + " " + scheme);
      setAppearance(width, scheme);
      const std::string beside =
          "document.documentElement.scrollWidth > document.documentElement.clientWidth";
      EXPECT_EQ(browser->run("return [innerWidth, " + beside + "];"), Json({width, false}));
      const Json worst = browser->run(CONTRAST);
      EXPECT_GE(worst[0].get<double>(), 4.5) << worst[1];
      picture(std::to_string(width) + "-" + scheme);
    }
  }
  // Among many, one is found.
  browser->run("byId('find').value = 'VOLUME-77'; byId('find').dispatchEvent(new Event('input'));");
  EXPECT_EQ(texts("#volume-list button"), Json({"volume-77"}));
}

}  // namespace
}  // namespace tvp::test
