// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BACKEND_STORAGEFIXTURE_H
#define TESTS_BACKEND_STORAGEFIXTURE_H

#include "CIM/Framework/PropertyLookup.h"
#include "backend/LibraryAccess.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "support/LogCapture.h"
#include "support/Storage.h"
#include "support/TemporaryDirectory.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/contract/Faults.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

/** The arguments of a routine, in order. */
template <typename... Properties>
cim::fwf::CIMMethodParam arguments(Properties... properties) {
  cim::fwf::CIMMethodParam list;
  (list.addArgument(std::move(properties)), ...);
  return list;
}

/** The storage library on a state of its own, reached through the gateway, with the log captured. */
class StorageTest : public ::testing::Test {
protected:
  StorageTest() : m_storage(m_directory) { gateway().initialize(false); }

  static cim::fwf::TVPInterface& gateway() { return *cim::fwf::TVPInterface::getInstance(); }

  /** Adds a virtual drive of 20 GiB. @return its number */
  static unsigned char addDrive(TvkDeviceType type) { return Storage::addDrive(type, 20 * GIB); }

  /** Runs a routine on a path in the namespace "root/test"; its output is in out. */
  unsigned int call(const char* routine, const cim::fwf::CIMMethodParam& in) {
    out.clearArgument();
    return gateway().execute(
        cim::fwf::CIMObjectPath("", "root/test", "TVP_TierService", {}), routine, in, out);
  }

  /** A uint32 of the output; the test fails if there is none. */
  unsigned int answered(const char* name) const {
    const auto values = cim::fwf::elementsOf<unsigned int>(out.getArgumentByName(name));
    if (values.size() != 1) {
      ADD_FAILURE() << "no uint32 " << name << " in the output " << out.toString();
      return 0xFFFFFFFF;
    }
    return values.front();
  }

  /** Makes a pool on one new drive. @return its identifier */
  static unsigned int makePool(const std::string& name, TvkDeviceType type) {
    const unsigned char tierLevel = type == TVK_DEVICE_HDD ? TVK_TIER_HDD : TVK_TIER_SSD;
    const unsigned int pool =
        Storage::createPool(poolSpec(name.c_str(), {addDrive(type)}, 10 * GIB, tierLevel));
    cim::fwf::refreshTarvexProObjects();
    return pool;
  }

  /** The names of the objects of a type. */
  template <typename Object>
  static std::vector<std::string> namesOf() {
    std::vector<std::string> names;
    cim::fwf::refreshTarvexProObjects();
    for (const Object& object : cim::fwf::FilteredObjects<Object>(cim::fwf::getTvkAdapter())) {
      names.emplace_back(object.getName());
    }
    return names;
  }
  static std::vector<std::string> pools() { return namesOf<VirtualPool>(); }
  static std::vector<std::string> volumes() { return namesOf<VirtualVolume>(); }

  LogCapture log;
  cim::fwf::CIMMethodParam out;

private:
  TemporaryDirectory m_directory;
  Storage m_storage;
};

}  // namespace tvp::test

#endif
