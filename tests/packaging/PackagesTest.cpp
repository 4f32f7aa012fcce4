// SPDX-License-Identifier: Apache-2.0
// The packages for Debian and for distributions with RPM: what is in them, what they depend on, and that
// their scripts leave object managers alone.
#include "support/Command.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using namespace tvp::test;

const fs::path packageDirectory = TVP_PACKAGE_DIRECTORY;

const std::string libraries = TVP_INSTALL_LIBDIR;
const std::string completionsOfZsh = TVP_ZSH_COMPLETION_DIRECTORY;

/** What is installed by both packages, below the prefix. */
std::vector<std::string> installedFiles() {
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
      "share/doc/tarvexpro-provider/README.md",
      "share/doc/tarvexpro-provider/docs/architecture.md",
      "share/doc/tarvexpro-provider/copyright"};
}

/** The packages that ctest has built for these tests. */
class PackagesTest : public testing::Test {
protected:
  void SetUp() override {
    if (!fs::exists("/usr/bin/dpkg-shlibdeps") || !fs::exists("/usr/bin/rpmbuild")) {
      GTEST_SKIP() << "needs dpkg-dev and rpm, which make the packages";
    }
    ASSERT_TRUE(fs::exists(packageDirectory))
        << "the packages are built by ctest: run 'ctest -R Packages' in the build directory";
    m_deb = package("tarvexpro-provider_" TVP_VERSION "_", ".deb");
    m_rpm = package("tarvexpro-provider-" TVP_VERSION "-", ".rpm");
  }

  static std::string package(const std::string& name, const char* kind) {
    for (const fs::directory_entry& entry : fs::directory_iterator(packageDirectory)) {
      if (entry.path().filename().string().rfind(name, 0) == 0 && entry.path().extension() == kind) {
        return entry.path();
      }
    }
    throw std::runtime_error("no package " + name);
  }

  /** Runs a command; rpm makes a database in the home directory of whoever asks it something. */
  std::string ask(const std::vector<std::string>& line) const {
    const CommandResult result = Command(line).with("HOME", m_directory.path()).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }
  std::string field(const char* name) const { return ask({"/usr/bin/dpkg-deb", "-f", m_deb, name}); }
  std::string query(const std::string& format) const {
    return ask({"/usr/bin/rpm", "-qp", "--qf", format, m_rpm});
  }

  /** Modes by file, directories left out, files relative to /usr if they are below it. */
  using Contents = std::map<std::string, std::string>;
  /** @param lines mode, owner and, at the end, the file @param owner as expected */
  static Contents contentsIn(const std::string& text, const std::string& owner) {
    std::istringstream lines(text);
    Contents files;
    for (std::string line; std::getline(lines, line);) {
      EXPECT_THAT(line, HasSubstr(owner));
      const std::string file =
          line.substr(line.rfind(" /") == std::string::npos ? line.rfind(" ./") + 2 : line.rfind(" /") + 1);
      if (line.front() != 'd') {
        files[file.rfind("/usr/", 0) == 0 ? file.substr(5) : file] = line.substr(0, line.find(' '));
      }
    }
    return files;
  }
  Contents deb() const { return contentsIn(ask({"/usr/bin/dpkg-deb", "-c", m_deb}), " root/root "); }
  Contents rpm() const {
    return contentsIn(
        query("[%{FILEMODES:perms} %{FILEUSERNAME}/%{FILEGROUPNAME} %{FILENAMES}\n]"), " root/root ");
  }

  TemporaryDirectory m_directory;
  std::string m_deb;
  std::string m_rpm;
};

TEST_F(PackagesTest, HoldTheSameFilesAndDependOnWhatTheyNeed) {
  Contents expected;
  for (const std::string& file : installedFiles()) {
    const bool isProgram = file.find("bin/") <= 1;
    expected[file] = isProgram ? "-rwxr-xr-x" : "-rw-r--r--";
  }
  for (const char* file : {"VolMan/TVPEvents.properties", "/etc/pam.d/tvpcim"}) {
    expected[file] = "-rw-r--r--";
  }
  // Every page of the documentation belongs to the package: new ones need no change here.
  for (const fs::directory_entry& page : fs::directory_iterator(TVP_SOURCE_DIR "/docs")) {
    expected["share/doc/tarvexpro-provider/docs/" + page.path().filename().string()] = "-rw-r--r--";
  }
  Contents ofDebian = expected;
  ofDebian["share/lintian/overrides/tarvexpro-provider"] = "-rw-r--r--";
  ofDebian["share/doc/tarvexpro-provider/changelog.gz"] = "-rw-r--r--";
  EXPECT_EQ(deb(), ofDebian);
  Contents ofRpm = expected;
  ofRpm["share/licenses/tarvexpro-provider/LICENSE"] = "-rw-r--r--";
  EXPECT_EQ(rpm(), ofRpm);

  EXPECT_THAT(field("Depends"), HasSubstr("libsqlite3-0"));
  EXPECT_THAT(query("[%{REQUIRES}\n]"), HasSubstr("libsqlite3.so.0()(64bit)\n"));
  EXPECT_EQ(field("Recommends"), "lvm2, thin-provisioning-tools\n");
  EXPECT_EQ(query("[%{RECOMMENDS}\n]"), "(device-mapper-persistent-data or thin-provisioning-tools)\nlvm2\n");
  // A file that an administrator may have changed survives an upgrade; 17 is configuration, not to be
  // replaced.
  EXPECT_EQ(query("[%{FILEFLAGS} %{FILENAMES}\n]").find("17 /etc/pam.d/tvpcim\n"), 0U);
  // Its files were in another package once, which gives way.
  for (const char* relation : {"Conflicts", "Replaces", "Provides"}) {
    EXPECT_EQ(field(relation), "tarvexpro-dev\n") << relation;
  }
}

