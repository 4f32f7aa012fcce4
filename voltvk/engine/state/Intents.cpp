// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Intents.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Statement.h"

#include <sstream>
#include <string>

namespace voltvk {

namespace {

std::string textOf(const std::vector<std::uint16_t>& drives) {
  std::string text;
  for (const std::uint16_t drive : drives) {
    text += std::to_string(drive) + " ";
  }
  return text;
}

std::vector<std::uint16_t> drivesIn(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::uint16_t> drives;
  std::uint16_t drive = 0;
  while (stream >> drive) {
    drives.push_back(drive);
  }
  if (!stream.eof()) {
    throw DatabaseError::ofDamage("a change under way names drives that are not numbers");
  }
  return drives;
}

}  // namespace

void Intents::record(const std::vector<Intent>& intents) {
  Statement insert(m_connection, "INSERT INTO intent(step, object, drives) VALUES(?, ?, ?)");
  for (const Intent& intent : intents) {
    insert.runWith(static_cast<std::uint32_t>(intent.step), intent.object, textOf(intent.drives));
  }
}

std::vector<Intent> Intents::list() {
  std::vector<Intent> intents;
  Statement rows(m_connection, "SELECT step, object, drives FROM intent ORDER BY position");
  while (rows.step()) {
    intents.push_back({rows.as<Step>(0), rows.as<std::uint32_t>(1), drivesIn(rows.text(2))});
  }
  return intents;
}

void Intents::clear() {
  m_connection.execute("DELETE FROM intent");
}

}  // namespace voltvk
