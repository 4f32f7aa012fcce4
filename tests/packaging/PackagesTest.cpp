// SPDX-License-Identifier: Apache-2.0
// The Debian package: what is in it, what it depends on, and that its maintainer scripts leave object
// managers alone.
#include "support/Command.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using namespace tvp::test;

const std::string packageTool = "/usr/bin/dpkg-deb";

const fs::path packageDirectory = TVP_PACKAGE_DIRECTORY;

const std::string libraries = TVP_INSTALL_LIBDIR;
const std::string completionsOfZsh = TVP_ZSH_COMPLETION_DIRECTORY;

/** What is installed, below the prefix. */
std::set<std::string> installedFiles() {
  return {
      libraries + "/libtarvexProProvider.so",
      libraries + "/libVOLTVK.so",
      "bin/tvpcim",
      "sbin/voltvkctl",
      "sbin/tvp-register",
      "share/tarvexpro/Interop.mof",
      "share/tarvexpro/TVP.mof",
      "share/tarvexpro/TVPIndication.mof",
      "share/tarvexpro/pegasus/TVPRegistration.mof",
      "share/tarvexpro/sfcb/TVP.reg",
      "share/man/man1/tvpcim.1.gz",
      "share/man/man8/voltvkctl.8.gz",
      "share/man/man8/tvp-register.8.gz",
      "share/bash-completion/completions/tvpcim",
      "share/bash-completion/completions/voltvkctl",
      "share/bash-completion/completions/tvp-register",
      completionsOfZsh + "/_tvpcim",
      completionsOfZsh + "/_voltvkctl",
      completionsOfZsh + "/_tvp-register",
      "lib/systemd/system/tvpcim.service",
      "lib/systemd/system/voltvk-policy.service",
      "lib/systemd/system/voltvk-policy.timer",
      "share/lintian/overrides/tarvexpro-provider",
      "share/doc/tarvexpro-provider/README.md",
      "share/doc/tarvexpro-provider/docs/architecture.md",
      "share/doc/tarvexpro-provider/changelog.gz",
      "share/doc/tarvexpro-provider/copyright"};
}

/** The packages that ctest has built for these tests. */
class PackagesTest : public testing::Test {
protected:
  void SetUp() override {
    if (!fs::exists(packageTool) || !fs::exists("/usr/bin/dpkg-shlibdeps")) {
      GTEST_SKIP() << "needs dpkg-dev, which only systems with Debian packages have";
    }
    ASSERT_TRUE(fs::exists(packageDirectory))
        << "the packages are built by ctest: run 'ctest -R Packages' in the build directory";
  }

  std::string package(const std::string& name) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(packageDirectory)) {
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

  /** The files of a package, directories left out, relative to /usr if they are below it. */
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

  TemporaryDirectory m_directory;
};

TEST_F(PackagesTest, HoldWhatTheyShouldAndDependOnWhatTheyNeed) {
  std::set<std::string> provider = installedFiles();
  provider.insert("VolMan/TVPEvents.properties");
  provider.insert("/etc/pam.d/tvpcim");
  // Every page of the documentation belongs to the package: new ones need no change here.
  for (const fs::directory_entry& page : fs::directory_iterator(TVP_SOURCE_DIR "/docs")) {
    provider.insert("share/doc/tarvexpro-provider/docs/" + page.path().filename().string());
  }
  EXPECT_EQ(content("tarvexpro-provider"), provider);
  EXPECT_THAT(ask({"-f", package("tarvexpro-provider"), "Depends"}), HasSubstr("libsqlite3-0"));
  // Its files were in another package once, which gives way.
  for (const char* relation : {"Conflicts", "Replaces", "Provides"}) {
    EXPECT_EQ(ask({"-f", package("tarvexpro-provider"), relation}), "tarvexpro-dev\n") << relation;
  }
}

TEST_F(PackagesTest, ScriptsLeaveObjectManagersAloneAndTakeTheirLinksAway) {
  const fs::path control = m_directory.path() / "control";
  const fs::path commands = m_directory.path() / "bin";
  const fs::path records = m_directory.path() / "records";
  const fs::path link = m_directory.path() / "libVOLTVK.so";
  ask({"-e", package("tarvexpro-provider"), control});
  fs::create_directory(commands);
  fs::create_directory(records);
  for (const char* command :
       {"cimmof", "cimprovider", "cimserver", "sfcbrepos", "sfcbunstage", "systemctl"}) {
    std::ofstream(commands / command) << "#!/bin/sh\n>'" << m_directory.file("called") << "'\n";
    fs::permissions(commands / command, fs::perms::owner_all);
  }
  fs::create_symlink("/usr/" TVP_INSTALL_LIBDIR "/libVOLTVK.so", link);
  std::ofstream(records / "pegasus") << "folder=" << m_directory.path().string() << '\n';
  const auto runScript = [&](const char* script, const char* action, const char* version) {
    const CommandResult result = Command({control / script, action, version})
                                     .with("TVP_REGISTER_RECORDS", records)
                                     .with("PATH", commands.string() + ":/usr/bin:/bin")
                                     .run();
    EXPECT_EQ(result.exitStatus, 0) << script << ' ' << action << ": " << result.err;
    return result.out;
  };
  EXPECT_THAT(runScript("postinst", "configure", ""), HasSubstr("tvp-register --pegasus or"));
  EXPECT_EQ(runScript("prerm", "upgrade", "2.0"), "");
  EXPECT_THAT(runScript("postinst", "configure", "0.9"), HasSubstr("run tvp-register --pegasus and"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_THAT(runScript("prerm", "remove", ""), HasSubstr("cimprovider -r -m tarvexProProviderModule"));
  runScript("postrm", "purge", "");
  EXPECT_FALSE(fs::is_symlink(link));
  EXPECT_FALSE(fs::exists(records));
  EXPECT_FALSE(fs::exists(m_directory.path() / "called"));
  EXPECT_TRUE(fs::exists(control / "md5sums"));
}

}  // namespace
