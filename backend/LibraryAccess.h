// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_LIBRARYACCESS_H
#define BACKEND_LIBRARYACCESS_H

#include "voltvk/FilterCollection.h"
#include "voltvk/TvkAdapter.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tvp::cim::fwf {

/** The root of the storage tree; null when the gateway or its library object is not there. */
RaidObject* getTarvexProRoot();

/** Object 0 of the root; null when there is no adapter. Owned by the library. */
TvkAdapter* getTvkAdapter();

/**
 * Has the storage library take in what other processes have changed. Its answer is not looked at, and an
 * exception is only traced: what follows works on what the library knows.
 */
void refreshTarvexProObjects();

/**
 * The objects of one type under a root, in the order of the library; they stay valid and unchanged as
 * long as this lives. What cannot be read is empty. Belongs to one thread.
 */
template <typename Object>
class FilteredObjects {
public:
  /** @param type "LogicalDevice", "VirtualPool" or "VirtualVolume", as Object is */
  FilteredObjects(RaidObject* root, const char* type)
      : m_all(root), m_filtered(m_all.filterByType(type, 0)) {}

  /** Calls visit(Object&) for each object; null ones are left out. */
  template <typename Visit>
  void visitAll(Visit visit) const {
    const int size = m_filtered ? m_filtered->size() : 0;
    for (int index = 0; index < size; ++index) {
      if (auto* object = static_cast<Object*>(m_filtered->elementAt(index))) {
        visit(*object);
      }
    }
  }

private:
  FilterCollection m_all;
  std::unique_ptr<FilterCollection> m_filtered;
};

/** Cuts a UTF-8 text to at most size bytes, at a character boundary. */
std::string cutToSize(std::string text, std::size_t size);

}  // namespace tvp::cim::fwf

#endif
