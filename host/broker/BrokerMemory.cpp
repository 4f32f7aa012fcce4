// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

#include <cstdint>
#include <cstring>

namespace tvp::host {
namespace {

/** A mark is a position in the current thread's scope, kept in memory of that scope. */
CMPIGcStat* mark(const CMPIBroker* broker, CMPIStatus* status) {
  return brokerValueCall<CMPIGcStat*>(
      broker, "CMPIBroker.mark", status, [](BrokerState& state, CMPIrc& code) -> CMPIGcStat* {
        auto* position = static_cast<std::uint64_t*>(state.scope().allocate(sizeof(std::uint64_t), false));
        if (position == nullptr) {
          code = CMPI_RC_ERROR_SYSTEM;
          return nullptr;
        }
        *position = state.scope().mark();
        return position;
      });
}

CMPIStatus release(const CMPIBroker* broker, const CMPIGcStat* marked) {
  return brokerStatusCall(broker, "CMPIBroker.release", [=](BrokerState& state) -> CMPIrc {
    if (marked == nullptr) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    state.scope().endSince(*static_cast<const std::uint64_t*>(marked));
    return CMPI_RC_OK;
  });
}

/** The shape of the allocating functions. */
template <class Body>
auto allocating(const CMPIBroker* broker, const char* function, Body body) {
  using Result = decltype(body(std::declval<Scope&>()));
  return brokerValueCall<Result>(
      broker, function, nullptr, [&](BrokerState& state, CMPIrc&) { return body(state.scope()); });
}

void* allocate(const CMPIBroker* broker, std::size_t size) {
  return allocating(
      broker, "CMPIBroker.cmpiMalloc", [=](Scope& scope) { return scope.allocate(size, false); });
}

void* allocateZeroed(const CMPIBroker* broker, std::size_t count, std::size_t size) {
  return allocating(broker, "CMPIBroker.cmpiCalloc", [=](Scope& scope) -> void* {
    const bool tooLarge = size != 0 && count > SIZE_MAX / size;
    return tooLarge ? nullptr : scope.allocate(count * size, true);
  });
}

void* reallocate(const CMPIBroker* broker, void* block, std::size_t size) {
  return allocating(
      broker, "CMPIBroker.cmpiRealloc", [=](Scope& scope) { return scope.reallocate(block, size); });
}

char* duplicate(const CMPIBroker* broker, const char* text) {
  return allocating(broker, "CMPIBroker.cmpiStrDup", [=](Scope& scope) -> char* {
    if (text == nullptr) {
      return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    void* block = scope.allocate(size, false);
    return block == nullptr ? nullptr : static_cast<char*>(std::memcpy(block, text, size));
  });
}

void release(const CMPIBroker* broker, void* block) {
  brokerStatusCall(broker, "CMPIBroker.cmpiFree", [=](BrokerState& state) {
    state.scope().release(block);
    return CMPI_RC_OK;
  });
}

/** freeString and its like are the release functions of the objects. */
template <class Face>
void freeObject(const CMPIBroker*, Face* object) {
  releaseObject(object);
}

}  // namespace

CMPIBrokerMemFT* brokerMemoryTable() {
  static CMPIBrokerMemFT table = {
      CMPIVersion200,
      mark,
      release,
      allocate,
      allocateZeroed,
      reallocate,
      duplicate,
      release,
      freeObject<CMPIInstance>,
      freeObject<CMPIObjectPath>,
      freeObject<CMPIArgs>,
      freeObject<CMPIString>,
      freeObject<CMPIArray>,
      freeObject<CMPIDateTime>,
      freeObject<CMPISelectExp>};
  return &table;
}

}  // namespace tvp::host
