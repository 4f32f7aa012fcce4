// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TVPCIM_TVPCIM_H
#define TESTS_TVPCIM_TVPCIM_H

#include "support/Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

/** The built commands on a storage state of the test's own. A breach of the interface fails a command. */
class TvpcimTest : public testing::Test {
protected:
  using Json = nlohmann::ordered_json;
  using Words = std::vector<std::string>;

  Command command(const std::string& program, const Words& words) const {
    Words arguments = {std::string(TVP_BINARY_DIR "/bin/") + program};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Command result(std::move(arguments));
    result.with("VOLTVK_STATE", m_directory.file("state.db")).with("TVPCIM_STRICT", "1").without("NO_COLOR");
    result.with("VOLTVK_HOST_ROOT", "/nonexistent");  // the machine's own drives would shift the numbers
    return result;
  }

  CommandResult tvpcim(const Words& words) const { return command("tvpcim", words).run(); }

  /** The JSON answer of a command that must succeed without a word beside it. */
  Json answer(Words words) const {
    words.insert(words.end(), {"-o", "json"});
    const CommandResult result = tvpcim(words);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "");
    Json parsed = Json::parse(result.out, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded()) << result.out;
    return parsed;
  }

  /** Runs voltvkctl, which must succeed. @return what it printed */
  std::string voltvkctl(const Words& words) const {
    const CommandResult result = command("voltvkctl", words).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }

  /** Adds a virtual drive. @return its number, as text */
  std::string addDrive(const std::string& type, const std::string& size) const {
    const std::string number = voltvkctl({"drive", "add", "--type", type, "--size", size});
    return number.substr(0, number.find('\n'));
  }

  const TemporaryDirectory& directory() const { return m_directory; }

private:
  TemporaryDirectory m_directory;
};

/** The first object of an array whose member has the value; null when there is none. */
inline nlohmann::ordered_json
findIn(const nlohmann::ordered_json& array, const std::string& member, const nlohmann::ordered_json& value) {
  for (const auto& object : array) {
    if (object.at(member) == value) {
      return object;
    }
  }
  return nullptr;
}

}  // namespace tvp::test

#endif
