// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_ADAPTEROPERATION_H
#define BACKEND_ADAPTEROPERATION_H

#include "voltvk/TvkAdapter.h"

#include <functional>

namespace tvp::cim::fwf {

/**
 * An operation that is one call to the storage library's adapter. All of them run the same way; only the
 * names in their log lines differ. Immutable and safe from any thread.
 */
class AdapterOperation {
public:
  /**
   * @param method class and name of the operation
   * @param libraryOperation name of the adapter's operation
   */
  constexpr AdapterOperation(const char* method, const char* libraryOperation)
      : m_method(method), m_exit(method), m_calling(libraryOperation), m_returned(libraryOperation),
        m_throwing(libraryOperation) {}

  // COMPAT: some operations have a different name in one of their log lines, and logs are searched for it.
  // Each of these sets such a name: for the exit line, the line before the call, or the line on an exception.
  constexpr AdapterOperation exitingAs(const char* method) const {
    return with(&AdapterOperation::m_exit, method);
  }
  constexpr AdapterOperation callingAs(const char* name) const {
    return with(&AdapterOperation::m_calling, name);
  }
  constexpr AdapterOperation throwingAs(const char* name) const {
    return with(&AdapterOperation::m_throwing, name);
  }

  using Call = std::function<Ret(TvkAdapter&)>;
  using Preparation = std::function<void(TvkAdapter&)>;

  /**
   * Traces the entry and executes the operation. The exit line is the last one, unless the library gave a
   * reason for a refusal or an exception, which follows it; see reportRefusal.
   * @param ret receives the library's status
   * @param call makes the one call to the adapter
   * @param prepare work on the adapter before the call; may be empty
   * @return BACKEND_DONE; BACKEND_FAILED if the status is not zero or there is no adapter.
   *         COMPAT: BACKEND_DONE when something throws, which callers take for success; it shows only in the
   * log
   */
  unsigned int run(Ret& ret, const Call& call, const Preparation& prepare = nullptr) const;

  /** The same without the entry trace, for operations that log their arguments instead. */
  unsigned int carryOut(Ret& ret, const Call& call, const Preparation& prepare = nullptr) const;

private:
  constexpr AdapterOperation with(const char* AdapterOperation::*member, const char* name) const {
    AdapterOperation changed = *this;
    changed.*member = name;
    return changed;
  }

  const char* m_method;
  const char* m_exit;
  const char* m_calling;
  const char* m_returned;
  const char* m_throwing;
};

/** Logs that there is no adapter. @param method class and name of the operation */
void logMissingAdapter(const char* method);

}  // namespace tvp::cim::fwf

#endif
