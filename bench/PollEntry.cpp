// SPDX-License-Identifier: Apache-2.0
// Makes one round of the event listener callable, so that an event can be timed without its five seconds of
// sleep.
#include "backend/TarvexProEventManager.h"

extern "C" __attribute__((visibility("default"))) void benchPollOnce();
void benchPollOnce() {
  if (auto* manager = tvp::cim::fwf::TvproEventManager::getInstance()) {
    manager->pollOnce();
  }
}
