// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_CONVERSION_H
#define HOST_BROKER_CONVERSION_H

#include "host/broker/EntryPoint.h"
#include "host/schema/Value.h"

namespace tvp::host {

/**
 * Copies a value that a provider passes. A null pointer is a null of the type; CMPI_chars becomes a string,
 * and and then the value pointer is the text itself.
 * @throws CallFailure CMPI_RC_ERR_INVALID_HANDLE for a dead or foreign object, CMPI_RC_ERR_INVALID_DATA_TYPE
 * for a type that no value can have, CMPI_RC_ERR_TYPE_MISMATCH for an array whose elements are not of the
 * given type.
 */
Value fromCmpi(const Call& call, const CMPIValue* value, CMPIType type);

/** Converts a value for a provider; objects belong to the current thread's scope. */
CMPIData toCmpi(const Call& call, const Value& value);

/**
 * The value at a position of a list, and its name if requested.
 * @throws CallFailure CMPI_RC_ERR_NO_SUCH_PROPERTY past the end
 */
CMPIData
valueAt(const Call& call, const std::vector<NamedValue>& values, std::size_t position, CMPIString** name);
/** The value of that name. @throws CallFailure CMPI_RC_ERR_NO_SUCH_PROPERTY if there is none */
CMPIData valueNamed(const Call& call, const std::vector<NamedValue>& values, const char* name);

}  // namespace tvp::host

#endif
