// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ENGINE_ENGINEFIXTURE_H
#define TESTS_ENGINE_ENGINEFIXTURE_H

#include "support/TemporaryFolder.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/voltvk.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tvp::test {

constexpr std::uint64_t MIB = 2048;  ///< sectors
constexpr std::uint64_t CHUNK = MIB;

inline VirtualPoolSpec poolSpec(
    const char* name, const std::vector<std::uint8_t>& drives, std::uint64_t sectors,
    std::uint8_t tier = TVK_TIER_HDD, std::uint64_t chunk = CHUNK) {
  VirtualPoolSpec spec;
  spec.nameTooLong = !tvkSetText(spec.name, sizeof spec.name, name);
  spec.nameBytes = static_cast<std::uint32_t>(std::strlen(name));
  spec.numLogicalDevices = static_cast<std::uint32_t>(drives.size());
  spec.numDeviceNumbers = spec.numLogicalDevices;
  std::copy_n(drives.begin(), std::min<std::size_t>(drives.size(), TVK_SPEC_DEVICES), spec.deviceNumbers);
  spec.capacityInSectors = sectors;
  spec.chunkSizeInSectors = chunk;
  spec.tierLevel = tier;
  return spec;
}

inline VirtualVolumeSpec
volumeSpec(const char* name, std::uint8_t type, const std::vector<VirtualPoolEntry>& pools) {
  VirtualVolumeSpec spec;
  spec.nameTooLong = !tvkSetText(spec.name, sizeof spec.name, name);
  spec.featureType1 = type;
  spec.numValidPools = static_cast<std::uint32_t>(pools.size());
  spec.numPoolIds = spec.numValidPools;
  spec.numPoolSizes = spec.numValidPools;
  std::copy_n(pools.begin(), std::min<std::size_t>(pools.size(), TVK_SPEC_POOLS), spec.pools);
  return spec;
}

/** The objects of one type in a collection of their own. */
template <typename T>
class Listing {
public:
  Listing(RaidObject* root, const char* type) {
    FilterCollection all(root);
    m_filtered.reset(all.filterByType(type, 0));
    for (int i = 0; m_filtered != nullptr && i < m_filtered->size(); ++i) {
      m_objects.push_back(dynamic_cast<T*>(m_filtered->elementAt(i)));
    }
  }
  bool isReadable() const { return m_filtered != nullptr; }
  std::size_t size() const { return m_objects.size(); }
  T* operator[](std::size_t index) const { return m_objects.at(index); }
  T* last() const { return m_objects.at(m_objects.size() - 1); }

private:
  std::unique_ptr<FilterCollection> m_filtered;
  std::vector<T*> m_objects;
};

/** A state of its own on a machine without drives, so that the first virtual drive has the number 0. */
class EngineTest : public ::testing::Test {
protected:
  EngineTest() {
    ::setenv("VOLTVK_STATE", m_folder.file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", m_folder.file("host").c_str(), 1);
    m_lib = std::make_unique<TvkLib>();
  }

  std::shared_ptr<voltvk::State> state() const { return voltvk::State::forProcess(); }
  TvkAdapter& adapter() const { return *dynamic_cast<TvkAdapter*>(m_lib->getRootObject()->getObject(0)); }

  std::uint8_t addDrive(TvkDeviceType type, std::uint64_t sectors) const {
    std::uint16_t number = 0;
    state()->change([&](voltvk::Connection& connection) {
      number = voltvk::DriveRegistry(connection).addVirtual({type, sectors, {}, {}});
    });
    return static_cast<std::uint8_t>(number);
  }
  std::uint32_t createPool(VirtualPoolSpec spec) const {
    EXPECT_EQ(adapter().createVirtualPool(spec).getReturn(), TVK_OK) << spec.name;
    return spec.poolId;
  }
  std::uint32_t createVolume(VirtualVolumeSpec spec) const {
    EXPECT_EQ(adapter().createVirtualVolume(spec).getReturn(), TVK_OK) << spec.name;
    return spec.volumeId;
  }
  Listing<LogicalDevice> drives() const { return {&adapter(), "LogicalDevice"}; }
  Listing<VirtualPool> pools() const { return {&adapter(), "VirtualPool"}; }
  Listing<VirtualVolume> volumes() const { return {&adapter(), "VirtualVolume"}; }

  /** The events since the last call: code in hexadecimal, blank, description. */
  std::vector<std::string> newEvents() const {
    VolEventCollection events(0, 8, 0);
    EXPECT_EQ(adapter().getEvents(events).getReturn(), TVK_OK);
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(events.count()));
    for (long i = 0; i < events.count(); ++i) {
      const VolEvent& event = *events.Obj_P(i);
      std::ostringstream text;
      text << std::hex << std::uppercase << event.code << ' ' << event.description;
      texts.push_back(text.str());
    }
    return texts;
  }

  TemporaryFolder m_folder;
  std::unique_ptr<TvkLib> m_lib;
};

inline std::vector<Chunk*> chunksOf(RaidObject* object) {
  std::vector<RaidObject*> children;
  object->getChildren(children, "Chunk", true, true);
  std::vector<Chunk*> chunks;
  chunks.reserve(children.size());
  for (RaidObject* child : children) {
    chunks.push_back(dynamic_cast<Chunk*>(child));
  }
  return chunks;
}

}  // namespace tvp::test

#endif
