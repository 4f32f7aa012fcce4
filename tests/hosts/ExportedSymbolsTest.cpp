// SPDX-License-Identifier: Apache-2.0
// What a sealed module exports is its interface; one symbol more could clash with its host's.
#include "support/Command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using tvp::test::Command;
using tvp::test::CommandResult;

std::vector<std::string> exportsOf(const std::string& library) {
  const CommandResult listed =
      Command({"/usr/bin/nm", "-D", "-C", "--defined-only", TVP_BINARY_DIR "/lib/" + library}).run();
  EXPECT_EQ(listed.exitStatus, 0) << listed.err;
  std::istringstream lines(listed.out);
  std::vector<std::string> names;
  std::string address;
  std::string kind;
  std::string name;
  while (lines >> address >> kind && std::getline(lines >> std::ws, name)) {
    names.push_back(name);
  }
  return names;
}

TEST(ExportedSymbols, OfTheProviderAreItsEntryPoints) {
#ifndef TVP_SEALED
  GTEST_SKIP() << "this build is not sealed";
#endif
  std::vector<std::string> entries;
  for (const std::string& name : exportsOf("libtarvexProProvider.so")) {
    if (name.rfind("tvpCmpiMI", 0) != 0) {
      entries.push_back(name);
    }
  }
  EXPECT_THAT(
      entries, testing::UnorderedElementsAre(
                   "tarvexProProvider_Create_InstanceMI", "tarvexProProvider_Create_MethodMI",
                   "tarvexProProvider_Create_AssociationMI", "tarvexProProvider_Create_IndicationMI"));
}

TEST(ExportedSymbols, OfTheStorageLibraryAreItsContract) {
#ifndef TVP_SEALED
  GTEST_SKIP() << "this build is not sealed";
#endif
  const std::vector<std::string> contract = {"Ret",         "RaidObject",        "LogicalDevice",
                                             "VirtualPool", "VirtualVolume",     "Chunk",
                                             "TvkAdapter",  "FilterCollection",  "VolLib",
                                             "TvkLib",      "VirtualPoolSpec",   "VirtualVolumeSpec",
                                             "VolEvent",    "VolEventCollection"};
  for (const std::string& name : exportsOf("libVOLTVK.so")) {
    if (name.rfind("tvkSetText(", 0) == 0 || name.rfind("tvkStatusText(", 0) == 0) {
      continue;
    }
    const bool ofTheContract =
        std::any_of(contract.begin(), contract.end(), [&name](const std::string& type) {
          return name.rfind(type + "::", 0) == 0 || name == "vtable for " + type ||
                 name == "typeinfo for " + type || name == "typeinfo name for " + type;
        });
    EXPECT_TRUE(ofTheContract) << name;
  }
}

}  // namespace
