// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_LIBRARYACCESS_H
#define BACKEND_LIBRARYACCESS_H

#include "voltvk/FilterCollection.h"
#include "voltvk/TvkAdapter.h"

#include <cstddef>
#include <memory>
#include <string>

class LogicalDevice;
class VirtualPool;
class VirtualVolume;

namespace tvp::cim::fwf {

/** The root of the storage tree; null if the gateway or its library object does not exist. */
RaidObject* getTarvexProRoot();

/** Object 0 of the root; null if there is no adapter. Owned by the library. */
TvkAdapter* getTvkAdapter();

/**
 * Has the storage library read what other processes have changed. The result is ignored, and an exception is
 * only logged: the caller goes on with what the library knows.
 */
void refreshTarvexProObjects();

/**
 * Refreshes the configuration, as every enumeration does first. @return whether the library has a driver
 * @throws std::bad_alloc if that cannot be found out
 */
bool isDriverAvailable();

/** The storage library's name of a type of objects. */
template <typename Object>
inline constexpr const char* LIBRARY_TYPE = nullptr;
template <>
inline constexpr const char* LIBRARY_TYPE<LogicalDevice> = "LogicalDevice";
template <>
inline constexpr const char* LIBRARY_TYPE<VirtualPool> = "VirtualPool";
template <>
inline constexpr const char* LIBRARY_TYPE<VirtualVolume> = "VirtualVolume";

/**
 * The objects of one type under the adapter, in the library's order; they stay valid and unchanged as long as
 * this exists. Belongs to one thread. Null elements are left out.
 *
 *   for (VirtualPool& pool : FilteredObjects<VirtualPool>(getTvkAdapter())) { ... }
 */
template <typename Object>
class FilteredObjects {
public:
  class Iterator {
  public:
    Iterator(const FilterCollection* objects, int index) : m_objects(objects), m_index(index) { skipNull(); }

    Object& operator*() const { return static_cast<Object&>(*m_objects->elementAt(m_index)); }
    Iterator& operator++() {
      ++m_index;
      skipNull();
      return *this;
    }
    bool operator!=(const Iterator& other) const { return m_index != other.m_index; }

    /** The position of the object in the library's collection, including null elements. */
    int index() const { return m_index; }

  private:
    void skipNull() {
      while (m_objects != nullptr && m_index < m_objects->size() &&
             m_objects->elementAt(m_index) == nullptr) {
        ++m_index;
      }
    }

    const FilterCollection* m_objects;
    int m_index;
  };

  /** @param adapter if null, there are no objects */
  explicit FilteredObjects(RaidObject* adapter)
      : m_all(adapter), m_filtered(m_all.filterByType(LIBRARY_TYPE<Object>, 0)) {}

  /** False if the objects cannot be read; the range is then empty. */
  bool isReadable() const { return m_filtered != nullptr; }

  Iterator begin() const { return Iterator(m_filtered.get(), 0); }
  Iterator end() const { return Iterator(m_filtered.get(), isReadable() ? m_filtered->size() : 0); }

private:
  FilterCollection m_all;
  std::unique_ptr<FilterCollection> m_filtered;
};

/** Cuts a UTF-8 text to at most size bytes, at a character boundary. */
std::string cutToSize(std::string text, std::size_t size);

}  // namespace tvp::cim::fwf

#endif
