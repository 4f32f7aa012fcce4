// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Object.h"

#include "host/schema/Names.h"

#include <algorithm>
#include <iterator>

namespace tvp::host {

ObjectCore* ObjectCore::of(const void* face) {
  if (face == nullptr) {
    return nullptr;
  }
  // Every face begins with its handle.
  auto* core = static_cast<ObjectCore*>(*static_cast<void* const*>(face));
  return core != nullptr && core->m_magic == MAGIC && core->m_face == face ? core : nullptr;
}

void ObjectCore::die(Life how) {
  Life expected = Life::Alive;
  if (m_life.compare_exchange_strong(expected, how, std::memory_order_acq_rel)) {
    clear();
  }
}

std::optional<std::size_t> InstanceContent::find(const char* name) const {
  if (schemaClass != nullptr) {
    return schemaClass->position(name);
  }
  const auto found = std::find_if(
      instance.properties.begin(), instance.properties.end(),
      [name](const NamedValue& property) { return equalNames(property.name.c_str(), name); });
  if (found == instance.properties.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - instance.properties.begin());
}

bool InstanceContent::passesFilter(const std::string& name) const {
  if (!filtered) {
    return true;
  }
  if (schemaClass != nullptr) {
    if (const SchemaProperty* property = schemaClass->property(name); property != nullptr && property->key) {
      return true;
    }
  }
  return std::any_of(requested.begin(), requested.end(), [&name](const std::string& wanted) {
    return equalNames(wanted, name);
  });
}

Instance InstanceContent::snapshot() const {
  if (!filtered) {
    return instance;
  }
  Instance result;
  result.path = instance.path;
  std::copy_if(
      instance.properties.begin(), instance.properties.end(), std::back_inserter(result.properties),
      [this](const NamedValue& property) { return passesFilter(property.name); });
  return result;
}

}  // namespace tvp::host
