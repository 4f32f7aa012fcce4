// SPDX-License-Identifier: Apache-2.0
// Everything that the product has is part of the recorded life; otherwise a change of it would go unnoticed.
#include "host/schema/MofReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace tvp::test {
namespace {

constexpr const char* OPERATIONS[] = {
#define TVK_OPERATION(name) #name,
#include "voltvk/engine/contract/Operations.def"
};

TEST(RecordedLife, HasEveryClassMethodAndOperation) {
  std::ifstream recording(TVP_SOURCE_DIR "/tests/life/answers.txt");
  const std::string answers{std::istreambuf_iterator<char>(recording), {}};
  const auto expectStep = [&answers](const std::string& title) {
    EXPECT_NE(answers.find("=== " + title), std::string::npos)
        << "OneLifeTest.cpp has no step '" << title << "': add it, then record the life again";
  };
  const auto schema = host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  for (const host::SchemaClass* schemaClass : schema->classes()) {
    expectStep("enumerateInstances of " + schemaClass->name + ":");
    for (const host::SchemaMethod& method : schemaClass->methods) {
      expectStep(schemaClass->name + "." + method.name + ":");
    }
  }
  for (const std::string operation : OPERATIONS) {
    expectStep("voltvkctl fault set fail " + operation);
  }
}

}  // namespace
}  // namespace tvp::test
