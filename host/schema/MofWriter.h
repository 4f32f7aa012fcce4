// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_MOFWRITER_H
#define HOST_SCHEMA_MOFWRITER_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>

namespace tvp::host {

/** A value as MOF writes it; texts quoted and escaped, embedded instances as texts that hold MOF. */
std::string mofValue(const Value& value);
/** An instance declaration, with its newline; properties that are unset are NULL. */
std::string mofInstance(const Instance& instance);
/** A class declaration with its own features; what it inherits stands with its superclass. */
std::string mofClass(const SchemaClass& schemaClass);

}  // namespace tvp::host

#endif
