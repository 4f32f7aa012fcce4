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

/**
 * Codes of the events that the library appends. The arguments are in square brackets in the description, in
 * the order given here.
 */
enum TvkEventCode : std::uint32_t {
  TVK_EVENT_POOL_CREATED = 0x201,            ///< name, tier level, sectors; internal pools: pool type
  TVK_EVENT_POOL_CREATION_FAILED = 0x203,    ///< name, pool type
  TVK_EVENT_POOL_DELETED = 0x205,            ///< name, pool type
  TVK_EVENT_POOL_DELETION_FAILED = 0x207,    ///< name or identifier
  TVK_EVENT_POOL_LEVEL_CHANGED = 0x20A,      ///< name, tier level
  TVK_EVENT_POOL_RENAMED = 0x20B,            ///< old name, new name
  TVK_EVENT_POOL_DESCRIBED = 0x20C,          ///< name
  TVK_EVENT_VOLUME_CREATED = 0x401,          ///< name, volume type, sectors
  TVK_EVENT_VOLUME_CREATION_FAILED = 0x403,  ///< name
  TVK_EVENT_VOLUME_DELETED = 0x405,          ///< name
  TVK_EVENT_VOLUME_DELETION_FAILED = 0x407,  ///< name or identifier
  TVK_EVENT_VOLUME_KNOB_CHANGED = 0x40A,     ///< name, previous mode, current mode
  TVK_EVENT_VOLUME_RENAMED = 0x40B,          ///< old name, new name
  TVK_EVENT_VOLUME_DESCRIBED = 0x40C,        ///< name
  TVK_EVENT_VOLUME_FLUSHED = 0x40D,          ///< name, chunks written back
  TVK_EVENT_VOLUME_STATS_RESET = 0x40E,      ///< name
  TVK_EVENT_VOLUME_CHUNKS_MOVED = 0x40F,     ///< name, chunks moved to the SSD pool
  TVK_EVENT_DRIVE_ADDED = 0x601,             ///< device name
  TVK_EVENT_DRIVE_REMOVED = 0x602,           ///< device name
  TVK_EVENT_DRIVES_LEFT_OUT = 0x603,         ///< how many, how many there is room for
  TVK_EVENT_FAULT_SET = 0x801,               ///< what was injected
  TVK_EVENT_FAULT_CLEARED = 0x802            ///< what was cleared
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
