// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/RefusalReason.h"

#include <cstdio>

#include <pthread.h>

namespace tvp::cim::fwf {

namespace {

/**
 * The calling thread's current object; the key is created when the library is loaded and deleted when it is
 * unloaded.
 */
class CurrentReason {
public:
  CurrentReason() : m_made(pthread_key_create(&m_key, nullptr) == 0) {}
  ~CurrentReason() {
    if (m_made) {
      pthread_key_delete(m_key);
    }
  }
  CurrentReason(const CurrentReason&) = delete;
  CurrentReason& operator=(const CurrentReason&) = delete;

  RefusalReason* get() const {
    return m_made ? static_cast<RefusalReason*>(pthread_getspecific(m_key)) : nullptr;
  }
  /** On allocation failure, the request has no reason. */
  void set(RefusalReason* reason) const {
    if (m_made) {
      pthread_setspecific(m_key, reason);
    }
  }

private:
  pthread_key_t m_key{};
  bool m_made;
};

const CurrentReason current;

}  // namespace

RefusalReason::RefusalReason() noexcept : m_outer(current.get()) {
  current.set(this);
}

RefusalReason::~RefusalReason() {
  current.set(m_outer);
}

void RefusalReason::set(const char* text) noexcept {
  if (RefusalReason* reason = current.get()) {
    std::snprintf(reason->m_text, sizeof reason->m_text, "%s", text);
  }
}

}  // namespace tvp::cim::fwf
