// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_FAILURE_H
#define HOST_TVPCIM_FAILURE_H

#include <stdexcept>
#include <string>

namespace tvp::host::tvpcim {

/** The command line asks for something that cannot be understood: exit status 2. */
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/** The operation was tried and failed, or could not be tried: exit status 1. */
class OperationError : public std::runtime_error {
public:
  /**
   * @param message what was wrong, with what, and what to do; one line
   * @param hint more on the reason, from the provider or from what can be seen; may be empty. It is printed
   *             on a line of its own
   */
  explicit OperationError(const std::string& message, std::string hint = "")
      : std::runtime_error(message), m_hint(std::move(hint)) {}

  const std::string& hint() const { return m_hint; }

private:
  std::string m_hint;
};

}  // namespace tvp::host::tvpcim

#endif
