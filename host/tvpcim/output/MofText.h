// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_MOFTEXT_H
#define HOST_TVPCIM_OUTPUT_MOFTEXT_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>

namespace tvp::host::tvpcim {

/** A value as MOF writes it; texts quoted and escaped, embedded instances as texts that hold MOF. */
std::string mofValue(const Value& value);
/** An instance declaration, with its newline; properties that are unset are NULL. */
std::string mofInstance(const Instance& instance);
/** A class declaration with its own features; what it inherits stands with its superclass. */
std::string mofClass(const SchemaClass& schemaClass);

}  // namespace tvp::host::tvpcim

#endif
