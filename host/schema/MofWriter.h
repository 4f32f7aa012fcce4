// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_MOFWRITER_H
#define HOST_SCHEMA_MOFWRITER_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>

namespace tvp::host {

/** A value in MOF syntax; texts are quoted and escaped, embedded instances are texts that contain MOF. */
std::string mofValue(const Value& value);
/** An instance declaration, with its newline; unset properties are NULL. */
std::string mofInstance(const Instance& instance);
/** A class declaration with its own features; inherited features are left to its superclass. */
std::string mofClass(const SchemaClass& schemaClass);

}  // namespace tvp::host

#endif
