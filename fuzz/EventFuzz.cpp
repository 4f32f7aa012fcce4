// SPDX-License-Identifier: Apache-2.0
// The texts of events: any catalogue, any code, any description of the storage library.
#include "backend/TarvexProEventManager.h"
#include "fuzz/FuzzTarget.h"
#include "oslib/KVSPaths.h"
#include "support/TemporaryDirectory.h"
#include "voltvk/Specs.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tvp::test::TemporaryDirectory root;
  static const bool rootIsSet = [] {
    kvsSetPathRoot(root.path().string());
    return true;
  }();
  static tvp::cim::fwf::TvproEventManager manager(false);
  tvp::fuzz::require(rootIsSet, "the catalogue is our own");
  tvp::fuzz::Bytes bytes(data, size);
  VolEvent event;
  event.code = static_cast<std::uint32_t>(bytes.number(2));
  tvkSetText(event.description, TVK_EVENT_DESCRIPTION_SIZE, bytes.until('\n').c_str());
  root.write("usr/VolMan/TVPEvents.properties", bytes.rest());
  bool skip = false;
  manager.getEventdescription(&event, skip);
  tvp::fuzz::require(
      std::memchr(event.description, '\0', TVK_EVENT_DESCRIPTION_SIZE) != nullptr,
      "the description ends in its field");
  return 0;
}
