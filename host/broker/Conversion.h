// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_CONVERSION_H
#define HOST_BROKER_CONVERSION_H

#include "host/broker/BrokerState.h"
#include "host/schema/Value.h"

namespace tvp::host {

/**
 * Copies a value out of what a provider hands over. A null pointer is a null of the type; CMPI_chars
 * becomes a string, and the value pointer is then the text itself.
 * @return CMPI_RC_ERR_INVALID_HANDLE for a dead or foreign object, CMPI_RC_ERR_INVALID_DATA_TYPE for a type
 * that no value can have, CMPI_RC_ERR_TYPE_MISMATCH for an array whose elements are of another type than it
 * is said to have.
 */
CMPIrc fromCmpi(const CMPIValue* value, CMPIType type, Value& out);

/** Makes a value readable for a provider; objects belong to the current thread's scope. */
CMPIData toCmpi(BrokerState& broker, const Value& value);

/** The value at a position of a list, and its name when asked for; CMPI_RC_ERR_NO_SUCH_PROPERTY beyond the
 * end. */
CMPIData valueAt(
    BrokerState& broker, const std::vector<NamedValue>& values, CMPICount position, CMPIString** name,
    CMPIrc& code);
/** The value of that name; CMPI_RC_ERR_NO_SUCH_PROPERTY when there is none. */
CMPIData
valueNamed(BrokerState& broker, const std::vector<NamedValue>& values, const char* name, CMPIrc& code);

/** The string array of a list of texts. */
Value textArray(const std::vector<std::string>& texts);

}  // namespace tvp::host

#endif
