// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIOBJECTGUARD_H
#define CMPI_CMPIOBJECTGUARD_H

#include "cmpimacs.h"

#include <utility>

namespace tvp::cim::adap::cmpi {

/** Whether an encapsulated object can be called, that is, the pointer and its handle are not null. */
template <typename Object>
bool isObject(const Object* object) {
  return object != nullptr && object->hdl != nullptr;
}

/**
 * Owns one encapsulated object and releases it on destruction. Meant for objects made by the broker that
 * nobody else frees in time: objects made outside a request, and those that a request would otherwise keep
 * until its end. A null object is allowed. A broker that throws while releasing keeps the object.
 */
template <typename Object>
class CMPIObjectGuard {
public:
  explicit CMPIObjectGuard(Object* object = nullptr) : m_object(object) {}
  ~CMPIObjectGuard() { reset(); }
  CMPIObjectGuard(CMPIObjectGuard&& other) noexcept : m_object(other.leave()) {}
  CMPIObjectGuard& operator=(CMPIObjectGuard&& other) noexcept {
    if (this != &other) {
      reset();
      m_object = other.leave();
    }
    return *this;
  }
  CMPIObjectGuard(const CMPIObjectGuard&) = delete;
  CMPIObjectGuard& operator=(const CMPIObjectGuard&) = delete;

  Object* get() const { return m_object; }
  bool usable() const { return isObject(m_object); }
  /** Releases ownership: the caller is responsible for the object from now on. */
  Object* leave() noexcept { return std::exchange(m_object, nullptr); }

private:
  void reset() noexcept {
    Object* object = leave();
    try {
      if (isObject(object)) {
        const CMPIStatus status = CMRelease(object);
        if (isObject(status.msg)) {
          CMRelease(status.msg);
        }
      }
    } catch (...) {
    }
  }

  Object* m_object;
};

}  // namespace tvp::cim::adap::cmpi

#endif
