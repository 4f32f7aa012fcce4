// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/engine/contract/State.h"

#include <iostream>

namespace voltvk::ctl {

void printCompletions(const Context& context, const std::vector<std::string>& words) {
  const bool volumes = words.size() == 2 && (words[0] == "io" || words[0] == "heat");
  const bool flushed = words.size() == 3 && words[0] == "volume" && words[1] == "flush";
  const bool drives = words.size() == 3 && words[0] == "drive" && words[1] == "remove";
  if (!volumes && !flushed && !drives) {
    return;
  }
  const std::shared_ptr<const Snapshot> snapshot = context.state()->snapshot();
  for (const RaidObject* object : snapshot->objects()) {
    std::string name;
    if (const auto* volume = dynamic_cast<const VirtualVolume*>(object);
        volume != nullptr && (volumes || flushed)) {
      name = volume->getName();
    }
    if (const auto* drive = dynamic_cast<const LogicalDevice*>(object); drive != nullptr && drives) {
      const bool isVirtual = (drive->getDeviceProperty() & TVK_PROPERTY_VIRTUAL) != 0;
      name = isVirtual ? std::to_string(drive->getDeviceNumber()) : "";
    }
    if (!name.empty() && name.compare(0, words.back().size(), words.back()) == 0) {
      std::cout << name << '\n';
    }
  }
}

}  // namespace voltvk::ctl
