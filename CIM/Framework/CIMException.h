// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMEXCEPTION_H
#define CIM_FRAMEWORK_CIMEXCEPTION_H

#include <string>

namespace tvp::cim::fwf {

/** Codes of CIMException; the numbers are those of the CIM status codes. */
enum FrameworkReturnCode : unsigned int {
  FW_RC_FAILED = 1,
  FW_RC_ACCESS_DENIED = 2,
  FW_RC_INVALID_NAMESPACE = 3,
  FW_RC_INVALID_PARAMETER = 4,
  FW_RC_INVALID_CLASS = 5,
  FW_RC_NOT_FOUND = 6,
  FW_RC_NOT_SUPPORTED = 7,
  FW_RC_CLASS_HAS_CHILDREN = 8,
  FW_RC_CLASS_HAS_INSTANCES = 9,
  FW_RC_INVALID_SUPERCLASS = 10,
  FW_RC_ALREADY_EXISTS = 11,
  FW_RC_NO_SUCH_PROPERTY = 12,
  FW_RC_TYPE_MISMATCH = 13,
  FW_RC_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
  FW_RC_INVALID_QUERY = 15,
  FW_RC_METHOD_NOT_AVAILABLE = 16,
  FW_RC_METHOD_NOT_FOUND = 17,
  FW_RC_INTERNAL_ERROR = 24
};

/**
 * Endings of the usual messages. COMPAT: they include a separator of their own, which is therefore doubled in
 * messages; clients see it that way.
 */
inline constexpr char OPERATION_FAILED_SUFFIX[] = " :: Operation Failed";
inline constexpr char INVALID_NAMESPACE_SUFFIX[] = " :: Invalid namespace";
inline constexpr char INVALID_CLASS_SUFFIX[] = " :: Invalid class";
inline constexpr char NOT_SUPPORTED_SUFFIX[] = " :: Not supported";

/** The one exception of the framework: a code and a message. Thrown by value, caught by reference. */
class CIMException {
public:
  CIMException() = default;

  /** Formats the message like printf; it is truncated to 1,023 bytes. */
  __attribute__((format(printf, 3, 4))) CIMException(unsigned int code, const char* format, ...);

  /** Keeps the message as given, for texts that are complete. */
  CIMException(unsigned int code, std::string message);

  unsigned int getErrCode() const noexcept { return m_errCode; }
  std::string getErrMessage() const { return m_errMessage; }
  const std::string& message() const noexcept { return m_errMessage; }

private:
  unsigned int m_errCode = 0;
  std::string m_errMessage;
};

/** @return an exception with the message "function :: text". */
[[nodiscard]] CIMException
frameworkError(unsigned int code, const std::string& function, const std::string& text);

/** @return an exception with the message "function :: text." */
[[nodiscard]] CIMException
frameworkErrorWithStop(unsigned int code, const std::string& function, const std::string& text);

}  // namespace tvp::cim::fwf

#endif
