// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_MEMBERWALK_H
#define BACKEND_MEMBERWALK_H

#include "backend/AdapterOperation.h"
#include "backend/BackendResult.h"
#include "backend/LibraryAccess.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSMethodTrace.h"
#include "voltvk/Chunk.h"

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

/**
 * Appends one instance per chunk of the pool or volume with the given identifier.
 * @param method class and name of the operation, for its log lines
 * @param describe bool(const Chunk&, tvpCIMInstanceWrapper&): adds the properties; false leaves the chunk out
 * @return BACKEND_DONE, also if no object has the identifier or the library throws; BACKEND_FAILED if there
 *         is no adapter or not enough memory
 */
template <typename Object, typename Describe>
unsigned int collectMembers(
    const char* method, unsigned int identifier, std::uint32_t (Object::*identifierOf)() const,
    Describe describe, std::vector<CIMInstance>& members) {
  unsigned int result = BACKEND_DONE;
  try {
    refreshTarvexProObjects();
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      logMissingAdapter(method);
      result = BACKEND_FAILED;
    }
    for (Object& object : FilteredObjects<Object>(adapter)) {
      if ((object.*identifierOf)() != identifier) {
        continue;
      }
      std::vector<RaidObject*> chunks;
      object.getChildren(chunks, "Chunk", true, true);
      for (RaidObject* chunk : chunks) {
        tvpCIMInstanceWrapper member;
        if (chunk != nullptr && describe(static_cast<Chunk&>(*chunk), member)) {
          members.push_back(std::move(member.instance()));
        }
      }
    }
  } catch (const std::bad_alloc&) {
    traceParts({"Exception caught in Tvk Lib method: ", method, "() "});
    result = BACKEND_FAILED;
  } catch (...) {
    traceParts({"Exception caught in Tvk Lib method: ", method, "() "});
  }
  traceParts({"Exiting ", method, " "});
  return result;
}

}  // namespace tvp::cim::fwf

#endif
