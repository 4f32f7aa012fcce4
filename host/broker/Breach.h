// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_BREACH_H
#define HOST_BROKER_BREACH_H

#include <string>

namespace tvp::host {

/** Rules of the interface that a provider can break. */
enum class BreachKind {
  MissingEndMark,     ///< the status was success, but the result was never marked as done
  UsedAfterCall,      ///< an object was used after the call to which it belonged
  UsedAfterRelease,   ///< an object was used (or released again) after its release
  ThreadNotAttached,  ///< a thread called the broker outside a request without being attached
  EmptyAnswer,        ///< a creation returned no path to an object manager that takes it without looking
  Leak                ///< an attached thread created an object and never released it
};

/** One breach, with a sentence that names the function and the object. */
struct Breach {
  BreachKind kind;
  std::string text;
};

}  // namespace tvp::host

#endif
