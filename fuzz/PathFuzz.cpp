// SPDX-License-Identifier: Apache-2.0
// The text form of object paths: what can be read is written such that it reads the same again.
#include "fuzz/FuzzTarget.h"
#include "host/schema/ObjectPathText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tvp::host;
  ObjectPath path;
  try {
    path = parsePathText({reinterpret_cast<const char*>(data), size});
  } catch (const PathSyntaxError&) {
    return 0;
  }
  const std::string text = toPathText(path);
  try {
    tvp::fuzz::require(parsePathText(text) == path, "reads the same: " + text);
  } catch (const PathSyntaxError& error) {
    tvp::fuzz::require(false, "can be read: " + text + ": " + error.what());
  }
  return 0;
}
