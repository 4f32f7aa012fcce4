// SPDX-License-Identifier: Apache-2.0
#include "support/Lines.h"
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>

namespace tvp::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class TvpcimInput : public TvpcimTest {};

TEST_F(TvpcimInput, ThatIsBadEndsWithTheReasonAndTheRightStatus) {
  const std::string brokenSchema = directory().write("broken.mof", "class TVP_A {\n  uint32 X\n};\n");
  const std::string path = "TVP_VirtualPool.Name=\"x\"";
  const std::string fifo = directory().file("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::string library = TVP_BINARY_DIR "/lib/libtarvexProProvider.so";
  const std::string truncated = directory().write("half.so", readFile(library).substr(0, 200000));
  const std::string large = directory().write("large.mof", "");
  std::filesystem::resize_file(large, 1ULL << 40U);
  // SFCB passes on that the client sent no list of properties, which is refused before all else.
  const char* manager = std::getenv("TVP_OBJECT_MANAGER");
  const bool modified = manager == nullptr || std::string(manager) != "sfcb";
  const char* invalid = "CIM_ERR_INVALID_PARAMETER: The input parameters are invalid";
  const struct {
    Words words;
    int status;
    const char* text;
  } cases[] = {
      {{"drivse"}, 2, "did you mean 'drives'?"},
      {{"help", "pool", "creat"}, 2, "there is no verb 'pool creat'; did you mean 'create'?"},
      {{"pool", "show", "7"}, 1, "CIM_ERR_NOT_FOUND: there is no pool 7; see 'tvpcim pools'"},
      {{"ei", "TVP_VirtualPol"}, 2, "tvpcim: ei: CIM_ERR_INVALID_CLASS: "},
      {{"ei", "TVP_LogicalDevice", "--property", "Modell"}, 2, "did you mean 'Model'?"},
      {{"gi", "TVP_VirtualPool.Nane=\"x\""},
       2,
       "CIM_ERR_NO_SUCH_PROPERTY: the class TVP_VirtualPool has no property 'Nane'"},
      {{"im", "TVP_TierService", "DeletePool"}, 2, "CIM_ERR_METHOD_NOT_FOUND"},
      {{"im", "TVP_TierService", "deleteVirtualPool", "VirtualPoolId=1"}, 2, "DeleteVirtualPool"},
      {{"im", "TVP_TierService", "DeleteVirtualPool"}, 1, "DeleteVirtualPool also takes VirtualPoolId"},
      {{"pool", "create", "p", "--drives", "0", "--size", "1000"},
       2,
       "the size '1000' is not a multiple of 512"},
      {{"pool", "create", "p", "--drives", "1,256", "--size", "1GiB"},
       2,
       "'256' is not a drive number; drive numbers are 0 to 255"},
      {{"pool", "create", "p", "--drives", "", "--size", "1GiB"}, 2, "such as 3,4, not ''; see"},
      {{"pool", "create", "p", "--drives", "0,", "--size", "1GiB"}, 2, "such as 3,4, not '0,'; see"},
      {{"pool", "create", "p", "--drives", "0, ,1", "--size", "1GiB"}, 2, "not '0, ,1'; see"},
      {{"pool", "create", "p", "--drives", ",0", "--size", "1GiB"}, 2, "not ',0'; see"},
      {{"pool", "modify", "p", "--description", ""},
       2,
       "say what to change: --name, --tier or --description; an empty text changes nothing"},
      {{"volume", "modify", "v"}, 2, "say what to change: --name, --description or --knob"},
      {{"volume", "create", "v", "--pool", "a:1G", "--pool", "b:1G", "--pool", "c:1G"},
       2,
       "--pool is given 3"},
      {{"volume", "cache", "v", "--drive", "256", "--size", "1G", "--ssd-pool", "p", "--ssd-size", "1G"},
       2,
       "'256' is not a drive number; drive numbers are 0 to 255"},
      {{"pool", "delete", "gold"}, 1, "CIM_ERR_NOT_FOUND: there is no pool 'gold'; see 'tvpcim pools'"},
      {{"volume", "create", "v", "--pool", "gold"}, 2, "--pool takes NAME_OR_ID:SIZE"},
      {{"volume", "stats", "7"}, 1, "tvpcim: hint: no volume has the number 7"},
      {{"mi", path, "Description=d"}, 1, modified ? "tvpcim: mi: CIM_ERR_NOT_SUPPORTED: " : invalid},
      {{"mi", path, "Description=d", "--user", "nobody"},
       1,
       modified ? "tvpcim: mi: CIM_ERR_ACCESS_DENIED: nobody : is not a member of Administrator/root\n"
                  "tvpcim: hint: this is for administrators, users whose primary group is root's\n"
                : invalid},
      {{"drives", "--schema", "/none\x1b[2J\xc2\x9b"}, 1, "/none\\x1B[2J\\xC2\\x9B: "},
      {{"drives", "--provider", "/nonexistent.so"},
       1,
       "cannot read the provider /nonexistent.so: No such file or directory; check the path"},
      {{"drives", "--provider", "/etc/passwd"}, 1, "cannot load the provider /etc/passwd: "},
      {{"drives", "--provider", TVP_BINARY_DIR "/lib/libVOLTVK.so"},
       1,
       "is not a provider named tarvexProProvider: it exports none of tarvexProProvider_Create_InstanceMI"},
      {{"drives", "--schema", "/nonexistent.mof"}, 1, "name the file of the classes with --schema"},
      {{"drives", "--schema", brokenSchema}, 1, "broken.mof:3: expected "},
      {{"drives", "--schema", "/dev/zero"}, 1, "/dev/zero: cannot read the schema: it is not a regular file"},
      {{"drives", "--schema", fifo}, 1, "it is not a regular file"},
      {{"drives", "--schema", large}, 1, "it is larger than 16 MiB"},
      {{"drives", "--provider", fifo}, 1, "it is not a regular file"},
      {{"drives", "--provider", truncated}, 1, "half.so: it is truncated"},
      {{"watch", "TVP_Nothing"}, 2, "has no class 'TVP_Nothing'"},
      {{"watch", "TVP_VirtualPool"}, 2, "TVP_VirtualPool is not a class of indications"},
      {{"watch", "--count", "0"}, 2, "--count: Value 0 not in range 1 to 100000000; "},
  };
  for (const auto& [words, status, text] : cases) {
    SCOPED_TRACE(text);
    const CommandResult result = tvpcim(words);
    EXPECT_EQ(result.exitStatus, status) << result.err;
    EXPECT_THAT(result.err, HasSubstr(text));
    EXPECT_EQ(result.out, "") << "errors are for standard error";
  }
}

TEST_F(TvpcimInput, CimVerbsGiveTheProvidersAnswers) {
  EXPECT_EQ(answer({"ei", "tvp_tierservice"}), Json::parse(R"([{"CreationClassName": "TVP_TierService",
                                                               "Name": "TVP_TierServiceInstance1"}])"));
  EXPECT_EQ(answer({"ein", "TVP_TierService"}), Json::array());
  EXPECT_EQ(answer({"ei", "CIM_ComputerSystem"}), Json::array())
      << "a class that the provider does not serve";
  EXPECT_EQ(answer({"ei", "TVP_VirtualPoolMember", "--property", "endrange"}).at(0).count("StartRange"), 0U)
      << "was not asked for";
  EXPECT_EQ(
      answer({"ci", "TVP_VirtualPool", "Name=a \"b\""}).at("Path"),
      "root/kvs/tvp/smi_15:TVP_VirtualPool.Name=\"a \\\"b\\\"\"");
  EXPECT_EQ(
      answer({"im", "TVP_TierService", "GetVirtualPoolMembers", "VirtualPoolId=3"}),
      Json::parse(R"({"ReturnValue": 0, "Members": []})"));
  for (const char* verb : {"ai", "rn", "ri"}) {
    EXPECT_EQ(answer({verb, "TVP_VirtualPool"}), Json::array()) << verb;
  }
  EXPECT_EQ(answer({"an", "TVP_VirtualPool", "--assoc-class", "TVP_Any"}), Json::array());

  const CommandResult nothing = tvpcim({"gi", "TVP_TierService.Name=\"x\"", "-o", "json"});
  EXPECT_EQ(nothing.out, "null\n");
  EXPECT_THAT(nothing.err, HasSubstr("returned no instance"));
  EXPECT_THAT(tvpcim({"--version"}).out, HasSubstr("1.0.0"));
  EXPECT_EQ(tvpcim({"help", "pool", "create"}).out, tvpcim({"pool", "create", "--help"}).out);
  EXPECT_EQ(tvpcim({"help"}).out, tvpcim({"--help"}).out);
}

