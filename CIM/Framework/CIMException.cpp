// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace tvp::cim::fwf {

CIMException::CIMException(unsigned int code, const char* format, ...) : m_errCode(code) {
  char message[1024] = "";
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  m_errMessage = message;
}

CIMException::CIMException(unsigned int code, std::string message)
    : m_errCode(code), m_errMessage(std::move(message)) {}

CIMException frameworkError(unsigned int code, const std::string& function, const std::string& text) {
  return {code, "%s :: %s", function.c_str(), text.c_str()};
}

CIMException frameworkErrorWithStop(unsigned int code, const std::string& function, const std::string& text) {
  return {code, "%s :: %s.", function.c_str(), text.c_str()};
}

}  // namespace tvp::cim::fwf
