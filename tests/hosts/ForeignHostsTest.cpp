// SPDX-License-Identifier: Apache-2.0
// The provider must live in processes that it knows nothing about. Each host runs the whole life: load,
// enumerate, create a pool, receive its event, terminating clean-up, unload.
#include "support/Command.h"

#include <gtest/gtest.h>

#include <list>

namespace {

using namespace tvp::test;

TEST(ForeignHosts, RunTheWholeLife) {
  const std::string build = TVP_BINARY_DIR;
  std::list<TemporaryDirectory> directories;
  std::list<std::pair<std::string, RunningCommand>> hosts;
  for (const std::string& program : {build + "/bin/tiny_c_host", build + "/bin/tiny_cpp_host"}) {
    for (const bool otherPluginFirst : {false, true}) {
      const std::string state = directories.emplace_back().file("state.db");
      const CommandResult added =
          Command({build + "/bin/voltvkctl", "drive", "add", "--type", "hdd", "--size", "100GiB"})
              .with("VOLTVK_STATE", state)
              .run();
      ASSERT_EQ(added.exitStatus, 0) << added.err;
      std::vector<std::string> line = {program, build + "/lib/libtarvexProProvider.so"};
      if (otherPluginFirst) {
        line.emplace_back(build + "/lib/libother_plugin.so");
      }
      hosts.emplace_back(
          program + (otherPluginFirst ? " after another plugin" : ""),
          Command(line).with("VOLTVK_STATE", state).with("TINY_HOST_DRIVE", added.out).start());
    }
  }
  for (auto& [name, host] : hosts) {
    SCOPED_TRACE(name);
    const CommandResult life = host.finish();
    EXPECT_EQ(life.signal, 0);
    EXPECT_EQ(life.exitStatus, 0) << life.err;
    EXPECT_NE(life.out.find("a full life"), std::string::npos) << life.out;
  }
}

}  // namespace