TEST_F(PackagesTest, RpmIsInstalledAndRemovedWithoutATrace) {
  const fs::path root = m_directory.path() / "root";
  const auto rpmInRoot = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> line{"/usr/bin/rpm", "--root",   root,         "--dbpath",
                                  "/db",          "--nodeps", "--noscripts"};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return ask(line);
  };
  const auto files = [&] {
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
      const std::string path = entry.path().lexically_relative(root);
      count += entry.is_directory() || path.rfind("db/", 0) == 0 ? 0 : 1;
    }
    return count;
  };
  fs::create_directory(root);
  rpmInRoot({"-i", m_rpm});
  EXPECT_EQ(files(), rpm().size());
  EXPECT_EQ(rpmInRoot({"-V", "tarvexpro-provider"}), "") << "as it is in the package";
  rpmInRoot({"-e", "tarvexpro-provider"});
  EXPECT_EQ(files(), 0U);
}

TEST_F(PackagesTest, ScriptsLeaveObjectManagersAloneAndTakeTheirLinksAway) {
  const fs::path control = m_directory.path() / "control";
  const fs::path commands = m_directory.path() / "bin";
  const fs::path records = m_directory.path() / "records";
  const fs::path link = m_directory.path() / "libVOLTVK.so";
  ask({"/usr/bin/dpkg-deb", "-e", m_deb, control});
  EXPECT_TRUE(fs::exists(control / "md5sums"));
  std::ofstream(control / "post") << query("%{POSTIN}");
  std::ofstream(control / "preun") << query("%{PREUN}");
  fs::create_directory(commands);
  const auto makeCommand = [&](const char* name, const std::string& body) {
    std::ofstream(commands / name) << "#!/bin/sh\n" << body << '\n';
    fs::permissions(commands / name, fs::perms::owner_all);
  };
  for (const char* command : {"cimmof", "cimprovider", "cimserver", "sfcbrepos", "sfcbunstage"}) {
    makeCommand(command, ">'" + m_directory.file("called") + "'");
  }
  // The services of this machine are left alone by the test.
  makeCommand("systemctl", "");
  makeCommand("deb-systemd-invoke", "");
  const auto runScript = [&](const std::vector<std::string>& line) {
    std::vector<std::string> words{"/bin/sh"};
    words.insert(words.end(), line.begin(), line.end());
    words[1] = control / line[0];
    const CommandResult result = Command(words)
                                     .with("TVP_REGISTER_RECORDS", records)
                                     .with("PATH", commands.string() + ":/usr/bin:/bin")
                                     .run();
    EXPECT_EQ(result.exitStatus, 0) << line[0] << ": " << result.err;
    return result.out;
  };
  struct Kind {
    std::vector<std::string> installed;
    std::vector<std::string> beforeUpgrade;
    std::vector<std::string> upgraded;
    std::vector<std::string> beforeRemoval;
  };
  for (const Kind& kind :
       {Kind{
            {"postinst", "configure", ""},
            {"prerm", "upgrade", "2.0"},
            {"postinst", "configure", "0.9"},
            {"prerm", "remove"}},
        Kind{{"post", "1"}, {"preun", "1"}, {"post", "2"}, {"preun", "0"}}}) {
    fs::create_directory(records);
    fs::create_symlink("/usr/" TVP_INSTALL_LIBDIR "/libVOLTVK.so", link);
    std::ofstream(records / "pegasus") << "folder=" << m_directory.path().string() << '\n';
    EXPECT_THAT(runScript(kind.installed), HasSubstr("tvp-register --pegasus or"));
    EXPECT_EQ(runScript(kind.beforeUpgrade), "");
    EXPECT_THAT(runScript(kind.upgraded), HasSubstr("run tvp-register --pegasus and"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_THAT(runScript(kind.beforeRemoval), HasSubstr("cimprovider -r -m tarvexProProviderModule"));
    EXPECT_FALSE(fs::is_symlink(link));
    EXPECT_FALSE(fs::exists(records));
  }
  runScript({"postrm", "purge"});
  EXPECT_FALSE(fs::exists(m_directory.path() / "called"));
}

}  // namespace
