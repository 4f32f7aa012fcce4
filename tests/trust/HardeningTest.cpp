// SPDX-License-Identifier: Apache-2.0
// The built files carry the protections that the build asks the compiler and the linker for.
#include "support/Command.h"

#include <gtest/gtest.h>

namespace {

using namespace tvp::test;

std::string readelf(const std::string& option, const std::string& file) {
  const CommandResult result = Command({"/usr/bin/readelf", "-W", option, TVP_BINARY_DIR "/" + file}).run();
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

/** The line of a listing that contains the word; empty when there is none. */
std::string lineWith(const std::string& listing, const std::string& word) {
  const std::size_t found = listing.find(word);
  if (found == std::string::npos) {
    return "";
  }
  const std::size_t begin = listing.rfind('\n', found) + 1;
  return listing.substr(begin, listing.find('\n', found) - begin);
}

TEST(Hardening, IsInEveryBuiltFile) {
  struct Case {
    const char* file;
    bool program;
    bool formats;  ///< makes calls that have checked variants in the C library
  };
  for (const Case& c :
       {Case{"lib/libtarvexProProvider.so", false, true},
        {"lib/libVOLTVK.so", false, false},
        {"bin/tvpcim", true, false},
        {"bin/voltvkctl", true, false}}) {
    SCOPED_TRACE(c.file);
    const std::string segments = readelf("-l", c.file);
    const std::string dynamic = readelf("-d", c.file);
    EXPECT_NE(segments.find("GNU_RELRO"), std::string::npos);
    EXPECT_NE(dynamic.find("NOW"), std::string::npos) << "functions are bound when the file is loaded";
    EXPECT_EQ(lineWith(segments, "GNU_STACK").find("RWE"), std::string::npos) << "code on the stack";
    EXPECT_NE(lineWith(segments, "GNU_STACK"), "");
    EXPECT_EQ(segments.find("RWE"), std::string::npos) << "memory both written and executed";
    EXPECT_EQ(dynamic.find("TEXTREL"), std::string::npos);
    EXPECT_NE(lineWith(readelf("-h", c.file), "Type:").find("DYN"), std::string::npos)
        << "no fixed load address";
    EXPECT_EQ(lineWith(dynamic, "FLAGS_1").find("PIE") != std::string::npos, c.program);
    const std::string path = lineWith(dynamic, "PATH");
    EXPECT_TRUE(path.empty() || path.find("[$ORIGIN]") != std::string::npos)
        << "files are searched where others can write: " << path;
#ifdef TVP_FORTIFIED
    const std::string symbols = readelf("--dyn-syms", c.file);
    EXPECT_NE(symbols.find("__stack_chk_fail"), std::string::npos);
    EXPECT_TRUE(
        !c.formats || symbols.find("__vsnprintf_chk") != std::string::npos ||
        symbols.find("__snprintf_chk") != std::string::npos);
#endif
  }
}

}  // namespace
