// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSMETHODTRACE_H
#define OSLIB_KVSMETHODTRACE_H

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace tvp::cim::fwf {

/**
 * Writes one trace line composed of parts, such as {"Entering FrameworkFacade ", name, "()"}. They are put
 * together only if there is a log, and truncated to 255 bytes. Does not allocate or throw; safe from any
 * thread.
 */
void traceParts(std::initializer_list<std::string_view> parts) noexcept;

/**
 * Brackets a scope with two trace lines, "ENTER : name" and "EXIT  : name"; the latter also when the scope is
 * left by an exception. Texts over 255 bytes are truncated. Does not allocate or throw: destructors use it.
 */
class tvpMethodTrace {
public:
  /** @param method must outlive this object; may be null */
  explicit tvpMethodTrace(const char* method) noexcept;
  ~tvpMethodTrace();

  tvpMethodTrace(const tvpMethodTrace&) = delete;
  tvpMethodTrace& operator=(const tvpMethodTrace&) = delete;

private:
  const char* m_method;
};

}  // namespace tvp::cim::fwf

#endif
