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
   * @param reading what tvpcim itself read afterwards about the reason, or empty; printed on a line of its
   *                own that says so
   */
  explicit OperationError(const std::string& message, std::string reading = "")
      : std::runtime_error(message), m_reading(std::move(reading)) {}

  const std::string& reading() const { return m_reading; }

private:
  std::string m_reading;
};

}  // namespace tvp::host::tvpcim

#endif