TEST_F(TvpcimInput, TheDeclarationOfAClassIsItsOwnSchema) {
  const Json classes = answer({"classes"});
  EXPECT_EQ(classes.size(), 11U);
  for (const Json& known : classes) {
    const std::string name = known.at("Name");
    const CommandResult shown = tvpcim({"mof", name});
    ASSERT_EQ(shown.exitStatus, 0) << shown.err;
    if (shown.out.find("EmbeddedInstance") != std::string::npos) {
      continue;  // needs the classes that it embeds
    }
    const std::string file = directory().write(name + ".mof", shown.out);
    const CommandResult again = tvpcim({"mof", name, "--schema", file});
    EXPECT_EQ(again.out, shown.out) << again.err;
    EXPECT_EQ(answer({"mof", name, "--schema", file}), answer({"mof", name}));
  }
}

TEST_F(TvpcimInput, ATerminalGetsWhatFitsAndAFileEverything) {
  addDrive("ssd", "10GiB");
  const CommandResult narrow = command("tvpcim", {"drives"}).terminal(40).run();
  EXPECT_THAT(narrow.out, HasSubstr("\033[1m"));
  EXPECT_THAT(narrow.out, Not(HasSubstr("MODEL")));
  const CommandResult plain = command("tvpcim", {"drives"}).terminal(40).with("NO_COLOR", "1").run();
  EXPECT_THAT(plain.out, Not(HasSubstr("\033")));
  EXPECT_THAT(command("tvpcim", {"drives", "--wide"}).terminal(40).run().out, HasSubstr("WWID"));
  EXPECT_THAT(command("tvpcim", {"drives"}).with("COLUMNS", "40").run().out, HasSubstr("Virtual SSD"));
}

