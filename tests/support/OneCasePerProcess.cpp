// SPDX-License-Identifier: Apache-2.0
// Linked into programs whose cases need a process of their own, because the provider can be initialised only
// once in a process: such a program refuses to run several cases with a sentence in place of failing in the
// middle of one.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

class OneCasePerProcess : public testing::Environment {
public:
  void SetUp() override {
    const int cases = testing::UnitTest::GetInstance()->test_to_run_count();
    if (cases > 1) {
      std::fprintf(
          stderr,
          "Each of these %d cases needs a process of its own, as the provider is initialised once in a "
          "process. Run "
          "them with 'ctest -R REGEX' in the build directory, or one of them with "
          "--gtest_filter=SUITE.CASE.\n",
          cases);
      std::exit(EXIT_FAILURE);
    }
  }
};

[[maybe_unused]] const auto* environment = testing::AddGlobalTestEnvironment(new OneCasePerProcess);

}  // namespace
