// SPDX-License-Identifier: Apache-2.0
// The provider must live in processes that it knows nothing about. Each host runs the whole life: load,
// enumerate, create a pool, receive its event, terminating clean-up, unload.
#include "support/Command.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

using tvp::test::Command;
using tvp::test::CommandResult;
using tvp::test::TemporaryDirectory;

struct HostCase {
  const char* name;
  const char* program;
  bool otherPluginFirst;
};

/** GoogleTest would print the bytes, padding included. */
std::ostream& operator<<(std::ostream& stream, const HostCase& host) {
  return stream << host.name;
}

class ForeignHosts : public testing::TestWithParam<HostCase> {};

TEST_P(ForeignHosts, RunTheWholeLife) {
  const TemporaryDirectory directory;
  const std::string state = directory.file("state.db");
  const std::string voltvkctl = TVP_BINARY_DIR "/bin/voltvkctl";
  const CommandResult added =
      Command({voltvkctl, "-o", "json", "drive", "add", "--type", "hdd", "--size", "100GiB"})
          .with("VOLTVK_STATE", state)
          .run();
  ASSERT_EQ(added.exitStatus, 0) << added.err;
  const std::size_t number = added.out.find("\"number\"");
  ASSERT_NE(number, std::string::npos) << added.out;
  const std::size_t digits = added.out.find_first_of("0123456789", number);

  std::vector<std::string> line = {
      std::string(TVP_BINARY_DIR "/bin/") + GetParam().program,
      TVP_BINARY_DIR "/lib/libtarvexProProvider.so"};
  if (GetParam().otherPluginFirst) {
    line.emplace_back(TVP_BINARY_DIR "/lib/libother_plugin.so");
  }
  const CommandResult life =
      Command(line).with("VOLTVK_STATE", state).with("TINY_HOST_DRIVE", added.out.substr(digits, 3)).run();
  EXPECT_EQ(life.signal, 0);
  EXPECT_EQ(life.exitStatus, 0) << life.err;
  EXPECT_NE(life.out.find("a full life"), std::string::npos) << life.out;
}

INSTANTIATE_TEST_SUITE_P(
    Each, ForeignHosts,
    testing::Values(
        HostCase{"InC", "tiny_c_host", false}, HostCase{"InCAfterAnotherPlugin", "tiny_c_host", true},
        HostCase{"InCpp", "tiny_cpp_host", false},
        HostCase{"InCppAfterAnotherPlugin", "tiny_cpp_host", true}),
    [](const testing::TestParamInfo<HostCase>& host) { return host.param.name; });

}  // namespace
