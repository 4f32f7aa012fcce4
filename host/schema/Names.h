// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_NAMES_H
#define HOST_SCHEMA_NAMES_H

#include "cmpidt.h"

#include <optional>
#include <string>
#include <string_view>

namespace tvp::host {

/** The MOF name of a type: "uint32", "string[]"; a reference is "ref". */
std::string typeName(CMPIType type);
/** The scalar type of a MOF name ("uint32", "datetime"); nothing for a name that is not a type. */
std::optional<CMPIType> typeOfName(const std::string& name);
/** The CIM name of a status code, "CIM_ERR_FAILED"; codes beyond CIM's have their CMPI name. */
std::string statusName(CMPIrc code);

/** The text with ASCII letters in lower case; other bytes are unchanged. */
std::string lowerCase(const std::string& text);
/** Compares ignoring the case of ASCII letters. */
bool equalNames(const std::string& left, const std::string& right);
bool equalNames(const char* left, const char* right);

/** Orders names ignoring the case of ASCII letters, for containers with lookup that does not copy. */
struct NameLess {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const;
};

}  // namespace tvp::host

#endif
