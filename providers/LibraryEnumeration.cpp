// SPDX-License-Identifier: Apache-2.0
#include "providers/LibraryEnumeration.h"

#include "backend/TarvexProInterface.h"
#include "oslib/KVSLog.h"
#include "voltvk/FilterCollection.h"
#include "voltvk/RaidObject.h"
#include "voltvk/TvkLib.h"

#include <memory>
#include <utility>

namespace tvp::cim::fwf {

namespace {

/** The storage library's top object, its configuration refreshed; null when there is no driver to ask. */
TvkLib* refreshedLibrary() {
  TVPInterface* gateway = TVPInterface::getInstance();
  if (gateway == nullptr) {
    return nullptr;
  }
  gateway->GetConfig();
  TvkLib* library = gateway->getTarvexProLib();
  unsigned long controllers = 0;
  if (library != nullptr) {
    library->getControllerCount(controllers);
  }
  return controllers != 0 ? library : nullptr;
}

}  // namespace

bool isDriverAvailable() {
  return refreshedLibrary() != nullptr;
}

void enumerateLibraryObjects(
    const LibraryEnumeration& enumeration, const CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  TvkLib* library = refreshedLibrary();
  if (library == nullptr) {
    return;
  }
  RaidObject* adapter = library->getRootObject()->getObject(0);
  if (adapter == nullptr && enumeration.adapterMissing != nullptr) {
    KvsLogMsg(KVS_LOG_DEBUG, "%s", enumeration.adapterMissing);
  }
  FilterCollection everything(adapter);
  const std::unique_ptr<FilterCollection> objects(everything.filterByType(enumeration.typeName, 0));
  if (objects == nullptr) {
    if (enumeration.unreadable != nullptr) {
      KvsTrace(enumeration.unreadable);
    }
    return;
  }
  tvpCIMInstanceWrapper working;
  const int count = objects->size();
  for (int index = 0; index < count; ++index) {
    RaidObject* object = objects->elementAt(index);
    if (object == nullptr || !enumeration.fill(*object, index, working)) {
      continue;
    }
    working.instance().setPath(path);
    if (index + 1 < count) {
      instances.push_back(working.instance());
    } else {
      instances.push_back(std::move(working.instance()));
    }
  }
}

}  // namespace tvp::cim::fwf
