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
  /** In a request, dead objects stay until its end; elsewhere they are moved out from time to time. */
  enum class Kind { Request, Lasting };

  Scope(Broker& broker, Kind kind) : m_broker(broker), m_kind(kind) {}
  /** Ends all objects. */
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  Kind kind() const { return m_kind; }
  /** Creates an object that the scope owns. @return what a provider sees of it */
  template <class Face>
  Face* make(typename ObjectTraits<Face>::Content content) {
    auto object = std::make_unique<Object<Face>>(m_broker, std::move(content));
    Face* face = object->face();
    adopt(std::move(object));
    return face;
  }
  /** Takes ownership of an object. */
  void adopt(std::unique_ptr<ObjectCore> object);
  /** A mark that precedes all objects created later. */
  std::uint64_t mark() const;
  /** Ends the objects created since the mark; 0 means all. Memory blocks are freed only with all objects. */
  void endSince(std::uint64_t mark);
  /** Descriptions of the live objects that nobody has tried to release. */
  std::vector<std::string> leaks() const;

  /** Records a text that the provider logged while this was the current scope. */
  void addRemark(const std::string& text);
  /** The texts recorded so far, in order. */
  std::vector<std::string> remarks() const;

  /** Memory that lives as long as the scope; like the C library's functions. */
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
