// SPDX-License-Identifier: Apache-2.0
#include "tvpcim/Tvpcim.h"

#include <random>

namespace tvp::test {
namespace {

class TvpcimRandom : public TvpcimTest {
protected:
  std::size_t below(std::size_t limit) { return m_random() % limit; }

  /** A value of a type, more often than not one at an edge. */
  std::string valueOf(const std::string& type) {
    if (type.size() > 2 && type.compare(type.size() - 2, 2, "[]") == 0) {
      std::string list;
      for (std::size_t count = below(4); count > 0; --count) {
        list += (list.empty() ? "" : ",") + valueOf(type.substr(0, type.size() - 2));
      }
      return below(8) == 0 ? "null" : list;
    }
    if (type == "string") {
      const std::vector<std::string> texts = {
          "", "a", "%s%n", std::string(31, 'n'), std::string(3000, 'x'), "\xff\xfe", "\"", "gold"};
      return texts[below(texts.size())];
    }
    const std::vector<std::string> small = {"0", "1", "2", "3", "16", "255", "null"};
    const std::vector<std::string> large = {"1", "2048", "2097152", "4294967295", "null"};
    const std::string largest = type == "uint64" ? "18446744073709551615" : "255";
    return type == "uint8" || below(2) == 0 ? small[below(small.size())]
           : below(4) == 0                  ? largest
                                            : large[below(large.size())];
  }

private:
  std::mt19937 m_random{20260131};
};

TEST_F(TvpcimRandom, ArgumentsOfMethodsNeverHurt) {
  addDrive("hdd", "10GiB");
  addDrive("ssd", "10GiB");
  const Json methods = answer({"mof", "TVP_TierService"}).at("Methods");
  ASSERT_GE(methods.size(), 12U);
  for (int round = 0; round < 8; ++round) {
    for (const Json& method : methods) {
      Words words = {"im", "TVP_TierService", method.at("Name"), "-o", "json"};
      for (const Json& parameter : method.at("Parameters")) {
        if (parameter.at("In").get<bool>() && below(12) != 0) {
          const std::string name = parameter.at("Name");
          words.push_back(name + "=" + valueOf(parameter.at("Type")));
        }
      }
      const CommandResult result = tvpcim(words);
      SCOPED_TRACE(words[2] + ": " + result.err);
      EXPECT_EQ(result.signal, 0);
      EXPECT_GE(result.exitStatus, 0);
      EXPECT_EQ(result.err.find("warning"), std::string::npos);
      EXPECT_EQ(result.exitStatus == 0, !result.out.empty());
      EXPECT_TRUE(result.out.empty() || Json::accept(result.out)) << result.out;
    }
  }
  EXPECT_EQ(answer({"drives"}).size(), Json::parse(voltvkctl({"drive", "list", "-o", "json"})).size());
}

}  // namespace
}  // namespace tvp::test
