// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_FAILURE_H
#define HOST_CIMXML_MESSAGE_FAILURE_H

#include "cmpidt.h"

#include <stdexcept>
#include <string>

namespace tvp::host::cimxml {

/** An operation that fails: its answer is an ERROR element with this status. */
class CimFailure : public std::runtime_error {
public:
  CimFailure(CMPIrc code, const std::string& message) : std::runtime_error(message), m_code(code) {}

  CMPIrc code() const { return m_code; }

private:
  CMPIrc m_code;
};

/**
 * A message that is not one of CIM-XML, or contradicts its headers: its answer is the HTTP status 400 (501
 * for "multiple-requests-unsupported", "unsupported-operation" and unsupported versions) with the value of
 * the header CIMError.
 */
class BadMessage : public std::runtime_error {
public:
  /** @param cimError such as "request-not-well-formed" */
  BadMessage(std::string cimError, const std::string& message)
      : std::runtime_error(message), m_cimError(std::move(cimError)) {}

  const std::string& cimError() const { return m_cimError; }
  int httpStatus() const;

private:
  std::string m_cimError;
};

}  // namespace tvp::host::cimxml

#endif
