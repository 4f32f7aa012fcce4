// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_INVENTORY_H
#define HOST_TVPCIM_STORAGE_INVENTORY_H

#include "host/tvpcim/Session.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** A sort of storage object, and what its class calls the things that all of them have. */
struct ObjectKind {
  const char* className;
  const char* number;  ///< the property that identifies it
  const char* name;
  const char* noun;
  const char* nouns;  ///< the plural, which is also the verb that lists them
};

extern const ObjectKind DRIVE;
extern const ObjectKind POOL;
extern const ObjectKind VOLUME;

/** What to say, and to do, when the identity cannot be read. */
constexpr const char* NO_DRIVER = "no storage driver answers; 'voltvkctl status' tells why";

/** Codes and limits that the verbs have to know; the schema has the names of all codes. */
constexpr std::size_t LONGEST_NAME = 31;  ///< bytes
constexpr std::uint8_t TIER_HDD = 1;
constexpr std::uint8_t TIER_SSD = 3;
constexpr std::uint64_t DEVICE_SSD = 2;
constexpr std::uint8_t VOLUME_TIERED = 1;
constexpr std::uint8_t VOLUME_CACHED = 2;

/**
 * The storage as the provider shows it: drives, pools, volumes and the product's identity. Everything is
 * read when it is first asked for and kept until forget(). Failing requests throw OperationError.
 */
class Inventory {
public:
  explicit Inventory(Session& session) : m_session(session) {}

  const std::vector<Instance>& all(const ObjectKind& kind) { return enumerated(kind.className); }
  /** The product's identity; null when no storage driver answers. */
  const Instance* identity();
  /** @return null when there is none */
  const Instance* byNumber(const ObjectKind& kind, std::uint64_t number);
  /** @return null when there is none */
  const Instance* byName(const ObjectKind& kind, const std::string& name);

  /**
   * The identifier that a person means by a number or a name. A number is an identifier first, then a
   * name, and one that is neither is taken as it is: not every pool is enumerated.
   * @throws OperationError for a name that does not exist
   */
  std::uint32_t resolve(const ObjectKind& kind, const std::string& text);

  /** The extents of a pool on drives, or of a volume on pools. */
  std::vector<Instance> members(const ObjectKind& kind, std::uint32_t number);

  /** Calls a method of the tier service. */
  MethodOutcome callService(const std::string& method, const Arguments& arguments);

  /** Reads everything anew from now on. */
  void forget() { m_instances.clear(); }

private:
  const std::vector<Instance>& enumerated(const std::string& className);

  Session& m_session;
  std::map<std::string, std::vector<Instance>> m_instances;
};

}  // namespace tvp::host::tvpcim

#endif
