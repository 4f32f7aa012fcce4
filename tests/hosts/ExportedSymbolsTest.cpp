// SPDX-License-Identifier: Apache-2.0
// What a sealed module exports is its interface; one symbol more could clash with its host's.
#include "support/Command.h"
#include "support/Lines.h"

#include <gmock/gmock.h>

namespace {

using namespace tvp::test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::Each;
using testing::IsSupersetOf;

class ExportedSymbols : public testing::Test {
protected:
  void SetUp() override {
#ifndef TVP_SEALED
    GTEST_SKIP() << "this build is not sealed";
#endif
  }

  static std::vector<std::string> of(const std::string& library) {
    const CommandResult listed =
        Command({"/usr/bin/nm", "-D", "-C", "-j", "--defined-only", TVP_BINARY_DIR "/lib/" + library}).run();
    EXPECT_EQ(listed.exitStatus, 0) << listed.err;
    return linesOf(listed.out);
  }
};

TEST_F(ExportedSymbols, OfTheProviderAreItsEntryPoints) {
  const std::string factory = "tarvexProProvider_Create_";
  EXPECT_THAT(
      of("libtarvexProProvider.so"),
      AllOf(
          Each(ContainsRegex("^tvpCmpiMI|^" + factory + "(Instance|Method|Association|Indication)MI$")),
          IsSupersetOf(
              {factory + "InstanceMI", factory + "MethodMI", factory + "AssociationMI",
               factory + "IndicationMI"})));
}

TEST_F(ExportedSymbols, OfTheStorageLibraryAreItsContract) {
  const std::string types = "(Ret|RaidObject|LogicalDevice|VirtualPool|VirtualVolume|Chunk|TvkAdapter|"
                            "FilterCollection|VolLib|TvkLib|VirtualPoolSpec|VirtualVolumeSpec|VolEvent|"
                            "VolEventCollection)";
  EXPECT_THAT(
      of("libVOLTVK.so"), Each(ContainsRegex(
                              "^tvkSetText\\(|^tvkStatusText\\(|^" + types +
                              "::|^(vtable|typeinfo|typeinfo name) for " + types + "$")));
}

}  // namespace
