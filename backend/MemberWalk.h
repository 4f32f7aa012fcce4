// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_MEMBERWALK_H
#define BACKEND_MEMBERWALK_H

#include "backend/AdapterOperation.h"
#include "backend/LibraryAccess.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "voltvk/Chunk.h"

#include <string>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Appends one instance per chunk of the pool or volume with the given identifier.
 * @param method class and name of the operation, for its log lines
 * @param type type name of Object in the library
 * @param describe takes a chunk and a fresh wrapper, adds the properties; false leaves the chunk out
 * @return 0, also when no object has the identifier or the library throws; 3 when there is no adapter
 */
template <typename Object, typename Describe>
unsigned int collectMembers(
    const char* method, const char* type, unsigned int identifier,
    std::uint32_t (Object::*identifierOf)() const, Describe describe, std::vector<CIMInstance>& members) {
  unsigned int result = 0;
  try {
    refreshTarvexProObjects();
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      logMissingAdapter(method);
      result = 3;
    }
    FilteredObjects<Object>(adapter, type).visitAll([&](Object& object) {
      if ((object.*identifierOf)() != identifier) {
        return;
      }
      std::vector<RaidObject*> chunks;
      object.getChildren(chunks, "Chunk", true, true);
      for (RaidObject* chunk : chunks) {
        tvpCIMInstanceWrapper member;
        if (chunk != nullptr && describe(static_cast<Chunk&>(*chunk), member)) {
          members.push_back(std::move(member.instance()));
        }
      }
    });
  } catch (...) {
    KvsTrace((std::string("Exception caught in Tvk Lib method: ") + method + "() ").c_str());
  }
  KvsTrace((std::string("Exiting ") + method + " ").c_str());
  return result;
}

}  // namespace tvp::cim::fwf

#endif
