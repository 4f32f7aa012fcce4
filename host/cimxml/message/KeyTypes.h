// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_KEYTYPES_H
#define HOST_CIMXML_MESSAGE_KEYTYPES_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

namespace tvp::host::cimxml {

/**
 * Gives the keys of a path the types that the schema declares. Messages say only whether a key is a text, a
 * number or a boolean; a key of another of these kinds than the declared one, one that does not fit the type
 * and one that the schema does not have stay as they are. A single key without a name becomes the first key
 * of the class. Paths in keys are treated likewise.
 */
void applyKeyTypes(ObjectPath& path, const Schema& schema);

}  // namespace tvp::host::cimxml

#endif
