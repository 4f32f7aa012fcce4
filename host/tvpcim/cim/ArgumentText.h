// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_ARGUMENTTEXT_H
#define HOST_TVPCIM_CIM_ARGUMENTTEXT_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** How values are written on the command line; part of the help of the verbs that take them. */
extern const char* const ARGUMENT_HELP;

/**
 * Reads a value of a declared type, as ARGUMENT_HELP says.
 * @throws UsageError that names the element and what was expected.
 */
Value parseValue(const TypedElement& element, const std::string& text);

/** Reads NAME=VALUE texts for the properties of a class. @throws UsageError */
std::vector<NamedValue>
parseProperties(const SchemaClass& schemaClass, const std::vector<std::string>& texts);
/** Reads NAME=VALUE texts for the input arguments of a method, named exactly. @throws UsageError */
Arguments parseArguments(const SchemaMethod& method, const std::vector<std::string>& texts);

}  // namespace tvp::host::tvpcim

#endif
