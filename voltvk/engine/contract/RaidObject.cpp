// SPDX-License-Identifier: Apache-2.0
#include "voltvk/RaidObject.h"

#include "voltvk/Chunk.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"

// The destructors are defined here so that the library has the only vtable of each class.
RaidObject::~RaidObject() = default;
Chunk::~Chunk() = default;
LogicalDevice::~LogicalDevice() = default;
VirtualPool::~VirtualPool() = default;
VirtualVolume::~VirtualVolume() = default;

RaidObject* RaidObject::getObject(unsigned long) {
  return nullptr;
}

void RaidObject::getChildren(std::vector<RaidObject*>&, const char*, bool, bool) {}

bool RaidObject::isPolicyEngineRunning() {
  return false;
}
