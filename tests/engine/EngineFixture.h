// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ENGINE_ENGINEFIXTURE_H
#define TESTS_ENGINE_ENGINEFIXTURE_H

#include "support/Storage.h"
#include "support/TemporaryDirectory.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/voltvk.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tvp::test {

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
  EngineTest() : m_storage(m_directory), m_lib(std::make_unique<TvkLib>()) {}

  static std::shared_ptr<voltvk::State> state() { return Storage::state(); }
  static void execute(const std::string& sql) { Storage::execute(sql); }
  /** Adds drives past all rules: number, identity, whether it is virtual, whether it is present, and so on.
   */
  static void insertDrives(const std::string& rows) {
    execute(
        "INSERT INTO drive(number, identity, virtual, present, name, serial, wwid, vendor, model, sectors, "
        "type, interface, removable, bootable, partitioned, mounted) " +
        rows);
  }
  TvkAdapter& adapter() const { return *dynamic_cast<TvkAdapter*>(m_lib->getRootObject()->getObject(0)); }

  static std::uint8_t addDrive(TvkDeviceType type, std::uint64_t sectors) {
    return Storage::addDrive(type, sectors);
  }
  static std::uint32_t createPool(const VirtualPoolSpec& spec) { return Storage::createPool(spec); }
  static std::uint32_t createVolume(const VirtualVolumeSpec& spec) { return Storage::createVolume(spec); }
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

  TemporaryDirectory m_directory;
  Storage m_storage;
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
