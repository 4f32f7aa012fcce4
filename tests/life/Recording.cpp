// SPDX-License-Identifier: Apache-2.0
#include "life/Recording.h"

#include "support/Command.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

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
