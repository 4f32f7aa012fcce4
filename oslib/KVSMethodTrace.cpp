// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSMethodTrace.h"

#include "oslib/KVSLog.h"

#include <cstdio>

namespace tvp::cim::fwf {

namespace {

void trace(const char* label, const std::string& method) {
  char text[256];
  std::snprintf(text, sizeof text, "%s : %s", label, method.c_str());
  KvsTrace(text);
}

}  // namespace

tvpMethodTrace::tvpMethodTrace(const char* method) : m_method(method == nullptr ? "" : method) {
  trace("ENTER", m_method);
}

tvpMethodTrace::~tvpMethodTrace() {
  // Two blanks after EXIT: the colons of a pair of lines stand under each other (intended).
  trace("EXIT ", m_method);
}

}  // namespace tvp::cim::fwf
