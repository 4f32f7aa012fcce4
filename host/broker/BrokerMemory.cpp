// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

#include <cstdint>
#include <cstring>

namespace tvp::host {
namespace {

/** A mark is a position in the current thread's scope, kept in that scope's memory. */
CMPIGcStat* mark(Broker& broker, Call&) {
  auto* position = static_cast<std::uint64_t*>(broker.scope().allocate(sizeof(std::uint64_t), false));
  if (position == nullptr) {
    throw CallFailure{CMPI_RC_ERROR_SYSTEM};
  }
  *position = broker.scope().mark();
  return position;
}

char* duplicate(Broker& broker, Call&, const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  const std::size_t size = std::strlen(text) + 1;
  void* block = broker.scope().allocate(size, false);
  return block == nullptr ? nullptr : static_cast<char*>(std::memcpy(block, text, size));
}

/** freeString and the like are the release functions of the objects. */
template <class Face>
void freeObject(const CMPIBroker*, Face* object) {
  releaseObject(object);
}

}  // namespace

CMPIBrokerMemFT* brokerMemoryTable() {
  using FT = CMPIBrokerMemFT;
  static FT table = {
      CMPIVersion200,
      entry<&FT::mark>("mark", mark),
      entry<&FT::release>(
          "release",
          [](Broker& broker, Call&, const CMPIGcStat* marked) {
            broker.scope().endSince(*static_cast<const std::uint64_t*>(required(marked)));
            broker.scope().release(const_cast<CMPIGcStat*>(marked));
          }),
      entry<&FT::cmpiMalloc>(
          "cmpiMalloc",
          [](Broker& broker, Call&, std::size_t size) { return broker.scope().allocate(size, false); }),
      entry<&FT::cmpiCalloc>(
          "cmpiCalloc",
          [](Broker& broker, Call&, std::size_t count, std::size_t size) {
            const bool tooLarge = size != 0 && count > SIZE_MAX / size;
            return tooLarge ? nullptr : broker.scope().allocate(count * size, true);
          }),
      entry<&FT::cmpiRealloc>(
          "cmpiRealloc", [](Broker& broker, Call&, void* block,
                            std::size_t size) { return broker.scope().reallocate(block, size); }),
      entry<&FT::cmpiStrDup>("cmpiStrDup", duplicate),
      entry<&FT::cmpiFree>(
          "cmpiFree", [](Broker& broker, Call&, void* block) { broker.scope().release(block); }),
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
