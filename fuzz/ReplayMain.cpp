// SPDX-License-Identifier: Apache-2.0
// Runs a fuzz target over the files and directories it is given, for compilers without a fuzzer.
#include "fuzz/FuzzTarget.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

void replay(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
  tvp::fuzz::require(stream.is_open(), "can read " + file.string());
  std::fprintf(stderr, "%s\n", file.c_str());  // the last one named is the one that crashes
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
}

}  // namespace

int main(int count, char** names) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < count; ++i) {
    if (!std::filesystem::is_directory(names[i])) {
      files.emplace_back(names[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(names[i])) {
      files.push_back(entry.path());
    }
  }
  if (files.empty()) {
    std::fprintf(stderr, "no inputs; give files, or directories that contain some\n");
    return 1;
  }
  for (const std::filesystem::path& file : files) {
    replay(file);
  }
  return 0;
}
