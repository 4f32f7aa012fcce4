// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_SCALARTEXT_H
#define HOST_CIMXML_MESSAGE_SCALARTEXT_H

#include "host/schema/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvp::host::cimxml {

/** The name of a type in TYPE, PARAMTYPE and their like, of an array that of its elements: instances are
 * "string", references "reference". */
std::string xmlTypeName(CMPIType type);

/**
 * Reads the text of a VALUE.
 * @param type a scalar one other than a reference or an instance
 * @return nothing when the text is not a value of the type, or beyond its range
 */
std::optional<Value> parseScalar(std::string_view text, CMPIType type);

/** The type that texts without one suggest: boolean, sint64, uint64 (when one is beyond sint64), else string.
 */
CMPIType suggestedType(const std::vector<std::string_view>& texts);

/** Appends the text of a scalar that is neither null nor a reference nor an instance, escaped. */
void appendScalar(std::string& output, const Value& value);

}  // namespace tvp::host::cimxml

#endif
