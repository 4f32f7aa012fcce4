// SPDX-License-Identifier: Apache-2.0
// Runs a fuzz target over the files and directories it is given, and over damaged copies of what is in them,
// the same ones each time: for compilers without a fuzzer.
#include "fuzz/FuzzTarget.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace {

void run(const std::vector<char>& content) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
}

void replay(const std::filesystem::path& file, int damagedCopies) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
  tvp::fuzz::require(stream.is_open(), "can read " + file.string());
  std::fprintf(stderr, "%s\n", file.c_str());  // the last one named is the one that crashes
  run(content);
  std::mt19937 random(7);
  for (; damagedCopies > 0; --damagedCopies) {
    std::vector<char> damaged = content;
    damaged.resize(random() % (content.size() + 1));
    for (std::size_t hit = random() % 4; hit > 0 && !damaged.empty(); --hit) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    run(damaged);
  }
}

}  // namespace

int main(int count, char** names) {
  const int damagedCopies = count > 1 ? std::atoi(names[1]) : 0;
  std::vector<std::filesystem::path> files;
  for (int i = 2; i < count; ++i) {
    if (!std::filesystem::is_directory(names[i])) {
      files.emplace_back(names[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(names[i])) {
      files.push_back(entry.path());
    }
  }
  if (files.empty()) {
    std::fprintf(stderr, "usage: %s DAMAGED_COPIES FILE_OR_DIRECTORY...\n", names[0]);
    return 1;
  }
  for (const std::filesystem::path& file : files) {
    replay(file, damagedCopies);
  }
  return 0;
}
