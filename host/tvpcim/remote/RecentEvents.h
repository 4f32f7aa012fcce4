// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_RECENTEVENTS_H
#define HOST_TVPCIM_REMOTE_RECENTEVENTS_H

#include "host/schema/Value.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

namespace tvp::host::tvpcim {

/** The newest indications, numbered as they came. Thread-safe. */
class RecentEvents {
public:
  static constexpr std::size_t LIMIT = 100;

  void add(const Instance& indication);
  /** Oldest first: the properties of each, its time in ISO 8601, and its number, "sequence", from 1. */
  nlohmann::ordered_json latest() const;

private:
  mutable std::mutex m_mutex;
  std::uint64_t m_count = 0;
  std::deque<nlohmann::ordered_json> m_events;
};

}  // namespace tvp::host::tvpcim

#endif