TEST_F(TvpcimInput, TheProviderAndTheClassesAreFoundBesideTheCommand) {
  namespace fs = std::filesystem;
  const fs::path prefix = directory().path() / "prefix";
  fs::create_directories(prefix / "bin");
  fs::copy_file(TVP_BINARY_DIR "/bin/tvpcim", prefix / "bin/tvpcim");
  Command moved({(prefix / "bin/tvpcim").string(), "ei", "TVP_TierService", "-o", "json"});
  moved.with("VOLTVK_STATE", directory().file("state.db"));
  const CommandResult alone = moved.run();
  EXPECT_TRUE(
      alone.exitStatus == 0 ||
      alone.err.find((prefix / "share/tarvexpro/TVP.mof").string()) != std::string::npos)
      << "says where it looked, unless the product is installed: " << alone.err;
  for (const char* part : {"lib", "share"}) {
    fs::create_directory_symlink(fs::path(TVP_BINARY_DIR) / part, prefix / part);
  }
  const CommandResult whole = moved.run();
  EXPECT_EQ(whole.exitStatus, 0) << whole.err;
  EXPECT_EQ(Json::parse(whole.out).size(), 1U);
}

TEST_F(TvpcimInput, OutputThatCannotBeWrittenIsAFailure) {
  const CommandResult full =
      Command({"/bin/sh", "-c", "exec " TVP_BINARY_DIR "/bin/tvpcim classes > /dev/full"}).run();
  EXPECT_EQ(full.exitStatus, 1);
  EXPECT_THAT(full.err, HasSubstr("standard output cannot be written"));
  addDrive("hdd", "1GiB");
  const CommandResult closed = Command({"/bin/sh", "-c", "exec " TVP_BINARY_DIR "/bin/tvpcim drives >&-"})
                                   .with("VOLTVK_STATE", directory().file("state.db"))
                                   .run();
  EXPECT_EQ(closed.exitStatus, 1);
  EXPECT_GE(answer({"drives"}).size(), 1U) << "the state is not what took the place of the output";
}

}  // namespace
}  // namespace tvp::test
