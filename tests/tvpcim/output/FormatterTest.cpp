// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Formatter.h"

#include "host/tvpcim/output/Listing.h"
#include "host/tvpcim/output/Text.h"
#include "support/Lines.h"
#include "terminal/Width.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

namespace tvp::host::tvpcim {
namespace {

using nlohmann::ordered_json;
using terminal::displayWidth;
using terminal::Terminal;
using test::linesOf;
using testing::HasSubstr;
using testing::Not;

std::unique_ptr<const Formatter> formatter(
    const char* format, std::size_t columns = Terminal::UNLIMITED, bool colour = false, bool wide = false) {
  return makeFormatter(format, {{columns, colour}, wide});
}

Instance instanceOf(const std::string& className, std::vector<NamedValue> properties) {
  Instance instance;
  instance.path.className = className;
  instance.properties = std::move(properties);
  return instance;
}

Listing listingOf(std::vector<Instance> instances) {
  const std::vector<Column> columns = columnsOf(instances);
  return {"things", std::move(instances), columns};
}

/** One property of every kind, with the contents that are easily spoilt. */
Instance everyKind() {
  return instanceOf(
      "TVP_Thing",
      {{"Largest", Value::uint64(18446744073709551615U)},
       {"Smallest", Value::sint64(INT64_MIN)},
       {"Flag", Value::boolean(true)},
       {"Text", Value::string("say \"hi\"\\ \n\x1b[31m \xff\xfe Käse")},
       {"Unset", Value::null(CMPI_uint32)},
       {"Time", Value::dateTime(*DateTime::parse("20260131235959.123456+060"))},
       {"Numbers", Value::array(CMPI_uint8, {Value::uint8(0), Value::uint8(255)})},
       {"Nothing", Value::array(CMPI_string, {})},
       {"Inner", Value::instance(instanceOf("TVP_Inner", {{"Name", Value::string("a \"b\"")}}))}});
}

TEST(JsonFormatter, KeepsEveryValueAndAlwaysParses) {
  const auto json = formatter("json");
  const ordered_json thing = ordered_json::parse(json->listing(listingOf({everyKind()}))).at(0);
  EXPECT_EQ(thing.at("Largest").get<std::uint64_t>(), 18446744073709551615U);
  EXPECT_EQ(thing.at("Smallest").get<std::int64_t>(), INT64_MIN);
  EXPECT_EQ(thing.at("Flag"), true);
  EXPECT_EQ(thing.at("Text"), "say \"hi\"\\ \n\x1b[31m \\xFF\\xFE Käse");
  EXPECT_TRUE(thing.at("Unset").is_null());
  EXPECT_EQ(thing.at("Time"), "2026-01-31T23:59:59.123456+01:00");
  EXPECT_EQ(thing.at("Numbers"), ordered_json({0, 255}));
  EXPECT_EQ(thing.at("Nothing"), ordered_json::array());
  EXPECT_EQ(thing.at("Inner").at("Name"), "a \"b\"");
  EXPECT_EQ(thing.begin().key(), "Largest") << "the order of the properties is kept";

  EXPECT_EQ(json->listing(listingOf({})), "[]\n");
  EXPECT_EQ(json->paths("paths", {}), "[]\n");
  EXPECT_EQ(json->tree({}), "[]\n");
  EXPECT_EQ(json->nothing(), "null\n");
  EXPECT_EQ(linesOf(json->event(everyKind())).size(), 1U) << "a stream has one object on a line";
}

TEST(JsonFormatter, ParsesWhateverBytesTheTextsHold) {
  std::mt19937 random(20260131);
  for (int round = 0; round < 500; ++round) {
    std::string text(random() % 24, '\0');
    for (char& byte : text) {
      byte = static_cast<char>(random());
    }
    const Instance instance = instanceOf("TVP_Thing", {{"Text", Value::string(text)}});
    const ordered_json parsed = ordered_json::parse(formatter("json")->record(instance));
    EXPECT_EQ(parsed.at("Text"), toUtf8(text));
    for (const char byte : formatter("table")->record(instance)) {
      EXPECT_TRUE(byte == '\n' || static_cast<unsigned char>(byte) >= 0x20) << "a control byte came through";
    }
  }
}

TEST(MofFormatter, WritesInstancesThatAMofCompilerReads) {
  const std::string mof = formatter("mof")->record(everyKind());
  EXPECT_EQ(
      mof, "instance of TVP_Thing {\n"
           "  Largest = 18446744073709551615;\n"
           "  Smallest = -9223372036854775808;\n"
           "  Flag = TRUE;\n"
           "  Text = \"say \\\"hi\\\"\\\\ \\n\\x001B[31m \\\\xFF\\\\xFE Käse\";\n"
           "  Unset = NULL;\n"
           "  Time = \"20260131235959.123456+060\";\n"
           "  Numbers = {0, 255};\n"
           "  Nothing = {};\n"
           "  Inner = \"instance of TVP_Inner {\\n  Name = \\\"a \\\\\\\"b\\\\\\\"\\\";\\n};\\n\";\n"
           "};\n");
}

TEST(Formatters, ListPathsWhole) {
  ObjectPath path;
  path.nameSpace = "root/kvs/tvp/smi_15";
  path.className = "TVP_Thing";
  path.keys = {{"Name", Value::string(std::string(200, 'n'))}, {"Number", Value::uint32(7)}};
  const std::string text = "root/kvs/tvp/smi_15:TVP_Thing.Name=\"" + std::string(200, 'n') + "\",Number=7";
  EXPECT_EQ(formatter("table", 40)->paths("names", {path}), text + "\n") << "a path is there to be copied";
  EXPECT_EQ(formatter("table")->paths("names", {}), "No names.\n");
  EXPECT_EQ(ordered_json::parse(formatter("json")->paths("names", {path})), ordered_json::array({text}));
  EXPECT_EQ(formatter("mof")->paths("names", {path}), "// " + text + "\n");
  const Instance holder = instanceOf("TVP_Holder", {{"Holds", Value::reference(path)}});
  EXPECT_EQ(ordered_json::parse(formatter("json")->record(holder)).at("Holds"), text);
  EXPECT_THAT(formatter("table")->record(holder), HasSubstr(text));
  EXPECT_THAT(formatter("mof")->record(holder), HasSubstr("Holds = \"root/kvs"));
}

TEST(TableFormatter, NeverWrapsARow) {
  std::vector<Instance> drives;
  for (const char* name : {"/dev/sda", "日本語のディスク", "a very long name of a drive that goes on"}) {
    drives.push_back(instanceOf(
        "TVP_Drive", {{"Name", Value::string(name)},
                      {"Number", Value::uint16(3)},
                      {"Model", Value::string("Model\twith\x1b[2J controls")}}));
  }
  const Listing listing = listingOf(drives);
  for (std::size_t columns = 1; columns < 100; ++columns) {
    const auto table = formatter("table", columns);
    for (const std::string& text :
         {table->listing(listing), table->record(drives[1]), table->event(drives[2])}) {
      for (const std::string& line : linesOf(text)) {
        EXPECT_LE(displayWidth(line), columns) << line;
      }
    }
    EXPECT_EQ(linesOf(table->listing(listing)).size(), 4U);
  }
  for (const auto& uncut : {formatter("table"), formatter("table", 10, false, true)}) {
    EXPECT_THAT(uncut->listing(listing), HasSubstr("goes on       3  Model\\x09with\\x1B[2J controls\n"));
  }
  EXPECT_THAT(formatter("table", 10)->listing(listing), Not(HasSubstr("Model")));
}

TEST(TableFormatter, AlignsNumbersAndUsesColourOnATerminalOnly) {
  const Listing listing = {
      "things",
      {instanceOf("T", {{"Size", Value::uint64(204800)}, {"Used", Value::boolean(true)}}),
       instanceOf("T", {{"Size", Value::uint64(3)}, {"Used", Value::null(CMPI_boolean)}})},
      {sizeColumn("SIZE", "Size"), flagColumn("USED", "Used"),
       onlyWide(plainColumn("SECTORS", "Size", true))}};
  EXPECT_EQ(formatter("table")->listing(listing), "   SIZE  USED\n100 MiB  yes\n1.5 KiB  no\n");
  EXPECT_THAT(formatter("table", 80, true)->listing(listing), HasSubstr("\033[1m   SIZE  USED\033[0m\n"));
  EXPECT_THAT(
      formatter("table", 80, false, true)->listing(listing),
      HasSubstr("   SIZE  USED  SECTORS\n100 MiB  yes    204800\n"));
  EXPECT_EQ(formatter("table")->listing(listingOf({})), "No things.\n");
}

Instance node(const std::string& name, std::uint64_t size, std::uint64_t used, Value::List children) {
  return instanceOf(
      "TreeNode", {{"Kind", Value::string("pool")},
                   {"Number", Value::uint32(7)},
                   {"Name", Value::string(name)},
                   {"Detail", Value::null(CMPI_string)},
                   {"SizeInSectors", Value::uint64(size)},
                   {"UsedInSectors", Value::uint64(used)},
                   {"Children", Value::array(CMPI_instance, std::move(children))}});
}

TEST(Formatters, ShowATree) {
  const Instance root = node(
      "top", 2048, 1024,
      {Value::instance(node("left", 4, 0, {Value::instance(node("leaf", 4, 12, {}))})),
       Value::instance(node("right", 0, 0, {}))});
  EXPECT_EQ(
      formatter("table")->tree({root}), "pool 7 top  1 MiB, 50% used\n"
                                        "├─ pool 7 left  2 KiB, 0% used\n"
                                        "│ └─ pool 7 leaf  2 KiB, 6 KiB used\n"
                                        "└─ pool 7 right  0 B\n");
  const ordered_json parsed = ordered_json::parse(formatter("json")->tree({root}));
  EXPECT_EQ(parsed.at(0).at("Children").at(0).at("Children").at(0).at("Name"), "leaf");
  EXPECT_THAT(
      formatter("mof")->tree({root}), HasSubstr("  Name = \"right\";\n  Detail = NULL;\n"
                                                "  SizeInSectors = 0;\n  UsedInSectors = 0;\n"
                                                "  Level = 1;\n"));
}

TEST(Listing, SharesAreRoundedToPercent) {
  EXPECT_EQ(percentOf(0, 0), 0U);
  EXPECT_EQ(percentOf(1, 3), 33U);
  EXPECT_EQ(percentOf(2, 3), 67U);
  EXPECT_EQ(percentOf(~std::uint64_t{0}, ~std::uint64_t{0}), 100U);
}

}  // namespace
}  // namespace tvp::host::tvpcim
