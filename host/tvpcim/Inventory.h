// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_INVENTORY_H
#define HOST_TVPCIM_INVENTORY_H

#include "host/tvpcim/Session.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** What to say when the identity cannot be read, and where the reason is shown. */
constexpr const char* NO_DRIVER = "no storage driver answers";
constexpr const char* SEE_STATUS = "'voltvkctl status' shows why";

/** The status of a drive that is there, of a good pool or volume. */
constexpr std::uint64_t IN_ORDER = 1;

/** A kind of storage object, and what its class calls the properties that all of them have. */
struct ObjectKind {
  const char* className;
  const char* number;  ///< the property that identifies it
  const char* name;
  const char* noun;
  const char* nouns;          ///< the plural, which is also the verb that lists them
  const char* membersMethod;  ///< of the tier service; null when it has no members
  const char* count;          ///< the property of the identity that counts them
  const char* status;         ///< the property that says whether it is in order, which is 1
};

/** A drive as its instance describes it; capacities in sectors here and below. */
struct Drive {
  static const ObjectKind KIND;
  static constexpr std::uint64_t SSD = 2;

  explicit Drive(const Instance& instance);

  std::uint32_t number;
  std::string name;
  std::uint64_t type;  ///< SSD, or another code of DeviceType
  std::uint64_t status;
  std::uint64_t capacity;
};

struct Pool {
  static const ObjectKind KIND;
  static constexpr std::uint8_t HDD_TIER = 1;
  static constexpr std::uint8_t SSD_TIER = 3;

  explicit Pool(const Instance& instance);

  std::uint32_t number;
  std::string name;
  std::string description;
  std::uint64_t status;
  std::uint64_t tier;
  std::uint64_t capacity;
  std::uint64_t used;
};

struct Volume {
  static const ObjectKind KIND;
  static constexpr std::uint8_t TIERED = 1;
  static constexpr std::uint8_t CACHED = 2;

  explicit Volume(const Instance& instance);

  std::uint32_t number;
  std::string name;
  std::string description;
  std::uint64_t status;
  std::uint64_t type;
  std::uint64_t knob;
  std::uint64_t capacity;
};

/** A member of a pool: what it has on a drive. */
struct DriveExtent {
  explicit DriveExtent(const Instance& instance);

  std::uint32_t drive;
  std::string driveName;
  std::uint64_t size;
};

/** A member of a volume: a pool that it uses. */
struct PoolUse {
  explicit PoolUse(const Instance& instance);

  std::uint32_t pool;
  std::string poolName;
};

/**
 * The storage as the provider shows it: drives, pools, volumes and the product's identity. Everything is
 * read when it is first asked for and kept until forget(). Failing requests throw OperationError.
 */
class Inventory {
public:
  static constexpr const char* IDENTITY_CLASS = "TVP_TarvexProIdentity";

  explicit Inventory(Session& session) : m_session(session) {}

  /**
   * The objects of a kind. The provider answers with an empty success when it cannot read them, so an empty
   * list is taken only if the identity confirms it.
   * @throws OperationError when there is no driver, or there are objects that were not answered
   */
  const std::vector<Instance>& instances(const ObjectKind& kind);
  /** The product's identity; null when no storage driver answers. */
  const Instance* identity();
  /** As identity(). @throws OperationError with the reason, where one is known, when there is none */
  const Instance& requireIdentity();

  template <typename Object>
  std::vector<Object> all() {
    const std::vector<Instance>& found = instances(Object::KIND);
    return {found.begin(), found.end()};
  }
  template <typename Object>
  std::optional<Object> find(std::uint32_t number) {
    return viewOf<Object>(byNumber(Object::KIND, number));
  }
  template <typename Object>
  std::optional<Object> named(const std::string& name) {
    return viewOf<Object>(byName(Object::KIND, name));
  }
  bool exists(const ObjectKind& kind, std::uint32_t number) { return byNumber(kind, number) != nullptr; }
  /** The object with that identifier, until forget(); null when none is answered. */
  const Instance* byNumber(const ObjectKind& kind, std::uint64_t number);

  /**
   * The identifier that a person means by a number or a name. A number is an identifier first, then a
   * name, and one that is neither is taken as it is: not every pool is enumerated.
   * @throws OperationError for a name that does not exist
   */
  std::uint32_t resolve(const ObjectKind& kind, const std::string& text);

  /** What a pool has on drives, or a volume on pools. */
  std::vector<Instance> members(const ObjectKind& kind, std::uint32_t number);
  template <typename Member>
  std::vector<Member> membersOf(const ObjectKind& kind, std::uint32_t number) {
    const std::vector<Instance> found = members(kind, number);
    return {found.begin(), found.end()};
  }

  /** Whether methods are not refused to the user, as they are to others than administrators. */
  bool mayCallMethods();
  /** Calls a method of the tier service, whatever comes of it. */
  MethodOutcome callService(const std::string& method, const Arguments& arguments);
  /** Makes later questions read the present state. */
  void forget() { m_outcomes.clear(); }

private:
  template <typename Object>
  static std::optional<Object> viewOf(const Instance* instance) {
    return instance == nullptr ? std::nullopt : std::optional<Object>(Object(*instance));
  }
  const InstancesOutcome& enumerated(const std::string& className);
  const Instance* byName(const ObjectKind& kind, const std::string& name);

  Session& m_session;
  std::map<std::string, InstancesOutcome> m_outcomes;
};

}  // namespace tvp::host::tvpcim

#endif
