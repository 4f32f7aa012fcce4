// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_VOLEVENT_H
#define VOLTVK_INCLUDE_VOLTVK_VOLEVENT_H

#include "voltvk/Export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/** Size of an event's description, with the terminating NUL. */
constexpr std::size_t TVK_EVENT_DESCRIPTION_SIZE = 256;

/** How serious an event is. */
enum TvkEventType : std::uint32_t { TVK_EVENT_ERROR = 1, TVK_EVENT_WARNING = 2, TVK_EVENT_INFORMATION = 3 };

/** Codes of the events that the library appends. */
enum TvkEventCode : std::uint32_t {
#define TVK_EVENT(name, code) name = (code),
#include "voltvk/VolEvent.def"
};

/** One event record. A plain value. */
struct VOLTVK_EXPORT VolEvent {
  VolEvent();

  std::uint32_t time;                            ///< seconds since the epoch
  std::uint32_t code;                            ///< TvkEventCode, or one of the caller's own codes
  std::uint32_t type;                            ///< TvkEventType
  char description[TVK_EVENT_DESCRIPTION_SIZE];  ///< UTF-8, NUL-terminated
  std::uint32_t id;                              ///< sequence number of the event
  std::uint32_t actionId;                        ///< identifier of the pool or volume concerned, or 0
};

/** A growing array whose elements are accessed by pointer; the pointers stay valid until it grows. */
template <typename T>
class ByRefArray_TC {
public:
  /** Number of elements. */
  long count() const { return static_cast<long>(m_elements.size()); }
  /** The element at index, owned by the array; null when the index is out of range. */
  T* Obj_P(long index) {
    return index < 0 || index >= count() ? nullptr : &m_elements[static_cast<std::size_t>(index)];
  }
  void append(const T& element) { m_elements.push_back(element); }

private:
  std::vector<T> m_elements;
};

/** The events of one fetch, oldest first. Belongs to one thread. */
class VOLTVK_EXPORT VolEventCollection : public ByRefArray_TC<VolEvent> {
public:
  /** @param first ignored @param growth ignored, the array grows as needed @param flags ignored */
  VolEventCollection(unsigned long first, unsigned long growth, unsigned long flags);
  ~VolEventCollection();
};

#endif
