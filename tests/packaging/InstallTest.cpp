// SPDX-License-Identifier: Apache-2.0
// What `cmake --install` installs works in place, under any prefix and without LD_LIBRARY_PATH.
#include "support/Command.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tvp::test;

class InstallTest : public testing::Test {
protected:
  void SetUp() override {
    const CommandResult result =
        Command({TVP_CMAKE_COMMAND, "--install", TVP_BINARY_DIR, "--prefix", "/opt/tarvexpro"})
            .with("DESTDIR", m_directory.path())
            .run();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
  }

  CommandResult run(std::vector<std::string> arguments) const {
    arguments[0] = prefix() / arguments[0];
    return Command(std::move(arguments))
        .without("LD_LIBRARY_PATH")
        .with("VOLTVK_STATE", m_directory.file("state.db"))
        .with("TVPCIM_STRICT", "1")
        .run();
  }

  fs::path prefix() const { return m_directory.path() / "opt/tarvexpro"; }

  TemporaryDirectory m_directory;
};

TEST_F(InstallTest, CommandsFindTheirLibrariesAndClasses) {
  // The provider opens its catalogue at this path, so no prefix applies to it.
  EXPECT_TRUE(fs::is_regular_file(m_directory.path() / "usr/VolMan/TVPEvents.properties"));
  const CommandResult added =
      run({"sbin/voltvkctl", "drive", "add", "--type", "ssd", "--size", "64GiB", "--model", "Installed"});
  ASSERT_EQ(added.exitStatus, 0) << added.err;
  const CommandResult drives = run({"bin/tvpcim", "ei", "TVP_LogicalDevice", "-o", "json"});
  EXPECT_EQ(drives.exitStatus, 0) << drives.err;
  EXPECT_THAT(drives.out, testing::HasSubstr("Installed"));
  const CommandResult steps = run({"sbin/tvp-register", "--pegasus", "--dry-run"});
  EXPECT_EQ(steps.exitStatus, 0) << steps.err;
  EXPECT_THAT(steps.out, testing::HasSubstr((prefix() / "share/tarvexpro/TVP.mof").string()));
}

TEST_F(InstallTest, ProviderIsLoadedFromAnotherDirectoryThroughLinks) {
  const fs::path directory = m_directory.path() / "providers";
  fs::create_directory(directory);
  for (const char* library : {"libtarvexProProvider.so", "libVOLTVK.so"}) {
    fs::create_symlink(prefix() / TVP_INSTALL_LIBDIR / library, directory / library);
  }
  const CommandResult result =
      run({"bin/tvpcim", "--provider", directory / "libtarvexProProvider.so", "identity"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
}

}  // namespace
