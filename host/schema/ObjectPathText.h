// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_OBJECTPATHTEXT_H
#define HOST_SCHEMA_OBJECTPATHTEXT_H

#include "host/schema/Value.h"

#include <stdexcept>
#include <string>

namespace tvp::host {

/** A path text that cannot be read; what() says where and what was expected. */
class PathSyntaxError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/**
 * The text form of a path: `root/ns:Class.Key="text",Number=3,Flag=TRUE`. The namespace and its colon are
 * omitted if it is empty, as is the dot if there are no keys. Quotes and backslashes in texts are escaped
 * with a backslash.
 */
std::string toPathText(const ObjectPath& path);

/**
 * Reads the text form. Numbers become CMPI_sint64, TRUE and FALSE CMPI_boolean, quoted texts CMPI_string. A
 * leading "//host/" is read as the host.
 * @throws PathSyntaxError for a malformed text.
 */
ObjectPath parsePathText(const std::string& text);

}  // namespace tvp::host

#endif
