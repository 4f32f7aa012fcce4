// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_SCOPE_H
#define HOST_BROKER_SCOPE_H

#include "host/broker/Object.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tvp::host {

/**
 * Owns the encapsulated objects made in one stretch of a thread's life: a request, or the time that a
 * thread of the provider is attached. Thread-safe.
 */
class Scope {
public:
  /** Of a request the dead objects stay to its end; elsewhere they are carried away now and then. */
  enum class Kind { Request, Lasting };

  Scope(Broker& broker, Kind kind) : m_broker(broker), m_kind(kind) {}
  /** Ends everything. */
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  Kind kind() const { return m_kind; }
  /** Makes an object that the scope owns. @return what a provider sees of it */
  template <class Face>
  Face* make(typename ObjectTraits<Face>::Content content) {
    auto object = std::make_unique<Object<Face>>(m_broker, std::move(content));
    Face* face = object->face();
    adopt(std::move(object));
    return face;
  }
  /** Takes over an object. */
  void adopt(std::unique_ptr<ObjectCore> object);
  /** A mark that stands before all objects made later. */
  std::uint64_t mark() const;
  /** Ends the objects that were made since the mark; 0 stands for all. Blocks of memory go with all. */
  void endSince(std::uint64_t mark);
  /** Descriptions of the living objects whose release nobody has asked for. */
  std::vector<std::string> leaks() const;

  /** Notes a text that the provider logged while the scope was the current one. */
  void addRemark(const std::string& text);
  /** The texts noted so far, in order. */
  std::vector<std::string> remarks() const;

  /** Memory that lives as long as the scope; like the functions of the C library. */
  void* allocate(std::size_t size, bool zeroed);
  void* reallocate(void* block, std::size_t size);
  void release(void* block);

private:
  void sweep(std::vector<std::unique_ptr<ObjectCore>>& dead);

  Broker& m_broker;
  const Kind m_kind;
  mutable std::mutex m_mutex;
  std::vector<std::unique_ptr<ObjectCore>> m_objects;
  std::uint64_t m_nextSerial = 1;
  std::size_t m_sweepAt = 64;
  std::unordered_set<void*> m_blocks;
  std::vector<std::string> m_remarks;
};

}  // namespace tvp::host

#endif
