// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/RecentEvents.h"

#include "host/tvpcim/cim/EventTime.h"
#include "host/tvpcim/output/InstanceJson.h"

#include <utility>

namespace tvp::host::tvpcim {

void RecentEvents::add(const Instance& indication) {
  nlohmann::ordered_json event = toJson(indication);
  if (event.contains("eventTime") && event["eventTime"].is_string()) {
    event["eventTime"] = isoTime(event["eventTime"].get<std::string>());
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  event["sequence"] = ++m_count;
  m_events.push_back(std::move(event));
  if (m_events.size() > LIMIT) {
    m_events.pop_front();
  }
}

nlohmann::ordered_json RecentEvents::latest() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  nlohmann::ordered_json array = nlohmann::ordered_json::array();
  for (const nlohmann::ordered_json& event : m_events) {
    array.push_back(event);
  }
  return array;
}

}  // namespace tvp::host::tvpcim
