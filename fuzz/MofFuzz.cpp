// SPDX-License-Identifier: Apache-2.0
// The reader of schema files: any text gives classes that can be used, or an error with its line.
#include "fuzz/FuzzTarget.h"
#include "host/schema/MofReader.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tvp::host;
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    const auto schema = MofReader::readText(text, "fuzz.mof");
    for (const SchemaClass* schemaClass : schema->classes()) {
      const Instance instance = schema->emptyInstance({"", schemaClass->name, {}, ""});
      tvp::fuzz::require(
          instance.properties.size() == schemaClass->properties.size(), "every property is there");
      tvp::fuzz::require(schema->isA(schemaClass->name, schemaClass->name), "a class is itself");
    }
  } catch (const MofError& error) {
    const auto lines = static_cast<unsigned int>(std::count(text.begin(), text.end(), '\n')) + 1;
    tvp::fuzz::require(error.line() >= 1 && error.line() <= lines, "the error is in the text");
  }
  return 0;
}
