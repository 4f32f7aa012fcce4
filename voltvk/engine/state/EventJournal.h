// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_EVENTJOURNAL_H
#define VOLTVK_ENGINE_STATE_EVENTJOURNAL_H

#include "voltvk/VolEvent.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace voltvk {

class Connection;

/** The events of the state. They are appended in the transaction of the change that they report. */
class EventJournal {
public:
  /** Number of events kept; older ones are dropped. Far more than happen between two polls of a listener. */
  static constexpr std::int64_t CAPACITY = 4096;

  explicit EventJournal(Connection& connection) : m_connection(connection) {}

  /**
   * Appends an event.
   * @param text an English sentence in which every {} is replaced by the next argument
   * @param arguments shown in square brackets; square brackets in them become parentheses, since readers find
   *   the arguments by the brackets
   * @param actionId identifier of the pool or volume concerned, or 0
   */
  void append(
      TvkEventCode code, TvkEventType type, const char* text, std::initializer_list<std::string> arguments,
      std::uint32_t actionId = 0);

  /** The number of the newest event ever appended, 0 for none. */
  std::int64_t newest();

  /** How far a reader has come. */
  struct Progress {
    std::int64_t newest = 0;  ///< the number of the newest event
    std::int64_t lost = 0;    ///< events that were dropped before they could be read
  };

  /** Appends the events after a number to out, oldest first. */
  Progress readAfter(std::int64_t number, VolEventCollection& out);

  /** The newest events, oldest first. */
  std::vector<VolEvent> latest(std::uint32_t count);

private:
  Connection& m_connection;
};

}  // namespace voltvk

#endif
