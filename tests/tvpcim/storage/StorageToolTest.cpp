// SPDX-License-Identifier: Apache-2.0
// The storage library's command is asked within a limit, and whatever it does is an answer or a reason.
#include "host/tvpcim/storage/StorageTool.h"

#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tvp::test {
namespace {

using host::tvpcim::StorageTool;
using testing::HasSubstr;
using namespace std::chrono_literals;

TEST(StorageToolTest, WhateverTheCommandDoesIsAnAnswerOrAReason) {
  const TemporaryDirectory directory;
  const auto asked = [&](const std::string& script, std::chrono::milliseconds limit) {
    const std::string program = directory.write("ctl", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    StorageTool tool(program, limit);
    const auto answer = tool.ask({"heat", "a b"});
    return answer ? answer->dump() : tool.reason();
  };
  const struct {
    const char* script;
    std::chrono::milliseconds limit;
    const char* result;
  } cases[] = {
      {"echo \"[\\\"$*\\\",$#]\"", 60s, R"(["-o json heat a b",4])"},
      {"echo '{\"driver\": 1}'; echo 'voltvkctl: no driver' >&2; exit 1", 60s, R"({"driver":1})"},
      {"echo 'voltvkctl: there is no volume' >&2; exit 1", 60s, "there is no volume"},
      {"echo '{\"half\": '", 60s, "voltvkctl did not print a document"},
      {"kill -KILL $$", 60s, "voltvkctl did not print a document"},
      {"head -c 300000000 /dev/zero", 60s, "it writes more than can be read"},
      {"exec sleep 100", 100ms, "voltvkctl cannot be asked: it does not answer"},
  };
  for (const auto& [script, limit, result] : cases) {
    EXPECT_THAT(asked(script, limit), HasSubstr(result)) << script;
  }
  StorageTool absent(directory.file("nothing"), 60s);
  EXPECT_EQ(absent.ask({"status"}), std::nullopt);
  EXPECT_EQ(absent.reason(), "voltvkctl cannot be asked: it cannot be started: No such file or directory");
}

}  // namespace
}  // namespace tvp::test
