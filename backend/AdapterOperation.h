// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_ADAPTEROPERATION_H
#define BACKEND_ADAPTEROPERATION_H

#include "voltvk/TvkAdapter.h"

#include <functional>

namespace tvp::cim::fwf {

/**
 * An operation that is one call of the storage library's adapter. All of them share their course; what
 * differs is the names in their log lines. Immutable and safe from any thread.
 */
class AdapterOperation {
public:
  /** The names in the log lines, where some operations differ from line to line. */
  struct Names {
    const char* method;    ///< class and name of the operation
    const char* exit;      ///< the same in the exit line
    const char* calling;   ///< the adapter's operation before the call,
    const char* returned;  ///< after it,
    const char* throwing;  ///< and in the line on an exception
  };

  explicit constexpr AdapterOperation(const Names& names) : m_names(names) {}
  constexpr AdapterOperation(const char* method, const char* libraryOperation)
      : m_names{method, method, libraryOperation, libraryOperation, libraryOperation} {}

  using Call = std::function<Ret(TvkAdapter&)>;
  using Preparation = std::function<void(TvkAdapter&)>;

  /**
   * Traces the entry and carries the operation out. The last line is that of the exit, unless the
   * library gave a reason for a refusal or an exception: that follows, see reportRefusal.
   * @param ret receives the library's status
   * @param call makes the one call of the adapter
   * @param prepare what is to be done with the adapter before the call; may be empty
   * @return 0; 3 when the status is not zero or there is no adapter. When something throws it is 0:
   *         callers take that for success, and only the log tells
   */
  unsigned int run(Ret& ret, const Call& call, const Preparation& prepare = nullptr) const;

  /** The same without the entry trace, for operations that log their arguments instead. */
  unsigned int carryOut(Ret& ret, const Call& call, const Preparation& prepare = nullptr) const;

private:
  Names m_names;
};

/** Logs that there is no adapter. @param method class and name of the operation */
void logMissingAdapter(const char* method);

}  // namespace tvp::cim::fwf

#endif
