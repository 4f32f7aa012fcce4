// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/EventJournal.h"

#include "text/Utf8.h"
#include "voltvk/Specs.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/PlainText.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <ctime>

namespace voltvk {

namespace {

std::string bracketed(const std::string& argument) {
  std::string shown = cleanText(argument);
  std::replace(shown.begin(), shown.end(), '[', '(');
  std::replace(shown.begin(), shown.end(), ']', ')');
  return "[" + shown + "]";
}

std::string fill(const std::string& text, std::initializer_list<std::string> arguments) {
  std::string filled;
  std::size_t position = 0;
  for (const std::string& argument : arguments) {
    const std::size_t place = std::min(text.find("{}", position), text.size());
    filled += text.substr(position, place - position) + bracketed(argument);
    position = std::min(place + 2, text.size());
  }
  return filled + text.substr(position);
}

VolEvent readEvent(const Statement& row) {
  VolEvent event;
  // A damaged event must not keep those after it from being read, so any number will do.
  event.id = static_cast<std::uint32_t>(row.integer(0));
  event.time = static_cast<std::uint32_t>(row.integer(1));
  event.code = static_cast<std::uint32_t>(row.integer(2));
  event.type = static_cast<std::uint32_t>(row.integer(3));
  tvkSetText(event.description, sizeof event.description, cleanText(row.text(4)).c_str());
  event.actionId = static_cast<std::uint32_t>(row.integer(5));
  return event;
}

}  // namespace

void EventJournal::append(
    TvkEventCode code, TvkEventType type, const char* text, std::initializer_list<std::string> arguments,
    std::uint32_t actionId) {
  const std::string description = fill(text, arguments);
  Statement(
      m_connection, "INSERT INTO event(time, code, type, description, action) VALUES(?, ?, ?, ?, ?)",
      std::time(nullptr), code, type, tvp::text::cutToSize(description, TVK_EVENT_DESCRIPTION_SIZE - 1),
      actionId)
      .run();
  Statement(m_connection, "DELETE FROM event WHERE id <= ?", m_connection.lastInsertedId() - CAPACITY).run();
}

std::int64_t EventJournal::newest() {
  return m_connection.number("SELECT seq FROM sqlite_sequence WHERE name = 'event'");
}

EventJournal::Progress EventJournal::readAfter(std::int64_t number, VolEventCollection& out) {
  Progress progress{number, 0};
  Statement rows(
      m_connection, "SELECT id, time, code, type, description, action FROM event WHERE id > ? ORDER BY id",
      number);
  while (rows.step()) {
    out.append(readEvent(rows));
    progress.lost += rows.integer(0) - progress.newest - 1;  // numbers are given without gaps
    progress.newest = rows.integer(0);
  }
  return progress;
}

std::vector<VolEvent> EventJournal::latest(std::uint32_t count) {
  std::vector<VolEvent> events;
  Statement rows(
      m_connection, "SELECT id, time, code, type, description, action FROM event ORDER BY id DESC LIMIT ?",
      count);
  while (rows.step()) {
    events.push_back(readEvent(rows));
  }
  std::reverse(events.begin(), events.end());
  return events;
}

}  // namespace voltvk
