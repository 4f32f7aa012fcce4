// SPDX-License-Identifier: Apache-2.0
#include "life/Recording.h"

#include "support/Command.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace tvp::test {
namespace {

/** The first differences, each under the heading of its step. */
std::string differences(const std::string& file, const std::string& text) {
  constexpr std::size_t SHOWN = 4000;  // bytes
  const TemporaryDirectory directory;
  const std::string now = directory.write("now", text);
  return Command({"/usr/bin/diff", "--text", "--unified=6", "--show-function-line=^=== ", file, now})
      .run()
      .out.substr(0, SHOWN);
}

}  // namespace

void expectDifferenceAsRecorded(
    const std::string& fileName, const std::string& differenceName, const std::string& text) {
  // Without the numbers of events, which all change when one event is not there.
  const TemporaryDirectory directory;
  const auto withoutNumbers = [&](const std::string& name, const std::string& whole) {
    return directory.write(
        name, std::regex_replace(whole, std::regex("\n  Id uint32 \\d+"), "\n  Id uint32"));
  };
  std::ifstream stream(std::string(TVP_SOURCE_DIR "/tests/life/") + fileName, std::ios::binary);
  const std::string recorded =
      withoutNumbers("recorded", {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
  const std::string now = withoutNumbers("now", text);
  std::string difference =
      Command({"/usr/bin/diff", "--text", "--unified=0", "--show-function-line=^=== ", recorded, now})
          .run()
          .out;
  // Without its head, which names the files, and the numbers of lines, which move with every other change.
  difference = std::regex_replace(difference, std::regex("(^|\n)(---|\\+\\+\\+) [^\n]*"), "");
  difference = std::regex_replace(difference, std::regex("\n@@ [^@]* @@"), "\n@@");
  if (!difference.empty() || std::filesystem::exists(TVP_SOURCE_DIR "/tests/life/" + differenceName)) {
    expectAsRecorded(differenceName, difference);
  }
}

void expectAsRecorded(const std::string& fileName, const std::string& text) {
  const std::string file = std::string(TVP_SOURCE_DIR "/tests/life/") + fileName;
  if (std::getenv("TVP_LIFE_WRITE") != nullptr) {
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    EXPECT_TRUE(stream) << file << " cannot be written";
    return;
  }
  std::ifstream stream(file, std::ios::binary);
  const std::string recorded{std::istreambuf_iterator<char>(stream), {}};
  if (text != recorded) {
    ADD_FAILURE() << file << ": this life is not the recorded one\n"
                  << differences(file, text)
                  << "\nIf the change is meant, record it and review the difference of " << fileName
                  << ":\n  TVP_LIFE_WRITE=1 ctest --test-dir " TVP_BINARY_DIR " -R OneLife";
  }
}

}  // namespace tvp::test
