// The Debian packages: what is in them, what they depend on, and that their maintainer scripts leave object
// managers alone.
#include "InstalledFiles.h"
#include "support/Command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tvp::test::Command;
using tvp::test::CommandResult;
using tvp::test::TemporaryFolder;

const std::string packageTool = "/usr/bin/dpkg-deb";

class PackagesTest : public testing::Test {
protected:
  void SetUp() override {
    if (!fs::exists(packageTool) || !fs::exists("/usr/bin/dpkg-shlibdeps")) {
      GTEST_SKIP() << "needs dpkg-dev, which only systems with Debian packages have";
    }
    const CommandResult result = Command({TVP_CPACK_COMMAND, "--config", TVP_BINARY_DIR "/CPackConfig.cmake",
                                          "-B", m_folder.path(), "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=none"})
                                     .limit(std::chrono::minutes(4))
                                     .run();
    ASSERT_EQ(result.exitStatus, 0) << result.out << result.err;
  }

  std::string package(const std::string& name) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.path())) {
      const std::string file = entry.path().filename();
      if (file.rfind(name + "_" TVP_VERSION "_", 0) == 0 && entry.path().extension() == ".deb") {
        return entry.path();
      }
    }
    throw std::runtime_error("no package " + name);
  }

  std::string ask(const std::vector<std::string>& arguments) const {
    std::vector<std::string> line{packageTool};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const CommandResult result = Command(line).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }

  /** The files of a package, folders left out, relative to /usr where they lie there. */
  std::set<std::string> content(const std::string& name) const {
    std::istringstream lines(ask({"-c", package(name)}));
    std::set<std::string> files;
    for (std::string line; std::getline(lines, line);) {
      EXPECT_THAT(line, HasSubstr(" root/root "));
      const std::string file = line.substr(line.find(" ./") + 2);
      if (file.back() != '/') {
        files.insert(file.rfind("/usr/", 0) == 0 ? file.substr(5) : file);
      }
    }
    return files;
  }

  TemporaryFolder m_folder;
};

TEST_F(PackagesTest, HoldWhatTheyShouldAndDependOnWhatTheyNeed) {
  std::set<std::string> provider = tvp::test::providerFiles();
  provider.insert("VolMan/TVPEvents.properties");
  provider.insert("share/lintian/overrides/tarvexpro-provider");
  // Every page of the documentation belongs to the package: new ones need no change here.
  for (const fs::directory_entry& page : fs::directory_iterator(TVP_SOURCE_DIR "/docs")) {
    provider.insert("share/doc/tarvexpro-provider/docs/" + page.path().filename().string());
  }
  EXPECT_EQ(content("tarvexpro-provider"), provider);
  EXPECT_EQ(content("tarvexpro-dev"), tvp::test::developmentFiles());
  EXPECT_THAT(ask({"-f", package("tarvexpro-provider"), "Depends"}), HasSubstr("libsqlite3-0"));
  EXPECT_THAT(ask({"-f", package("tarvexpro-dev"), "Depends"}),
              HasSubstr("tarvexpro-provider (= " TVP_VERSION ")"));
}

TEST_F(PackagesTest, UnpackedCommandsRunAndScriptsTouchNoObjectManager) {
  const fs::path root = m_folder.path() / "root";
  const fs::path control = m_folder.path() / "control";
  for (const char* name : {"tarvexpro-provider", "tarvexpro-dev"}) {
    ask({"-x", package(name), root});
  }
  const CommandResult result = Command({root / "usr/bin/tvpcim", "identity"})
                                   .without("LD_LIBRARY_PATH")
                                   .with("VOLTVK_STATE", m_folder.file("state.db"))
                                   .run();
  EXPECT_EQ(result.exitStatus, 0) << result.err;

  ask({"-e", package("tarvexpro-provider"), control});
  for (const char* script : {"preinst", "postinst", "postrm"}) {
    EXPECT_FALSE(fs::exists(control / script)) << script;
  }
  EXPECT_TRUE(fs::exists(control / "md5sums"));
  // An upgrade keeps the registration; a removal takes the links and the record away, and says what is left
  // to do.
  const std::string asInstalled = "/usr/" TVP_INSTALL_LIBDIR "/libVOLTVK.so";
  const fs::path records = m_folder.path() / "records";
  const fs::path link = m_folder.path() / "libVOLTVK.so";
  fs::create_directory(records);
  fs::create_symlink(asInstalled, link);
  std::ofstream(records / "pegasus") << "folder=" << m_folder.path().string() << '\n';
  const auto runScript = [&](const char* action) {
    return Command({control / "prerm", action}).with("TVP_REGISTER_RECORDS", records).run();
  };
  EXPECT_EQ(runScript("upgrade").exitStatus, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  const CommandResult removed = runScript("remove");
  EXPECT_EQ(removed.exitStatus, 0) << removed.err;
  EXPECT_THAT(removed.out, HasSubstr("cimprovider -r -m tarvexProProviderModule"));
  EXPECT_FALSE(fs::is_symlink(link));
  EXPECT_FALSE(fs::exists(records));
}

}  // namespace
