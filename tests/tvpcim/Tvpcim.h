// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TVPCIM_TVPCIM_H
#define TESTS_TVPCIM_TVPCIM_H

#include "support/Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

/** The built commands on a storage state of the test's own. A breach of the interface fails a command. */
class TvpcimTest : public testing::Test {
protected:
  using Json = nlohmann::ordered_json;
  using Words = std::vector<std::string>;

  /** @param program a built one, or the path of another */
  Command command(const std::string& program, const Words& words) const {
    Words arguments = {(std::filesystem::path(TVP_BINARY_DIR "/bin") / program).string()};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Command result(std::move(arguments));
    result.with("VOLTVK_STATE", m_directory.file("state.db")).with("TVPCIM_STRICT", "1").without("NO_COLOR");
    result.with("VOLTVK_HOST_ROOT", "/nonexistent");  // the machine's own drives would shift the numbers
    result.with("TVP_TEST_ROOT", m_directory.file("root"));  // the machine may have a log and event texts
    return result;
  }

  /** tvpcim of a place of its own, beside which voltvkctl is a script. @param script empty: there is none */
  Command besideScript(const std::string& script, const Words& words) const {
    namespace fs = std::filesystem;
    const fs::path prefix = m_directory.path() / "prefix";
    fs::remove_all(prefix);
    fs::create_directories(prefix / "bin");
    fs::copy_file(TVP_BINARY_DIR "/bin/tvpcim", prefix / "bin/tvpcim");
    for (const char* part : {"lib", "share"}) {
      fs::create_directory_symlink(fs::path(TVP_BINARY_DIR) / part, prefix / part);
    }
    if (!script.empty()) {
      fs::permissions(
          m_directory.write("prefix/bin/voltvkctl", "#!/bin/sh\n" + script + "\n"), fs::perms::owner_all);
    }
    return command((prefix / "bin/tvpcim").string(), words).with("PATH", "/nonexistent");
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
