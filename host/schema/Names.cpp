// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Names.h"

#include "text/Case.h"

#include <algorithm>
#include <array>

namespace tvp::host {
namespace {

struct TypeEntry {
  const char* name;
  CMPIType type;
};

constexpr std::array<TypeEntry, 15> TYPES = {
    {{"boolean", CMPI_boolean},
     {"string", CMPI_string},
     {"uint8", CMPI_uint8},
     {"uint16", CMPI_uint16},
     {"uint32", CMPI_uint32},
     {"uint64", CMPI_uint64},
     {"sint8", CMPI_sint8},
     {"sint16", CMPI_sint16},
     {"sint32", CMPI_sint32},
     {"sint64", CMPI_sint64},
     {"real32", CMPI_real32},
     {"real64", CMPI_real64},
     {"char16", CMPI_char16},
     {"datetime", CMPI_dateTime},
     {"chars", CMPI_chars}}};

struct StatusEntry {
  CMPIrc code;
  const char* name;
};

constexpr std::array<StatusEntry, 24> STATUSES = {
    {{CMPI_RC_OK, "OK"},
     {CMPI_RC_ERR_FAILED, "CIM_ERR_FAILED"},
     {CMPI_RC_ERR_ACCESS_DENIED, "CIM_ERR_ACCESS_DENIED"},
     {CMPI_RC_ERR_INVALID_NAMESPACE, "CIM_ERR_INVALID_NAMESPACE"},
     {CMPI_RC_ERR_INVALID_PARAMETER, "CIM_ERR_INVALID_PARAMETER"},
     {CMPI_RC_ERR_INVALID_CLASS, "CIM_ERR_INVALID_CLASS"},
     {CMPI_RC_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND"},
     {CMPI_RC_ERR_NOT_SUPPORTED, "CIM_ERR_NOT_SUPPORTED"},
     {CMPI_RC_ERR_CLASS_HAS_CHILDREN, "CIM_ERR_CLASS_HAS_CHILDREN"},
     {CMPI_RC_ERR_CLASS_HAS_INSTANCES, "CIM_ERR_CLASS_HAS_INSTANCES"},
     {CMPI_RC_ERR_INVALID_SUPERCLASS, "CIM_ERR_INVALID_SUPERCLASS"},
     {CMPI_RC_ERR_ALREADY_EXISTS, "CIM_ERR_ALREADY_EXISTS"},
     {CMPI_RC_ERR_NO_SUCH_PROPERTY, "CIM_ERR_NO_SUCH_PROPERTY"},
     {CMPI_RC_ERR_TYPE_MISMATCH, "CIM_ERR_TYPE_MISMATCH"},
     {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
     {CMPI_RC_ERR_INVALID_QUERY, "CIM_ERR_INVALID_QUERY"},
     {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "CIM_ERR_METHOD_NOT_AVAILABLE"},
     {CMPI_RC_ERR_METHOD_NOT_FOUND, "CIM_ERR_METHOD_NOT_FOUND"},
     {CMPI_RC_DO_NOT_UNLOAD, "CMPI_RC_DO_NOT_UNLOAD"},
     {CMPI_RC_NEVER_UNLOAD, "CMPI_RC_NEVER_UNLOAD"},
     {CMPI_RC_ERR_INVALID_HANDLE, "CMPI_RC_ERR_INVALID_HANDLE"},
     {CMPI_RC_ERR_INVALID_DATA_TYPE, "CMPI_RC_ERR_INVALID_DATA_TYPE"},
     {CMPI_RC_ERROR_SYSTEM, "CMPI_RC_ERROR_SYSTEM"},
     {CMPI_RC_ERROR, "CMPI_RC_ERROR"}}};

}  // namespace

std::string typeName(CMPIType type) {
  const CMPIType scalar = static_cast<CMPIType>(type & ~CMPI_ARRAY);
  const char* suffix = (type & CMPI_ARRAY) != 0 ? "[]" : "";
  for (const TypeEntry& entry : TYPES) {
    if (entry.type == scalar) {
      return std::string(entry.name) + suffix;
    }
  }
  switch (scalar) {
  case CMPI_ref:
    return std::string("ref") + suffix;
  case CMPI_instance:
    return std::string("instance") + suffix;
  case CMPI_null:
    return "null";
  default:
    return "CMPI type " + std::to_string(type);
  }
}

std::optional<CMPIType> typeOfName(const std::string& name) {
  for (const TypeEntry& entry : TYPES) {
    if (entry.type != CMPI_chars && equalNames(entry.name, name.c_str())) {
      return entry.type;
    }
  }
  return std::nullopt;
}

std::string statusName(CMPIrc code) {
  for (const StatusEntry& entry : STATUSES) {
    if (entry.code == code) {
      return entry.name;
    }
  }
  return "status " + std::to_string(static_cast<int>(code));
}

std::string lowerCase(const std::string& text) {
  return text::lowerCase(text);
}

bool equalNames(const std::string& left, const std::string& right) {
  return text::equalsIgnoringCase(left, right);
}

bool equalNames(const char* left, const char* right) {
  return text::equalsIgnoringCase(left, right);
}

bool NameLess::operator()(std::string_view left, std::string_view right) const {
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(),
      [](char one, char other) { return text::lowerCase(one) < text::lowerCase(other); });
}

}  // namespace tvp::host
