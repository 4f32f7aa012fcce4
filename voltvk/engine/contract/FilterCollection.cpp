// SPDX-License-Identifier: Apache-2.0
#include "voltvk/FilterCollection.h"

#include "voltvk/engine/contract/LibraryObjects.h"
#include "voltvk/engine/contract/Operation.h"
#include "voltvk/engine/contract/State.h"

#include <cstring>
#include <new>
#include <vector>

/** A null snapshot means that the driver could not be read. */
struct FilterCollection::Content {
  std::shared_ptr<const voltvk::Snapshot> snapshot;
  std::vector<RaidObject*> objects;
};

FilterCollection::FilterCollection(RaidObject* root) : m_content(std::make_unique<Content>()) {
  try {
    const auto* adapter = dynamic_cast<const TvkAdapter*>(
        root == nullptr || std::strcmp(root->getTypeName(), "Root") != 0 ? root : root->getObject(0));
    if (adapter == nullptr) {
      return;
    }
    const std::shared_ptr<voltvk::State> state = voltvk::stateOf(*adapter);
    voltvk::requirePresence(*state, true);
    m_content->snapshot = state->snapshot();
    m_content->objects = m_content->snapshot->objects();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    m_content->snapshot.reset();  // filterByType then returns null: the driver cannot be read
  }
}

FilterCollection::FilterCollection(std::unique_ptr<Content> content) : m_content(std::move(content)) {}

FilterCollection::~FilterCollection() = default;

FilterCollection* FilterCollection::filterByType(const char* type, unsigned long) {
  if (m_content->snapshot == nullptr || type == nullptr) {
    return nullptr;
  }
  auto filtered = std::make_unique<Content>();
  filtered->snapshot = m_content->snapshot;
  for (RaidObject* object : m_content->objects) {
    if (std::strcmp(object->getTypeName(), type) == 0) {
      filtered->objects.push_back(object);
    }
  }
  return new FilterCollection(std::move(filtered));
}

int FilterCollection::size() const {
  return static_cast<int>(m_content->objects.size());
}

RaidObject* FilterCollection::elementAt(int index) const {
  return index < 0 || index >= size() ? nullptr : m_content->objects[static_cast<std::size_t>(index)];
}
