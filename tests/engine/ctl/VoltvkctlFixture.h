// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ENGINE_CTL_VOLTVKCTLFIXTURE_H
#define TESTS_ENGINE_CTL_VOLTVKCTLFIXTURE_H

#include "engine/EngineFixture.h"
#include "support/Command.h"

#include <nlohmann/json.hpp>

namespace tvp::test {

using Json = nlohmann::json;

/** The command voltvkctl on the state of the test. */
class VoltvkctlTest : public EngineTest {
protected:
  CommandResult ctl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), TVP_BINARY_DIR "/bin/voltvkctl");
    return Command(arguments).run();
  }
  std::string text(const std::vector<std::string>& arguments) const {
    const CommandResult result = ctl(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return result.out;
  }
  Json json(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"-o", "json"});
    return Json::parse(text(arguments));
  }
};

}  // namespace tvp::test

#endif
